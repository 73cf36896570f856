#include "pipeline/pixel_header.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/checked_size.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <limits>

namespace quorvex {

namespace {

constexpr int kWidestSample = 32;
constexpr unsigned kLargestSide = std::numeric_limits<std::int32_t>::max();

unsigned short ValueOr(const CDcmObject& header, std::uint32_t tag, unsigned short absent) {
    unsigned short value = 0;
    return header.GetValue(tag, value) == kDcmSuccess ? value : absent;
}

unsigned SideOr0(const CDcmObject& header, std::uint32_t tag) {
    unsigned value = 0;
    return header.GetValue(tag, value) == kDcmSuccess && value <= kLargestSide ? value : 0;
}

}  // namespace

std::size_t PixelHeader::PixelCount() const noexcept {
    return static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
}

StoredLayout PixelHeader::Layout() const noexcept {
    return {PixelCount(), bitsAllocated, bitsStored, highBit, pixelRepresentation != 0, true};
}

bool IsUsable(const PixelHeader& pixels) {
    if (pixels.size.cx < 1 || pixels.size.cy < 1 || pixels.samplesPerPixel < 1) return false;
    if (pixels.bitsAllocated < 1 || pixels.bitsAllocated > kWidestSample) return false;
    const int bytes = (pixels.bitsAllocated + 7) / 8;
    return CheckedProduct(pixels.size.cx, pixels.size.cy, pixels.samplesPerPixel, bytes) ||
           RefuseBy(Limit::kLargestBlock);
}

std::optional<PixelHeader> ReadPixelHeader(const CDcmObject& header) {
    PixelHeader pixels;
    pixels.size = {static_cast<std::int32_t>(SideOr0(header, tag::kColumns)),
                   static_cast<std::int32_t>(SideOr0(header, tag::kRows))};
    pixels.samplesPerPixel = ValueOr(header, tag::kSamplesPerPixel, 1);
    pixels.bitsAllocated = ValueOr(header, tag::kBitsAllocated, 0);
    pixels.pixelRepresentation = ValueOr(header, tag::kPixelRepresentation, 0);
    pixels.bitsStored = ValueOr(header, tag::kBitsStored, pixels.bitsAllocated);
    pixels.highBit =
        ValueOr(header, tag::kHighBit, static_cast<unsigned short>(pixels.bitsStored - 1));
    if (!IsUsable(pixels)) return std::nullopt;
    return pixels;
}

}  // namespace quorvex
