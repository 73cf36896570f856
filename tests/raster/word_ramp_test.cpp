#include "foundation/raster/word_ramp.h"

#include "tests/raster/raster_calls.h"
#include "windowing/window_arithmetic.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using Table = std::vector<std::uint8_t>;

/// Words of a domain as a window shows them; the rest takes the nearest end of the domain.
struct WindowCase {
    std::int64_t level;
    std::int64_t width;
    ValueDomain domain;
    bool isInverse = false;
};

/// Entry i belongs to the word i + firstWord; words count from the lowest value of the domain on.
Table TableOf(const WindowCase& c, std::uint16_t firstWord) {
    const DomainWindow window =
        ToDomainWindow(static_cast<int>(c.level), static_cast<int>(c.width), 1.0, 0.0);
    Table shown(static_cast<std::size_t>(c.domain.maximum - c.domain.minimum + 1));
    FillWindow(shown, c.domain, window, PlainDisplayBytes(window, c.domain, c.isInverse));
    Table table(kWords);
    for (std::int64_t i = 0; i < std::int64_t{kWords}; ++i) {
        const auto value = std::min(c.domain.minimum + i, c.domain.maximum);
        const auto word = static_cast<std::uint16_t>(c.domain.minimum + i);
        table[static_cast<std::uint16_t>(word - firstWord)] =
            shown[static_cast<std::size_t>(value - c.domain.minimum)];
    }
    return table;
}

std::optional<WordRamp> RampOf(const Table& table, std::uint16_t firstWord) {
    return RampOfTable(std::span<const std::uint8_t, kWords>(table), firstWord);
}

/// All words through the ramp, from an odd address and with a few left over.
Table Mapped(const WordRamp& ramp, std::uint16_t firstWord) {
    std::vector<unsigned char> words(2 * kWords + 1);
    for (std::size_t i = 0; i < kWords; ++i) {
        const auto word = static_cast<std::uint16_t>(i + firstWord);
        words[2 * i + 1] = static_cast<unsigned char>(word);
        words[2 * i + 2] = static_cast<unsigned char>(word >> 8);
    }
    Table bytes(kWords, 77);
    MapByRamp(ramp, words.data() + 1, words.data() + 1, bytes.data(), kWords - 3);
    MapByRamp(ramp, words.data() + 1 + 2 * (kWords - 3), words.data(), &bytes[kWords - 3], 3);
    return bytes;
}

std::string Name(const WindowCase& c) {
    return std::to_string(c.width) + " around " + std::to_string(c.level) + " of " +
           std::to_string(c.domain.minimum) + ".." + std::to_string(c.domain.maximum) +
           (c.isInverse ? " inverse" : "");
}

std::vector<WindowCase> Windows() {
    std::vector<WindowCase> windows = {
        {32768, 65536, {0, 65535}}, {32767, 65535, {0, 65535}},  {2048, 4096, {0, 4095}},
        {40, 80, {-1024, 3071}},    {40, 5, {-1024, 3071}},      {0, 400, {0, 4095}},
        {3000, 4096, {0, 4095}},    {60000, 20000, {0, 65535}},  {0, 4096, {-32768, 32767}},
        {40, 255, {-1024, 3071}},   {4000, 65536, {-200, 8000}}, {20, 1, {-1024, 3071}},
    };
    std::mt19937 engine(5);
    const auto below = [&engine](std::int64_t limit) {
        return static_cast<std::int64_t>(engine() % static_cast<std::uint64_t>(limit));
    };
    while (windows.size() < 150) {
        const std::int64_t low = -below(40000);
        const std::int64_t high = low + 200 + below(65336);
        windows.push_back({low + below(high - low), 4 + below(4 << below(14)), {low, high}});
    }
    return windows;
}

TEST(WordRamp, IsTheTableOfAnyWindow) {
    for (WindowCase c : Windows()) {
        for (const bool isInverse : {false, true}) {
            c.isInverse = isInverse;
            for (const std::uint16_t firstWord : {std::uint16_t{0}, std::uint16_t{0x8000}}) {
                const Table table = TableOf(c, firstWord);
                const auto ramp = RampOf(table, firstWord);
                const auto shades = std::set<std::uint8_t>(table.begin(), table.end()).size();
                if (shades > 3) {
                    ASSERT_TRUE(ramp) << Name(c);
                }
                if (ramp) {
                    EXPECT_EQ(Mapped(*ramp, firstWord), table) << Name(c);
                }
            }
        }
    }
}

TEST(WordRamp, IsTheSameWithEveryInstructionSet) {
    for (const bool isInverse : {false, true}) {
        const Table table = TableOf({2048, 4096, {-200, 4095}, isInverse}, 0x8000);
        const auto ramp = RampOf(table, 0x8000);
        ASSERT_TRUE(ramp);
        ForEachInstructionSet([&] { EXPECT_EQ(Mapped(*ramp, 0x8000), table) << isInverse; });
    }
}

TEST(WordRamp, IsNotFoundWhereATableBendsAtAll) {
    const WindowCase window{2048, 3000, {0, 4095}};
    const Table straight = TableOf(window, 0);
    ASSERT_TRUE(RampOf(straight, 0));
    for (const std::size_t bent : {1000U, 2048U, 3499U, 60000U}) {
        Table table = straight;
        table[bent] ^= 1U;
        EXPECT_FALSE(RampOf(table, 0)) << bent;
    }
    EXPECT_FALSE(RampOf(Table(kWords, 9), 0));
    Table saw(kWords);
    std::iota(saw.begin(), saw.end(), std::uint8_t{0});
    EXPECT_FALSE(RampOf(saw, 0));
}

}  // namespace
}  // namespace quorvex
