#include "pipeline/pixel_header.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/checked_size.h"

#include <cstdint>
#include <limits>

namespace quorvex {

namespace {

constexpr int kWidestSample = 32;
constexpr unsigned kLargestSide = std::numeric_limits<std::int32_t>::max();

std::int32_t SideOr0(const CDcmObject& header, std::uint32_t tag) {
    const unsigned side = Read<unsigned>(header, tag).value_or(0);
    return side <= kLargestSide ? static_cast<std::int32_t>(side) : 0;
}

}  // namespace

std::size_t PixelHeader::PixelCount() const noexcept {
    return static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
}

StoredLayout PixelHeader::Layout() const noexcept {
    return {PixelCount(), bitsAllocated, bitsStored, highBit, pixelRepresentation != 0};
}

bool IsUsable(const PixelHeader& pixels) {
    if (pixels.size.cx < 1 || pixels.size.cy < 1 || pixels.samplesPerPixel < 1) return false;
    if (pixels.IsReal()) {
        const int width = pixels.sampleType == SampleType::kFloat32 ? 32 : 64;
        if (pixels.bitsAllocated != width || !pixels.IsGrey()) return false;
    } else if (pixels.bitsAllocated < 1 || pixels.bitsAllocated > kWidestSample) {
        return false;
    }
    const int bytes = (pixels.bitsAllocated + 7) / 8;
    return CheckedProduct(pixels.size.cx, pixels.size.cy, pixels.samplesPerPixel, bytes) ||
           RefuseBy(Limit::kLargestBlock);
}

std::optional<PixelHeader> ReadPixelHeader(const CDcmObject& header, SampleType sampleType) {
    const auto wordOr = [&header](std::uint32_t tag, int absent) {
        return Read<unsigned short>(header, tag).value_or(static_cast<unsigned short>(absent));
    };
    PixelHeader pixels;
    pixels.sampleType = sampleType;
    pixels.size = {SideOr0(header, tag::kColumns), SideOr0(header, tag::kRows)};
    pixels.samplesPerPixel = wordOr(tag::kSamplesPerPixel, 1);
    pixels.bitsAllocated = wordOr(tag::kBitsAllocated, 0);
    pixels.pixelRepresentation = wordOr(tag::kPixelRepresentation, 0);
    pixels.bitsStored = wordOr(tag::kBitsStored, pixels.bitsAllocated);
    pixels.highBit = wordOr(tag::kHighBit, pixels.bitsStored - 1);
    if (!IsUsable(pixels)) return std::nullopt;
    return pixels;
}

}  // namespace quorvex
