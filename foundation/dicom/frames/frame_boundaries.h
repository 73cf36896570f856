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

/// What tells the frames of encapsulated data apart, beside the items themselves.
struct FrameHints {
    std::span<const unsigned char> extendedOffsets = {};  ///< (7FE0,0001): 64-bit offsets
    std::uint32_t frameCount = 1;                         ///< Number of Frames
    TRANSFER_SYNTAX syntax = kSyntaxNone;
};

/// The fragments behind the offset table, as the search for frames looks at them.
class FragmentList {
public:
    virtual ~FragmentList() = default;
    [[nodiscard]] virtual std::size_t Count() const = 0;
    /// Of the item tag, counted from the item tag of the first fragment.
    [[nodiscard]] virtual std::uint64_t OffsetOf(std::size_t index) const = 0;
    [[nodiscard]] virtual std::uint64_t LengthOf(std::size_t index) const = 0;
    [[nodiscard]] virtual bool IsStartOfImage(std::size_t index) = 0;

protected:
    FragmentList() = default;
    FragmentList(const FragmentList&) = default;
    FragmentList& operator=(const FragmentList&) = default;
};

struct FrameStarts {
    std::vector<std::size_t> firstFragments;
    bool isGuessed = false;  ///< only starts of image separate the frames
};

/// So many bytes of a fragment tell whether an image begins there.
inline constexpr std::size_t kLongestStartOfImage = 64;
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
///
/// @param offsetTable  the basic one: 32-bit offsets, content of item 0
[[nodiscard]] FrameStarts FindFrames(FragmentList& fragments,
                                     std::span<const unsigned char> offsetTable,
                                     const FrameHints& hints);
[[nodiscard]] FrameStarts FindFrames(std::span<const Fragment> fragments,
                                     std::span<const unsigned char> offsetTable,
                                     const FrameHints& hints);

}  // namespace quorvex::dicom
