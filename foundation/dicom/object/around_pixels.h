/// A file whose Pixel Data is written as it comes: what stands ahead of the frames, and behind.
#pragma once

#include "foundation/dicom/model/element.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <optional>
#include <span>

namespace quorvex::dicom {

struct AroundPixels {
    ByteBuffer ahead;   ///< up to where the first frame's item, or its first native byte, belongs
    ByteBuffer behind;  ///< from behind the last frame on
};

/// What WriteFile() writes around the frames of an object that has none of its own, as
/// PutFrameTable() or an empty value leave it. Nothing for an object that cannot be written, or is
/// deflated. Throws std::length_error for native pixels of 4 GiB.
/// @param nativeBytes  of all frames; not looked at where the transfer syntax encapsulates them
[[nodiscard]] std::optional<AroundPixels> WriteAroundPixels(const CDcmObject& object,
                                                            std::uint64_t nativeBytes);

/// Gives an object encapsulated Pixel Data of nothing but the offset tables that SetValueEx() makes
/// for frames of these lengths.
void PutFrameTable(CDcmObject& object, std::span<const std::uint64_t> frameLengths);

}  // namespace quorvex::dicom
