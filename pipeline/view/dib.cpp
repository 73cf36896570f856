#include "pipeline/view/dib.h"

namespace quorvex {

namespace {

std::size_t ColourTableEntries(std::uint16_t bitCount) {
    return bitCount <= 8 ? std::size_t{1} << bitCount : 0;
}

std::vector<RGBQUAD> GreyRamp(std::size_t entries) {
    std::vector<RGBQUAD> ramp(entries);
    for (std::size_t i = 0; i < entries; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        ramp[i] = {grey, grey, grey, 0};
    }
    return ramp;
}

}  // namespace

CXDib::CXDib(CSize size, std::uint16_t bitCount, std::span<const unsigned char> bits)
    : palette_(GreyRamp(ColourTableEntries(bitCount))), bits_(bits) {
    info_.biWidth = size.cx;
    info_.biHeight = size.cy;
    info_.biBitCount = bitCount;
    info_.biClrUsed = static_cast<std::uint32_t>(palette_.size());
    info_.biClrImportant = info_.biClrUsed;
}

}  // namespace quorvex
