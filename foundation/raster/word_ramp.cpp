#include "foundation/raster/word_ramp.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quorvex {
namespace {

constexpr std::int64_t kTop = 255;
constexpr std::int64_t kWidest = 65536;
constexpr std::size_t kMostSteps = 257;  ///< all that one way up and one way back can have

using Table = std::span<const std::uint8_t, kWords>;

/// A place of a table where another byte begins.
struct Step {
    std::int64_t at = 0;
    int value = 0;
};

std::size_t NextChange(Table table, std::size_t i) {
    constexpr std::size_t kStride = 8;
    const auto isFlat = [&table](std::size_t from) {
        return std::memcmp(&table[from], &table[from - 1], kStride) == 0;
    };
    while (i + kStride <= table.size() && isFlat(i)) i += kStride;
    while (i < table.size() && table[i] == table[i - 1]) ++i;
    return i;
}

/// All steps, the one from the last entry to the first included; none where they are too many.
std::vector<Step> StepsOf(Table table) {
    std::vector<Step> steps;
    if (table.front() != table.back()) steps.push_back({0, table.front()});
    for (std::size_t i = NextChange(table, 1); i < table.size(); i = NextChange(table, i + 1)) {
        if (steps.size() > kMostSteps) return {};
        steps.push_back({static_cast<std::int64_t>(i), table[i]});
    }
    return steps;
}

/// The only step down (or up), as its place among `steps`.
std::optional<std::size_t> LoneStep(const std::vector<Step>& steps, bool isDown) {
    std::optional<std::size_t> lone;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const int before = (i == 0 ? steps.back() : steps[i - 1]).value;
        if ((steps[i].value < before) != isDown) continue;
        if (lone) return std::nullopt;
        lone = i;
    }
    return lone;
}

/// Begins with step `first`, at place 0; bytes with `inversion`.
void BeginWith(std::vector<Step>& steps, std::size_t first, unsigned inversion) {
    const std::int64_t origin = steps[first].at;
    std::rotate(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(first), steps.end());
    for (Step& step : steps) {
        step.at = (step.at - origin) & (kWidest - 1);
        step.value = static_cast<int>(static_cast<unsigned>(step.value) ^ inversion);
    }
}

struct Line {
    std::int64_t start = 0;
    std::int64_t width = 1;
    [[nodiscard]] std::int64_t At(std::int64_t place) const {
        return place < start ? -1 : kTop * (place - start) / width;
    }
};

/// Whether the line goes through all steps but the last, and up to that.
bool GoesThrough(const Line& line, const std::vector<Step>& steps) {
    for (std::size_t i = 1; i < steps.size(); ++i) {
        if (line.At(steps[i].at - 1) != steps[i - 1].value) return false;
        if (i + 1 < steps.size() && line.At(steps[i].at) != steps[i].value) return false;
    }
    return steps.back().at - line.start < kWidest;
}

/// Steps from one byte to the next begin at start + ceil(byte x width / 255). Two of them hold the
/// width between bounds, and each width leaves one start.
std::optional<Line> LineThrough(const std::vector<Step>& steps) {
    if (steps.size() < 4) return std::nullopt;
    const Step& first = steps[1];
    const Step& last = steps[steps.size() - 2];
    const int rise = steps[steps.size() - 3].value - steps.front().value;
    const std::int64_t narrowest =
        std::max(kTop * (last.at - first.at - 1) / rise, std::int64_t{1});
    const std::int64_t widest = std::min(kTop * (last.at - first.at + 1) / rise + 1, kWidest);
    const std::int64_t firstByte = steps.front().value + 1;
    for (std::int64_t width = narrowest; width <= widest; ++width) {
        const Line line{first.at - (firstByte * width + kTop - 1) / kTop, width};
        if (GoesThrough(line, steps)) return line;
    }
    return std::nullopt;
}

std::optional<WordRamp> RampThrough(std::vector<Step> steps, bool isFalling) {
    const auto lone = LoneStep(steps, !isFalling);
    if (!lone) return std::nullopt;
    WordRamp ramp;
    ramp.origin = static_cast<std::uint16_t>(steps[*lone].at);
    ramp.inversion = isFalling ? 0xFF : 0;
    BeginWith(steps, *lone, ramp.inversion);
    const auto line = LineThrough(steps);
    if (!line) return std::nullopt;
    ramp.floor = static_cast<std::uint16_t>(steps[1].at - 1);
    ramp.start = static_cast<std::uint16_t>(line->start);
    ramp.top = static_cast<std::uint16_t>(steps.back().at);
    ramp.topByte = static_cast<std::uint8_t>(steps.back().value);
    ramp.leapsAtTop = line->At(steps.back().at) != steps.back().value;
    while (line->width << ramp.shift <= kTop) ++ramp.shift;
    const std::int64_t divisor = line->width << ramp.shift;
    ramp.factor = static_cast<std::uint32_t>(((kTop << 32) - 1) / divisor);
    return ramp;
}

}  // namespace

std::optional<WordRamp> RampOfTable(Table table, std::uint16_t firstWord) {
    const std::vector<Step> steps = StepsOf(table);
    auto ramp = RampThrough(steps, false);
    if (!ramp) ramp = RampThrough(steps, true);
    if (ramp) ramp->origin = static_cast<std::uint16_t>(ramp->origin + firstWord);
    return ramp;
}

}  // namespace quorvex
