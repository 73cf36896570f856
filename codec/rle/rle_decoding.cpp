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
    if (frame_.IsColour()) {
        DecompressColourRle();
        return 1;
    }
    written_ = target_.size();
    return DecodeRle(source_, LayoutOf(frame_, target_.size()), target_) ? 1 : 0;
}

void FrameDecoder::DecompressColourRle() {
    const RleLayout layout = LayoutOf(frame_, target_.size());
    const ColourFrame colour = frame_.DescribeColour(layout.bytesPerSample);
    if (colour.form == ColourForm::kUnknown) return;
    DecodeRleColour(source_, layout, colour, target_);
    written_ = target_.size();
}

}  // namespace quorvex
