/// The planes of an RLE frame, read side by side in bands that stay in the cache.
#pragma once

#include "codec/rle/rle_header.h"
#include "codec/rle/rle_segment.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace quorvex {

/// Reads groups of segments whose bytes lie side by side in each sample.
///
/// Group g has the segments from g * width on; each gives every width-th byte, the first of them
/// the one at the highest address.
class RlePlaneReader {
public:
    /// Bytes of each segment in one band.
    static constexpr std::size_t kBandPlaces = 8192;

    /// Segments from `active` on give zeros.
    RlePlaneReader(const RleHeader& header, std::size_t width, std::size_t active);

    /// The next `bytes` of a group, at most kBandPlaces * width of them. Only a group's last bytes
    /// may end inside a place.
    void Read(std::size_t group, std::span<unsigned char> bytes);

    /// The first segment that is damaged; the number of segments for a sound frame. To be asked
    /// when every group has been read to its end.
    [[nodiscard]] std::size_t FirstDamaged() const noexcept;
    /// A segment had fewer bytes than were read of it.
    [[nodiscard]] bool IsShort() const noexcept { return isShort_; }

private:
    std::size_t ReadSegment(std::size_t index, std::span<unsigned char> plane);
    void Interleave(std::span<unsigned char> bytes) const;

    const RleHeader& header_;
    std::size_t width_;
    std::size_t active_;
    std::array<RleSegmentReader, kMostRleSegments> readers_;
    std::vector<unsigned char> band_;
    bool isLastPastEnd_ = false;
    bool isShort_ = false;
};

}  // namespace quorvex
