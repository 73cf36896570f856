/// Presentation records as `CXDIPP` holds them.
#pragma once

#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

class CDcmObject;
class CXGSPSInfo;

/// An empty record for an image of that size. The tables and the mask that a reading puts into it
/// go with it.
[[nodiscard]] std::shared_ptr<CXGSPSInfo> NewRecord(CSize imageSize);

/// A record read from `object` for the image `imageUID`; an empty UID reads an image's own
/// presentation. Without an object the record is empty. A shutter mask is as large as the image, or
/// there is none.
[[nodiscard]] std::shared_ptr<CXGSPSInfo> ReadRecord(CDcmObject* object, CSize imageSize,
                                                     const CString& imageUID);

/// Of a record only what lies around the pixels: turn and flip, displayed area, pixel spacing,
/// annotations. For a frame (counted from 1) of the image, or with an empty UID of `object` itself.
[[nodiscard]] std::shared_ptr<CXGSPSInfo> ReadViewRecord(const CDcmObject& object, CSize imageSize,
                                                         const CString& imageUID, int frameNumber);

}  // namespace quorvex
