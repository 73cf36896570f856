#include "codec/frame_decoder.h"
#include "codec/rle/rle.h"

namespace quorvex {
namespace {

RleLayout LayoutOf(const FrameDescription& frame, std::size_t frameBytes) noexcept {
    return {.pixels = frame.Pixels(),
            .samplesPerPixel = frame.samplesPerPixel,
            .bytesPerSample = frameBytes / (frame.Pixels() * frame.samplesPerPixel),
            .isPlanar = frame.planarConfiguration == 1};
}

}  // namespace

int FrameDecoder::DecompressRLEData() {
    const RleLayout layout = LayoutOf(frame_, target_.size());
    const ColourFrame colour = DescribeColour(target_.size());
    if (frame_.IsColour() && colour.form == ColourForm::kUnknown) return 1;
    const RleOutcome outcome = frame_.IsColour() ? DecodeRleColour(source_, layout, colour, target_)
                                                 : DecodeRle(source_, layout, target_);
    written_ = target_.size();
    isWhole_ = outcome.isWhole;
    return frame_.IsColour() || outcome.isSound ? 1 : 0;
}

}  // namespace quorvex
