#include "codec/native/fragment_pixels.h"

#include "codec/frame_block.h"
#include "codec/rle/rle.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/deflate/deflate_engine.h"
#include "foundation/types/checked_size.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

/// Two pixels of 4:2:2 have two samples of brightness and one of each colour.
std::optional<std::size_t> StoredBytes(const FrameDescription& frame) noexcept {
    const bool sharesChroma = frame.IsColour() && frame.Mentions(u"_422");
    const unsigned samples = sharesChroma ? 2U : frame.samplesPerPixel;
    const auto bits = CheckedProduct(frame.rows, frame.columns, samples, frame.bitsAllocated);
    if (bits) return (*bits + 7) / 8;
    return CheckedProduct(frame.rows, frame.columns, samples, frame.bitsAllocated / 8U);
}

}  // namespace

bool BecomesNative(const FrameDescription& frame) noexcept {
    const FrameCoding coding = CodingOf(frame.transferSyntax);
    return coding == FrameCoding::kDeflated || coding == FrameCoding::kFragment ||
           (coding == FrameCoding::kRle && frame.bitsAllocated == 1 && frame.samplesPerPixel == 1);
}

std::optional<std::size_t> BytesOutOfFragment(const FrameDescription& frame,
                                              std::size_t fragmentBytes) noexcept {
    const auto bytes = StoredBytes(frame);
    if (bytes == std::size_t{0} || !IsPlausiblePicture(bytes, fragmentBytes)) return std::nullopt;
    return bytes;
}

std::optional<FragmentPixels> TakeOutOfFragment(const FrameDescription& frame,
                                                std::span<const unsigned char> fragment) {
    const auto bytes = BytesOutOfFragment(frame, fragment.size());
    if (!bytes) return std::nullopt;
    const FrameCoding coding = CodingOf(frame.transferSyntax);
    if (coding == FrameCoding::kFragment && fragment.size() < *bytes) return std::nullopt;
    FragmentPixels pixels{.block = HeapBlock(*bytes)};
    const auto target = pixels.block.Bytes();
    if (coding == FrameCoding::kFragment) {
        std::ranges::copy(fragment.first(*bytes), target.begin());
    } else if (coding == FrameCoding::kDeflated) {
        if (!InflateFrame(fragment, target)) return std::nullopt;
    } else {
        const auto outcome = DecodeRle(fragment, {.pixels = *bytes}, target);
        if (!outcome.isSound) return std::nullopt;
        pixels.isWhole = outcome.isWhole;
    }
    return pixels;
}

}  // namespace quorvex
