/// Encapsulated Pixel Data as an object describes it.
#pragma once

#include "foundation/dicom/model/element.h"
#include "quorvex/DicomObject.h"

namespace quorvex::dicom {

/// Whether frames of a value in a foreign buffer, or of the object's own where that is empty, begin
/// where an image seems to begin, since no table and no number of fragments says where.
[[nodiscard]] bool AreCodedFramesGuessed(const CDcmObject& object, Bytes value);

}  // namespace quorvex::dicom
