#include "foundation/engines/jpeg2000/jpeg2000_reduction.h"

#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

CSize SizeAt(const j2k::Decoder& decoder, unsigned levels) {
    j2k::Wanted wanted;
    wanted.discardedLevels = levels;
    const j2k::Rect area = decoder.Area(0, wanted);
    return {static_cast<std::int32_t>(area.Width()), static_cast<std::int32_t>(area.Height())};
}

bool IsOpened(std::span<const unsigned char> stream, j2k::Decoder& decoder) {
    const auto codestream = FindCodestream(stream);
    if (!codestream || decoder.Open(*codestream) != j2k::Outcome::kDone) return false;
    const auto& components = decoder.Size().components;
    return std::ranges::all_of(components, [&](const j2k::ComponentSize& component) {
        return component.dx == 1 && component.dy == 1 &&
               component.precision == components[0].precision;
    });
}

}  // namespace

std::optional<CSize> ReducedSizeOf(std::span<const unsigned char> stream, int discardedLevels) {
    j2k::Decoder decoder;
    if (discardedLevels < 0 || !IsOpened(stream, decoder)) return std::nullopt;
    const auto levels = static_cast<unsigned>(discardedLevels);
    if (levels > decoder.Levels()) return std::nullopt;
    return SizeAt(decoder, levels);
}

std::optional<Jpeg2000Reduction> ReduceJpeg2000(std::span<const unsigned char> stream,
                                                CSize least) {
    j2k::Decoder decoder;
    if (!IsOpened(stream, decoder)) return std::nullopt;
    const j2k::Rect whole = decoder.Area(0, {});
    if (whole.Width() > kLongestCodedSide || whole.Height() > kLongestCodedSide)
        return std::nullopt;
    Jpeg2000Reduction reduction;
    reduction.whole = SizeAt(decoder, 0);
    reduction.precision = static_cast<int>(decoder.Size().components[0].precision);
    const unsigned most = decoder.Levels();
    for (unsigned levels = 1; levels <= most; ++levels) {
        const CSize size = SizeAt(decoder, levels);
        if (size.cx < std::max(least.cx, 1) || size.cy < std::max(least.cy, 1)) break;
        reduction.discardedLevels = static_cast<int>(levels);
        reduction.reduced = size;
    }
    if (reduction.discardedLevels == 0) return std::nullopt;
    return reduction;
}

}  // namespace quorvex
