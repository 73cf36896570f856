#include "foundation/raster/word_ramp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

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

using StepRoom = std::array<Step, kMostSteps + 1>;

/// All steps, the one from the last entry to the first included; none where they are too many.
std::span<const Step> StepsOf(Table table, StepRoom& room) {
    std::size_t count = 0;
    if (table.front() != table.back()) room[count++] = {0, table.front()};
    for (std::size_t i = NextChange(table, 1); i < table.size(); i = NextChange(table, i + 1)) {
        if (count == room.size()) return {};
        room[count++] = {static_cast<std::int64_t>(i), table[i]};
    }
    return std::span(room).first(count);
}

/// The only step down (or up), as its place among `steps`.
std::optional<std::size_t> LoneStep(std::span<const Step> steps, bool isDown) {
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
void BeginWith(std::span<Step> steps, std::size_t first, unsigned inversion) {
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
bool GoesThrough(const Line& line, std::span<const Step> steps) {
    for (std::size_t i = 1; i < steps.size(); ++i) {
        if (line.At(steps[i].at - 1) != steps[i - 1].value) return false;
        if (i + 1 < steps.size() && line.At(steps[i].at) != steps[i].value) return false;
    }
    return steps.back().at - line.start < kWidest;
}

/// Steps from one byte to the next begin at start + ceil(byte x width / 255). Two of them hold the
/// width between bounds, and each width leaves one start.
std::optional<Line> LineThrough(std::span<const Step> steps) {
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

std::optional<WordRamp> RampThrough(std::span<const Step> found, bool isFalling) {
    StepRoom room;
    std::ranges::copy(found, room.begin());
    const auto steps = std::span(room).first(found.size());
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

/// A bias at which the ramp's bytes change exactly where these do, which are those of the words
/// from its origin on; nothing where there is none.
std::optional<std::uint16_t> BiasFor(const WordRamp& ramp, std::span<const std::uint8_t> bytes) {
    const auto quotient = [&](std::size_t place) {
        const auto steps = static_cast<std::uint16_t>(
            std::clamp<std::size_t>(place, ramp.floor, ramp.top) - ramp.start);
        const std::uint64_t product = (std::uint64_t{steps} << ramp.shift) * ramp.factor;
        return static_cast<std::int64_t>(product >> 16);
    };
    std::int64_t least = 2;  // 0 and 1 mean something else
    std::int64_t most = kWidest - 1;
    for (std::size_t i = 1; i < bytes.size(); ++i) {
        if (bytes[i] == bytes[i - 1]) continue;
        const std::int64_t upper = std::int64_t{bytes[i] ^ ramp.inversion} << 16;
        const std::int64_t lower = (std::int64_t{bytes[i - 1] ^ ramp.inversion} + 1) << 16;
        least = std::max(least, upper - quotient(i));
        most = std::min(most, lower - 1 - quotient(i - 1));
    }
    if (least > most) return std::nullopt;
    return static_cast<std::uint16_t>((least + most) / 2);
}

/// Whether a ramp gives these bytes to the values from `low` on.
bool Gives(const WordRamp& ramp, std::int64_t low, std::span<const std::uint8_t> bytes) {
    std::array<std::uint16_t, 1024> words{};
    std::array<std::uint8_t, words.size()> mapped{};
    for (std::size_t i = 0; i < bytes.size(); i += words.size()) {
        const std::size_t count = std::min(words.size(), bytes.size() - i);
        std::iota(words.begin(), words.end(),
                  static_cast<std::uint16_t>(low + static_cast<std::int64_t>(i)));
        const auto* const first =
            static_cast<const unsigned char*>(static_cast<void*>(words.data()));
        MapByRamp(ramp, first, first, mapped.data(), count);
        if (!std::equal(mapped.begin(), mapped.begin() + static_cast<std::ptrdiff_t>(count),
                        bytes.begin() + static_cast<std::ptrdiff_t>(i))) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<WordRamp> RampOfTable(Table table, std::uint16_t firstWord) {
    StepRoom room;
    const auto steps = StepsOf(table, room);
    auto ramp = RampThrough(steps, false);
    if (!ramp) ramp = RampThrough(steps, true);
    if (ramp) ramp->origin = static_cast<std::uint16_t>(ramp->origin + firstWord);
    return ramp;
}

std::optional<WordRamp> RampOfLine(double gain, double zero, std::int64_t low,
                                   std::span<const std::uint8_t> bytes) {
    constexpr double kUnit = 4294967296.0;  // of the factor
    const double rise = std::abs(gain);
    const auto count = static_cast<std::int64_t>(bytes.size());
    if (count < 1 || count > kWidest || !(rise > 0.0) || rise > 1.0) return std::nullopt;
    // A falling line is the complement of the one that rises through the same places.
    const double start = gain > 0.0 ? zero : zero - kTop / rise;
    if (!(std::abs(start) < kUnit)) return std::nullopt;
    // The first step at which the rounded line is not below 0, and the last one that changes it.
    const double first = std::ceil(start - 0.5 / rise);
    const double last = std::ceil(start + (kTop - 0.5) / rise);
    const auto lowest = static_cast<double>(low);
    if (first - lowest <= -kWidest || first - lowest >= kWidest) return std::nullopt;

    WordRamp ramp;
    ramp.origin = static_cast<std::uint16_t>(low);
    ramp.inversion = gain > 0.0 ? 0 : 0xFF;
    const double begin = first - lowest;
    const double end = std::clamp(last - lowest, 0.0, static_cast<double>(count - 1));
    ramp.floor = static_cast<std::uint16_t>(std::clamp(begin, 0.0, end));
    ramp.top = static_cast<std::uint16_t>(end);
    ramp.start = static_cast<std::uint16_t>(static_cast<std::int64_t>(begin));
    const double mostSteps = end - begin;
    double factor = rise * kUnit;
    while (factor >= kUnit || mostSteps * (2 << ramp.shift) < kWidest) {
        ++ramp.shift;
        factor /= 2;
        if (factor < 65536.0 || ramp.shift > 14) break;
    }
    if (mostSteps * (1 << ramp.shift) >= kWidest || factor >= kUnit) return std::nullopt;
    for (const double exact : {factor, factor + 1.0}) {
        ramp.factor = static_cast<std::uint32_t>(std::min(exact, kUnit - 1.0));
        const auto bias = BiasFor(ramp, bytes);
        ramp.bias = bias.value_or(0);
        if (bias && Gives(ramp, low, bytes)) return ramp;
    }
    return std::nullopt;
}

}  // namespace quorvex
