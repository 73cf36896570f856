#include "windowing/display_function.h"

#include "foundation/raster/word_ramp.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace quorvex {
namespace {

using enum VoiFunction;

std::shared_ptr<const GreyTable> TableOf(std::int64_t first, int bits,
                                         std::vector<std::uint16_t> entries) {
    return std::make_shared<const GreyTable>(GreyTable{std::move(entries), first, bits, {}});
}

// By hand from PS3.3 C.11.2.1.2 and C.11.2.1.3: 255 x ((v - (c - 0.5)) / (w - 1) + 0.5) and so on.
TEST(DisplayFunction, WindowsFollowTheStandard) {
    struct Row {
        GreyWindow window;
        double slope, intercept;
        std::int64_t stored;
        int shown;
    };
    const Row rows[] = {
        {{128, 256, kLinear}, 1, 0, 0, 0},       {{128, 256, kLinear}, 1, 0, 1, 1},
        {{128, 256, kLinear}, 1, 0, 255, 255},   {{40, 400, kLinear}, 1, -1024, 864, 0},
        {{40, 400, kLinear}, 1, -1024, 865, 1},  {{40, 400, kLinear}, 1, -1024, 1064, 128},
        {{10, 1, kLinear}, 1, 0, 9, 0},          {{10, 1, kLinear}, 1, 0, 10, 255},
        {{10, 1, kLinearExact}, 1, 0, 10, 128},  {{0.5, 0.25, kLinearExact}, 0.001, 0, 500, 128},
        {{4.5, 4.5, kLinearExact}, 1, 0, 3, 43}, {{1000, 100000, kLinearExact}, 1, 0, 1000, 128},
        {{100, 50, kSigmoid}, 1, 0, 100, 128},   {{100, 50, kSigmoid}, 1, 0, 125, 225},
        {{20, 40, kLinear}, 9.12, 0, 3, 179},    {{-500, 100, kLinear}, -2, 0, 250, 129},
    };
    for (const Row& row : rows) {
        DisplayFunction function;
        function.modality = {row.slope, row.intercept, nullptr};
        function.voi = row.window;
        EXPECT_EQ(function(row.stored), row.shown)
            << row.window.centre << "/" << row.window.width << " of " << row.stored;
    }
}

TEST(DisplayFunction, TablesFollowTheirPlacesAndBits) {
    DisplayFunction function;
    function.modality.table = TableOf(-2, 12, {100, 200, 300});
    function.voi = TableOf(100, 8, std::vector<std::uint16_t>(201, 0));
    EXPECT_EQ(function(-5), 0);
    std::vector<std::uint16_t> rising(201);
    for (std::uint16_t i = 0; i < 201; ++i) rising[i] = i;
    function.voi = TableOf(100, 8, rising);
    EXPECT_EQ(function(-3), 0);
    EXPECT_EQ(function(-1), 100);
    EXPECT_EQ(function(9), 200);
    function.presentation.table = TableOf(0, 10, {1023, 512, 0});
    EXPECT_EQ(function(-2), 255);
    EXPECT_EQ(function(-1), 128);  // 100 of 255 lies nearest to the middle of three entries
}

TEST(DisplayFunction, EveryPolarityCountsOnce) {
    for (const bool isInverse : {false, true}) {
        for (const bool isComplemented : {false, true}) {
            DisplayFunction function;
            function.voi = GreyWindow::Over(0, 255);
            function.presentation.isInverse = isInverse;
            function.isComplemented = isComplemented;
            EXPECT_EQ(function(10), isInverse != isComplemented ? 245 : 10);
        }
    }
}

/// Bytes of every word that holds one of the values, by the ramp.
std::vector<std::uint8_t> Mapped(const WordRamp& ramp, std::int64_t low, std::size_t count) {
    std::vector<std::uint16_t> words(count);
    for (std::size_t i = 0; i < count; ++i) {
        words[i] = static_cast<std::uint16_t>(low + static_cast<std::int64_t>(i));
    }
    std::vector<std::uint8_t> bytes(count);
    const auto* const first = reinterpret_cast<const unsigned char*>(words.data());
    MapByRamp(ramp, first, first, bytes.data(), count);
    return bytes;
}

TEST(DisplayFunction, ARampGivesTheBytesOfItsTable) {
    std::mt19937 random(3);
    int found = 0;
    for (int i = 0; i < 400; ++i) {
        DisplayFunction function;
        const double slopes[] = {1.0, 1.0, 0.5, -1.0, 2.0, 0.1};
        function.modality.slope = slopes[random() % 6];
        function.modality.intercept = random() % 2 != 0 ? -1024.0 : 17.25;
        const double width =
            300.0 + static_cast<double>(random() % 4000) + (random() % 2 != 0 ? 0.37 : 0.0);
        const double centre = static_cast<double>(random() % 4000) - 1000.0;
        function.voi = GreyWindow{centre, width, random() % 2 != 0 ? kLinear : kLinearExact};
        function.isComplemented = random() % 3 == 0;
        const std::int64_t low = random() % 2 != 0 ? -2048 : 0;
        std::vector<std::uint8_t> bytes(4096);
        function.Fill(low, bytes);
        const auto line = function.AsLine();
        ASSERT_TRUE(line);
        const auto ramp = RampOfLine(line->gain, line->zero, low, bytes);
        if (!ramp) continue;
        ++found;
        EXPECT_EQ(Mapped(*ramp, low, bytes.size()), bytes) << centre << "/" << width;
    }
    EXPECT_GT(found, 300);  // else windows are looked up, which is right and slow
}

}  // namespace
}  // namespace quorvex
