/// Which fragments of encapsulated Pixel Data make up which frame.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex::dicom {

/// One fragment: the content of one item behind the offset table.
struct Fragment {
    std::span<const unsigned char> bytes;
    std::uint64_t offset = 0;  ///< of its item tag, counted from the item tag of the first fragment
};

/// Encapsulated Pixel Data, and all that separates its frames.
struct EncapsulatedFrames {
    std::span<const Fragment> fragments;
    std::span<const unsigned char> offsetTable;      ///< basic: 32-bit offsets, content of item 0
    std::span<const unsigned char> extendedOffsets;  ///< (7FE0,0001): 64-bit offsets
    std::uint32_t frameCount = 1;                    ///< Number of Frames
    TRANSFER_SYNTAX syntax = kSyntaxNone;
};

/// True when `bytes` begin an image as `syntax` codes it: a JPEG or JPEG 2000 start, an RLE header.
[[nodiscard]] bool BeginsImage(std::span<const unsigned char> bytes,
                               TRANSFER_SYNTAX syntax) noexcept;

/// Index of the first fragment of each frame, ascending; a frame ends where the next one begins,
/// the last one with the last fragment. Empty without fragments. Fewer entries than Number of
/// Frames says where frames are missing; one entry where nothing separates the frames.
///
/// The extended, then the basic offset table decides where it makes sense: first entry 0,
/// ascending, one entry for each frame, each at an item (entries past the end of a cut file are
/// skipped). Else one fragment is a frame where the counts agree, a single frame takes all
/// fragments, and otherwise a frame begins at the codec's own start of image.
[[nodiscard]] std::vector<std::size_t> FirstFragments(const EncapsulatedFrames& frames);
/// Whether only starts of image separate the frames.
[[nodiscard]] bool AreFramesGuessed(const EncapsulatedFrames& frames);

}  // namespace quorvex::dicom
