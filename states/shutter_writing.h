/// The shapes of a record's shutter as attributes (PS3.3 C.7.6.11).
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

namespace quorvex {

void WriteRectangle(const CXGSPSInfo& info, CDcmObject& target);
void WriteCircle(const CXGSPSInfo& info, CDcmObject& target);
void WritePolygon(const CXGSPSInfo& info, CDcmObject& target);

}  // namespace quorvex
