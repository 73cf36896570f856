#include "codec/rle_planes.h"

#include <algorithm>

namespace quorvex {
namespace {

/// Byte i of each place comes from plane Width - 1 - i.
template <std::size_t Width>
void InterleaveFixed(const unsigned char* planes, std::size_t places, unsigned char* out) {
    for (std::size_t p = 0; p < places; ++p) {
        for (std::size_t i = 0; i < Width; ++i) {
            out[p * Width + i] = planes[(Width - 1 - i) * RlePlaneReader::kBandPlaces + p];
        }
    }
}

void InterleaveAny(const unsigned char* planes, std::size_t width, std::span<unsigned char> out) {
    for (std::size_t i = 0; i < width; ++i) {
        const unsigned char* plane = planes + (width - 1 - i) * RlePlaneReader::kBandPlaces;
        for (std::size_t at = i; at < out.size(); at += width) out[at] = *plane++;
    }
}

}  // namespace

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
    Interleave(places, bytes);
    isLastPastEnd_ = given * width_ > bytes.size();
}

std::size_t RlePlaneReader::ReadSegment(std::size_t index, std::span<unsigned char> plane) {
    if (index < active_) return readers_[index].Read(plane);
    std::ranges::fill(plane, static_cast<unsigned char>(0));
    return 0;
}

void RlePlaneReader::Interleave(std::size_t places, std::span<unsigned char> bytes) const {
    const bool isEven = bytes.size() % width_ == 0;
    if (width_ == 2 && isEven) {
        InterleaveFixed<2>(band_.data(), places, bytes.data());
    } else if (width_ == 4 && isEven) {
        InterleaveFixed<4>(band_.data(), places, bytes.data());
    } else {
        InterleaveAny(band_.data(), width_, bytes);
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
