#include "codec/frame_coder.h"
#include "codec/jpeg2000/jpeg2000_route.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

constinit Jpeg2000Route route(kPegasusEncode);
constexpr int kNotBegun = 5;

std::size_t TargetBytes(std::size_t sourceBytes, std::uint32_t ratio) noexcept {
    const double share = 1.0 / std::max<std::uint32_t>(ratio, 1);
    const double bytes = share * static_cast<double>(sourceBytes);
    return std::max<std::size_t>(1, static_cast<std::size_t>(bytes));
}

}  // namespace

int FrameCoder::CompressRawData2J2K() {
    if (!route.Load()) return kNotBegun;
    PegasusParameters parameters;
    parameters.operation = kPegasusEncode;
    parameters.input = source_;
    DescribePixels(frame_, parameters);
    parameters.bitDepth =
        storedBits_ != 0 ? static_cast<int>(storedBits_) : frame_.bitsAllocated & 0xFF;
    parameters.hasColourTransform = hasColourTransform_;
    parameters.isSigned = frame_.IsGrey() && frame_.pixelRepresentation == 1;
    const QUORVEX_XFERSYNTAX form = frame_.targetSyntax;
    parameters.isHighThroughput = IsHighThroughput(form);
    parameters.isLossless =
        form == kXferJpeg2000Lossless || (parameters.isHighThroughput && form != kXferHtj2k);
    if (!parameters.isLossless) {
        parameters.targetBytes = TargetBytes(source_.size(), frame_.quality);
    }
    std::vector<unsigned char> pixels;
    if (frame_.IsColour() && frame_.planarConfiguration == 1) {
        pixels.assign(source_.begin(), source_.end());
        if (Interleave_RGB_Data(pixels.data(), pixels.size()) == 0) return kNotBegun;
        parameters.input = pixels;
    }
    const int result = RunRequests(parameters);
    if (result == 1) coded_.swap(parameters.coded);
    return result;
}

}  // namespace quorvex
