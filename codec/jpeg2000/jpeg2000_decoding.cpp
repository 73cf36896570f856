#include "codec/frame_decoder.h"
#include "codec/jpeg2000/jpeg2000_route.h"
#include "foundation/types/checked_size.h"

#include <cstdlib>

namespace quorvex {
namespace {

constinit Jpeg2000Route route(kPegasusDecode);

/// Components that the codestream does not turn into R, G, B itself.
bool IsStoredYbr(const PegasusParameters& parameters, const FrameDescription& frame) noexcept {
    return frame.IsFullRangeYbr() && frame.IsColour() && !parameters.hasColourTransform &&
           frame.BytesPerSample() == 1;
}

}  // namespace

int FrameDecoder::DecompressJ2KData() {
    if (!route.Load()) return 0;
    PegasusParameters parameters;
    parameters.input = source_;
    parameters.output = target_;
    parameters.discardedLevels = discardedLevels_;
    parameters.region = region_;
    DescribePixels(frame_, parameters);
    parameters.isSigned = frame_.IsGrey() && !unsignedOnly_ && frame_.pixelRepresentation == 1;
    if (PegasusQuery(parameters) == 0) return 0;
    const auto streamBytes =
        CheckedProduct(frame_.BytesPerSample(), frame_.samplesPerPixel,
                       std::abs(parameters.bitmap.biHeight), parameters.bitmap.biWidth);
    if (streamBytes != target_.size() || RunRequests(parameters) != 1) return 0;
    written_ = target_.size();
    isWhole_ = !parameters.isIncomplete;
    if (IsStoredYbr(parameters, frame_)) ConvertYbrInPlace(target_, frame_.CodedArithmetic());
    return 1;
}

}  // namespace quorvex
