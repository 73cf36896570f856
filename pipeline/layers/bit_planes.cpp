#include "pipeline/layers/bit_planes.h"

namespace quorvex {

namespace {

unsigned char MaskBit(std::size_t index) noexcept {
    return static_cast<unsigned char>(0x80U >> (index % 8));
}

void MergeBytes(std::span<unsigned char> target, std::span<const unsigned char> plane,
                std::size_t bytes) noexcept {
    const std::size_t shared = std::min({bytes, target.size(), plane.size()});
    for (std::size_t i = 0; i < shared; ++i) target[i] |= plane[i];
}

void MergeBits(std::span<unsigned char> target, std::span<const unsigned char> plane,
               PlaneSize targetSize, PlaneSize planeSize) noexcept {
    for (std::size_t row = 0; row < planeSize.rows; ++row) {
        const std::size_t from = row * planeSize.columns;
        const std::size_t to = row * targetSize.columns;
        if (from >= plane.size() * 8 || to >= target.size() * 8) return;
        const std::size_t count = std::min(
            {std::size_t{planeSize.columns}, plane.size() * 8 - from, target.size() * 8 - to});
        for (std::size_t column = 0; column < count; ++column) {
            if (GetMask(plane, from + column) != 0) SetMask(target, to + column);
        }
    }
}

}  // namespace

void SetMask(std::span<unsigned char> mask, std::size_t index) noexcept {
    mask[index / 8] |= MaskBit(index);
}

void ClearMask(std::span<unsigned char> mask, std::size_t index) noexcept {
    mask[index / 8] &= static_cast<unsigned char>(~MaskBit(index));
}

unsigned char GetMask(std::span<const unsigned char> mask, std::size_t index) noexcept {
    return (mask[index / 8] & MaskBit(index)) != 0 ? 1 : 0;
}

void MergeOverlay(std::span<unsigned char> target, std::span<const unsigned char> plane,
                  PlaneSize targetSize, PlaneSize planeSize) noexcept {
    if (targetSize.BitCount() < planeSize.BitCount()) return;
    if (targetSize == planeSize) {
        MergeBytes(target, plane, planeSize.BitCount() / 8);
    } else {
        MergeBits(target, plane, targetSize, planeSize);
    }
}

}  // namespace quorvex
