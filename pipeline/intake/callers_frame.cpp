#include "pipeline/intake/callers_frame.h"

#include "foundation/types/checked_size.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/modality_stage.h"
#include "pipeline/pixel_header.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace quorvex {

namespace {

constexpr ValueSpan kWordValues{std::numeric_limits<std::int16_t>::min(),
                                std::numeric_limits<std::uint16_t>::max()};

void TakeCallersGrey(IncomingImage& incoming, PixelBlock frame, const PixelHeader& header,
                     ValueSpan met) {
    const bool isWhole = header.bitsAllocated == 8 || header.bitsAllocated == 16;
    if (!isWhole) {
        return incoming.TakeGrey(
            ApplyModalityStage(std::move(frame), header.Layout(), ModalityTransform(), met));
    }
    incoming.pixels = std::move(frame);
    incoming.bytesPerPixel = header.bitsAllocated / 8;
    incoming.range = RangeOfCaller(met);
}

}  // namespace

std::optional<std::size_t> CallerFrameBytes(const PixelHeader& header) {
    if (!header.IsGrey()) return CheckedProduct(header.PixelCount(), header.samplesPerPixel);
    const auto bits = CheckedProduct(header.PixelCount(), header.bitsAllocated);
    if (!bits) return std::nullopt;
    return *bits / 8;
}

ValueSpan SpanOfCaller(int one, int other) noexcept {
    return {std::min(one, other), std::max(one, other)};
}

// A caller's range may be wider than any pixel is.
ValueRange RangeOfCaller(ValueSpan met) noexcept {
    ValueRange range{std::clamp(met.low, kWordValues.low, kWordValues.high),
                     std::clamp(met.high, kWordValues.low, kWordValues.high), 0, 0};
    SetDomain(range, met.low, met.high);
    return range;
}

void TakeCallersFrame(IncomingImage& incoming, std::span<const unsigned char> frame,
                      PixelHeader header, ValueSpan met) {
    if (header.IsGrey()) return TakeCallersGrey(incoming, CopyOf(frame), header, met);
    header.bitsAllocated = 8;
    incoming.TakeColour(CopyOf(frame), header);
}

}  // namespace quorvex
