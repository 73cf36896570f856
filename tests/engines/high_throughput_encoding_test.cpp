// High-throughput JPEG 2000 as we write it: lossless to the byte, lossy within its target, and in
// the one form that every high-throughput transfer syntax takes.
#include "foundation/engines/jpeg2000/high_throughput_encoding.h"

#include "foundation/engines/jpeg2000/coding_check.h"
#include "foundation/engines/jpeg2000/tile_part_lengths.h"
#include "tests/engines/jpeg2000_test_streams.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace quorvex::testing {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Pixels(const Jpeg2000Picture& picture) {
    std::mt19937 random(static_cast<unsigned>(picture.bitDepth));
    Bytes pixels;
    const int count = picture.columns * picture.rows * picture.samples;
    for (int i = 0; i < count; ++i) {
        const auto ramp = static_cast<unsigned>(i * 3 / picture.samples);
        unsigned value =
            (i % 5 == 0 ? static_cast<unsigned>(random()) : ramp) % (1U << picture.bitDepth);
        if (picture.isSigned) value -= 1U << (picture.bitDepth - 1);
        pixels.push_back(static_cast<unsigned char>(value));
        if (picture.bytesPerSample == 2) pixels.push_back(static_cast<unsigned char>(value >> 8));
    }
    return pixels;
}

Bytes Code(const Jpeg2000Picture& picture, const Bytes& pixels, bool isLossless,
           std::size_t target = 0) {
    PegasusParameters parameters = Describe(picture);
    parameters.operation = kPegasusEncode;
    parameters.input = pixels;
    parameters.isLossless = isLossless;
    parameters.isHighThroughput = true;
    parameters.hasColourTransform = picture.bitDepth % 2 == 0;
    parameters.targetBytes = target;
    return RunAll(parameters) ? parameters.coded : Bytes{};
}

/// The least and the greatest value: a chessboard, stripes, squares, noise.
Bytes Contrasts(const Jpeg2000Picture& picture, int pattern) {
    std::mt19937 random(1);
    Bytes pixels;
    const unsigned least = picture.isSigned ? 0U - (1U << (picture.bitDepth - 1)) : 0U;
    for (int y = 0; y < picture.rows; ++y) {
        for (int x = 0; x < picture.columns; ++x) {
            const int kinds[] = {x + y, x, y, x / 8 + y / 8, static_cast<int>(random() & 1U),
                                 x / 3};
            for (int c = 0; c < picture.samples; ++c) {
                const bool isHigh = (kinds[pattern] + c) % 2 != 0;
                const unsigned value = least + (isHigh ? (1U << picture.bitDepth) - 1 : 0);
                pixels.push_back(static_cast<unsigned char>(value));
                if (picture.bytesPerSample == 2)
                    pixels.push_back(static_cast<unsigned char>(value >> 8));
            }
        }
    }
    return pixels;
}

/// The greatest difference of two pictures' samples.
int FarthestSamples(const Jpeg2000Picture& picture, const Bytes& one, const Bytes& other) {
    if (one.size() != other.size()) return 1 << 30;
    int farthest = 0;
    const auto step = static_cast<std::size_t>(picture.bytesPerSample);
    const auto value = [&](const Bytes& bytes, std::size_t at) {
        if (step == 1)
            return picture.isSigned ? static_cast<signed char>(bytes[at]) : int{bytes[at]};
        const int word = bytes[at] | bytes[at + 1] << 8;
        return picture.isSigned ? static_cast<std::int16_t>(word) : word;
    };
    for (std::size_t at = 0; at < one.size(); at += step)
        farthest = std::max(farthest, std::abs(value(one, at) - value(other, at)));
    return farthest;
}

class HighThroughputEncoding : public ::testing::Test {
protected:
    void SetUp() override {
        if (!HasHighThroughputCoder()) GTEST_SKIP() << "built without OpenJPH";
    }
};

void ExpectComesBack(const Jpeg2000Picture& picture, const Bytes& pixels) {
    EXPECT_EQ(DecodeJpeg2000Pixels(picture, Code(picture, pixels, true)), pixels);
    const Bytes lossy = DecodeJpeg2000Pixels(picture, Code(picture, pixels, false));
    EXPECT_LE(FarthestSamples(picture, lossy, pixels), 3);
    EXPECT_FALSE(Code(picture, pixels, false, 1).empty()) << "the coarsest step";
}

TEST_F(HighThroughputEncoding, ComesBack) {
    for (const int samples : {1, 3}) {
        for (int depth = 1; depth <= 16; ++depth) {
            for (const auto& [columns, rows] : {std::array{1, 1},
                                                {5, 3},
                                                {1, 2},
                                                {65, 64},
                                                {64, 1},
                                                {9, 32},
                                                {300, 2},
                                                {3, 129}}) {
                SCOPED_TRACE(std::to_string(samples) + " samples of " + std::to_string(depth) +
                             " bits, " + std::to_string(columns) + " x " + std::to_string(rows));
                const Jpeg2000Picture picture{.columns = columns,
                                              .rows = rows,
                                              .samples = samples,
                                              .bytesPerSample = depth > 8 ? 2 : 1,
                                              .bitDepth = depth,
                                              .isSigned = rows % 2 != 0};
                ExpectComesBack(picture, Pixels(picture));
            }
        }
    }
}

TEST_F(HighThroughputEncoding, FitsItsTarget) {
    const Jpeg2000Picture picture{.columns = 200, .rows = 150, .bytesPerSample = 2, .bitDepth = 12};
    const Bytes pixels = Pixels(picture);
    std::size_t former = pixels.size();
    for (const std::size_t target : {20000U, 8000U, 4000U}) {
        const Bytes coded = Code(picture, pixels, false, target);
        EXPECT_LE(coded.size(), target);
        EXPECT_GT(coded.size(), target / 2);
        EXPECT_LT(coded.size(), former);
        EXPECT_EQ(DecodeJpeg2000Pixels(picture, coded).size(), pixels.size()) << target;
        former = coded.size();
    }
}

// Patterns whose wavelet coefficients are the largest that there are.
TEST_F(HighThroughputEncoding, HoldsTheGreatestContrasts) {
    for (const int samples : {1, 3}) {
        for (int depth = 1; depth <= 16; ++depth) {
            for (int pattern = 0; pattern < 6; ++pattern) {
                SCOPED_TRACE(std::to_string(samples) + " samples of " + std::to_string(depth) +
                             " bits, pattern " + std::to_string(pattern));
                const Jpeg2000Picture picture{.columns = 96,
                                              .rows = pattern == 5 ? 1 : 80,
                                              .samples = samples,
                                              .bytesPerSample = depth > 8 ? 2 : 1,
                                              .bitDepth = depth,
                                              .isSigned = pattern % 2 != 0};
                ExpectComesBack(picture, Contrasts(picture, pattern));
            }
        }
    }
}

TEST_F(HighThroughputEncoding, TellsItsTilePartsAndGoesByResolution) {
    const Jpeg2000Picture picture{.columns = 5000, .rows = 3};
    const Bytes coded = Code(picture, Pixels(picture), true);
    const auto find = [&](std::initializer_list<unsigned char> bytes) {
        return std::search(coded.begin(), coded.end(), bytes.begin(), bytes.end());
    };
    const auto style = find({0xFF, 0x52});
    const auto lengths = find({0xFF, 0x55, 0x00, 0x0A, 0x00, 0x60, 0x00, 0x00});
    const auto tilePart = find({0xFF, 0x90, 0x00, 0x0A, 0x00, 0x00});
    ASSERT_LT(style, lengths);
    ASSERT_EQ(tilePart - lengths, 12);
    EXPECT_TRUE(
        std::equal(lengths + 8, tilePart, tilePart + 6));  // the length of the one tile-part
    EXPECT_EQ(style[5], 2);                                // resolution, position, component, layer
    EXPECT_EQ(style[9], 7);                                // 5000 samples halve to 40
}

TEST_F(HighThroughputEncoding, RefusesSamplesThatNeedMoreBits) {
    const Jpeg2000Picture picture{.columns = 8, .rows = 8, .bitDepth = 4};
    Bytes pixels(64, 15);
    EXPECT_FALSE(Code(picture, pixels, true).empty());
    pixels[63] = 16;
    EXPECT_TRUE(Code(picture, pixels, true).empty());
}

TEST_F(HighThroughputEncoding, IsHeldAgainstItsInput) {
    const Jpeg2000Picture picture{.columns = 40, .rows = 30, .bytesPerSample = 2, .bitDepth = 12};
    const Bytes pixels = Pixels(picture);
    PegasusParameters parameters = Describe(picture);
    parameters.operation = kPegasusEncode;
    parameters.input = pixels;
    parameters.isHighThroughput = true;
    for (const bool isLossless : {true, false}) {
        parameters.isLossless = isLossless;
        const Bytes coded = Code(picture, pixels, isLossless);
        parameters.coded = coded;
        EXPECT_LE(GreatestCodingError(parameters).value_or(9), isLossless ? 0 : 3);
        parameters.coded.resize(coded.size() / 2);
        EXPECT_EQ(GreatestCodingError(parameters), std::nullopt) << isLossless << ", cut";
        parameters.coded = Code(picture, Bytes(pixels.size(), 7), isLossless);
        EXPECT_GT(GreatestCodingError(parameters).value_or(0), 1000) << "another picture";
    }
}

TEST(TilePartLengths, LeaveACodestreamThatCannotBeFollowed) {
    const Bytes whole = {0xFF, 0x4F, 0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 12, 0, 1, 0xFF, 0xD9};
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const Bytes before = cut;
        EXPECT_EQ(AddTilePartLengths(cut), size == whole.size()) << size;
        EXPECT_EQ(cut == before, size < whole.size()) << size;
    }
}

}  // namespace
}  // namespace quorvex::testing
