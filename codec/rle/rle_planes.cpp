#include "codec/rle/rle_planes.h"

#include "foundation/raster/interleave.h"

#include <algorithm>

namespace quorvex {

RlePlaneReader::RlePlaneReader(const RleHeader& header, std::size_t width, std::size_t active)
    : header_(header), width_(width), active_(active), band_(width > 1 ? width * kBandPlaces : 0) {
    for (std::size_t i = 0; i < header.count; ++i) {
        readers_[i] = RleSegmentReader(header.segments[i].bytes);
    }
}

void RlePlaneReader::Read(std::size_t group, std::span<unsigned char> bytes) {
    const std::size_t first = group * width_;
    if (width_ == 1) {
        ReadSegment(first, bytes);
        return;
    }
    const std::size_t places = (bytes.size() + width_ - 1) / width_;
    std::size_t given = 0;
    for (std::size_t i = 0; i < width_; ++i) {
        given = ReadSegment(first + i, std::span(band_).subspan(i * kBandPlaces, places));
    }
    Interleave(bytes);
    isLastPastEnd_ = given * width_ > bytes.size();
}

std::size_t RlePlaneReader::ReadSegment(std::size_t index, std::span<unsigned char> plane) {
    if (index < active_) {
        const std::size_t given = readers_[index].Read(plane);
        isShort_ = isShort_ || given < plane.size();
        return given;
    }
    std::ranges::fill(plane, static_cast<unsigned char>(0));
    return 0;
}

/// Byte i of each place comes from plane width - 1 - i; a last place may be cut.
void RlePlaneReader::Interleave(std::span<unsigned char> bytes) const {
    std::array<const unsigned char*, kMostRleSegments> planes{};
    for (std::size_t i = 0; i < width_; ++i) {
        planes[i] = band_.data() + (width_ - 1 - i) * kBandPlaces;
    }
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): a plane is a byte wide at least
    const std::size_t whole = bytes.size() / width_;
    InterleavePlanes(std::span(planes).first(width_), whole, 1, bytes.data());
    for (std::size_t i = whole * width_; i < bytes.size(); ++i) {
        bytes[i] = planes[i - whole * width_][whole];
    }
}

std::size_t RlePlaneReader::FirstDamaged() const noexcept {
    for (std::size_t i = 0; i < header_.count; ++i) {
        const bool isDamaged = readers_[i].IsDamaged() || readers_[i].IsInsideRun();
        if (isDamaged || !header_.segments[i].isInside) return i;
    }
    return isLastPastEnd_ ? header_.count - 1 : header_.count;
}

}  // namespace quorvex
