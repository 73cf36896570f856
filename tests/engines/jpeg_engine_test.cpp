#include "foundation/engines/jpeg/jpeg_engine.h"

#include "tests/engines/jpeg_library_streams.h"

#include <gtest/gtest.h>
#include <numeric>
#include <string_view>

namespace quorvex {
namespace {

using namespace testing;

constexpr JpegCodingBlock Extended(int columns, int rows) {
    return {.columns = static_cast<std::uint16_t>(columns),
            .rows = static_cast<std::uint16_t>(rows),
            .bytesPerSample = 2,
            .process = JpegProcess::kExtended,
            .precision = 12};
}

/// The marker of the frame header, or of a table.
ByteVector::iterator FindMarker(ByteVector& stream, unsigned char marker) {
    const unsigned char bytes[] = {0xFF, marker};
    return std::search(stream.begin(), stream.end(), bytes, bytes + 2);
}

TEST(JpegEngine, LossyPicturesComeBackNearly) {
    std::array<std::uint16_t, 64> ones{};
    ones.fill(1);
    for (int size = 1; size <= 17; ++size) {
        const ByteVector grey12 = Picture(size, 20, 1, 2, 12);
        const ByteVector rgb = Picture(size, 20, 3, 1, 8);
        const auto columns = static_cast<std::uint16_t>(size);
        JpegCodingBlock coding = Extended(size, 20);
        coding.quantizationTable = &ones;
        const auto extended = DecodeAll(Code(coding, grey12), {.bytesPerSample = 2});
        EXPECT_EQ(extended.description.precision, 12);
        EXPECT_LE(GreatestError(extended.pixels, grey12, 2), 1) << size;
        const auto baseline = DecodeAll(
            Code({.columns = columns, .rows = 20, .samples = 3, .quality = 100}, rgb), {});
        EXPECT_EQ(baseline.kind, kJpegYcc);
        EXPECT_LE(GreatestError(baseline.pixels, rgb, 1), 4) << size;
    }
}

TEST(JpegEngine, TheGivenTableIsTheOneInTheStream) {
    std::array<std::uint16_t, 64> steps{};
    std::iota(steps.begin(), steps.end(), std::uint16_t{1000});
    JpegCodingBlock coding = Extended(8, 8);
    coding.quantizationTable = &steps;
    ByteVector stream = Code(coding, Picture(8, 8, 1, 2, 12));
    const auto table = FindMarker(stream, 0xDB);
    ASSERT_GT(stream.end() - table, 5 + 128);
    EXPECT_EQ(table[4] >> 4, 1);  // 16-bit steps
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ((table[5 + 2 * i] << 8) | table[6 + 2 * i], 1000 + i);
    }
}

TEST(JpegEngine, SamplesBeyondThePrecisionAreRefused) {
    ByteVector picture(8 * 8 * 2, 0);
    picture[21] = 0x10;  // 4096
    EXPECT_TRUE(Code(Extended(8, 8), picture).empty());
    EXPECT_TRUE(Code(LosslessCoding(8, 8, 1, 12), picture).empty());
    EXPECT_FALSE(Code(LosslessCoding(8, 8, 1, 13), picture).empty());
}

TEST(JpegEngine, ColourFollowsTheStreamsMarks) {
    ByteVector red;
    for (int i = 0; i < 64; ++i) red.insert(red.end(), {200, 30, 40});
    const auto isRed = [](const DecodedPicture& p) {
        const ByteVector& c = p.pixels;
        return std::abs(c[0] - 200) < 6 && std::abs(c[1] - 30) < 6 && std::abs(c[2] - 40) < 6;
    };
    const auto ycc = MakeJpeg(8, 8, red, {});
    EXPECT_TRUE(isRed(DecodeAll(ycc, {})));
    const auto rgb = DecodeAll(MakeJpeg(8, 8, red, {.stored = JCS_RGB}), {});
    EXPECT_EQ(rgb.kind, kJpegRgb);
    EXPECT_TRUE(isRed(rgb));
    // Without marks only who knows better can tell.
    const auto plain = MakeJpeg(8, 8, red, {.stored = JCS_RGB, .marked = false});
    const auto stored = DecodeAll(plain, {.colour = JpegColour::kStored});
    EXPECT_FALSE(stored.description.colourIsMarked);
    EXPECT_TRUE(isRed(stored));
    EXPECT_FALSE(isRed(DecodeAll(plain, {})));
}

TEST(JpegEngine, InksBecomeColours) {
    ByteVector inks;  // light, as those who mark four components write it
    for (int i = 0; i < 64; ++i) inks.insert(inks.end(), {250, 40, 50, 200});
    for (J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
        const auto stream = MakeJpeg(8, 8, inks, {.in = JCS_CMYK, .stored = stored});
        const auto rgb = DecodeAll(stream, {.colour = JpegColour::kRgbFromInks});
        EXPECT_EQ(rgb.layout.samples, 3);
        EXPECT_NEAR(rgb.pixels[0], 250 * 200 / 255, 4);
        EXPECT_NEAR(rgb.pixels[1], 40 * 200 / 255, 4);
        EXPECT_NEAR(rgb.pixels[2], 50 * 200 / 255, 4);
        const auto cmyk = DecodeAll(stream, {});
        EXPECT_EQ(cmyk.kind, stored == JCS_CMYK ? kJpegInks : kJpegYccInks);
        EXPECT_NEAR(cmyk.pixels[0], 5, 4);
        EXPECT_NEAR(cmyk.pixels[3], 55, 4);
    }
}

struct Sample {
    std::string_view what;
    ByteVector stream;
    int bytesPerSample = 1;
};

std::vector<Sample> Samples() {
    const ByteVector grey = Picture(97, 83, 1, 1, 8);
    const ByteVector rgb = Picture(64, 60, 3, 1, 8);
    const ByteVector deep = Picture(50, 70, 1, 2, 12);
    return {{"baseline", Code({.columns = 97, .rows = 83, .quality = 90}, grey)},
            {"4:2:0", MakeJpeg(64, 60, rgb, {.horizontal = 2, .vertical = 2})},
            {"progressive", MakeJpeg(64, 60, rgb, {.progressive = true})},
            {"restarts", MakeJpeg(64, 60, rgb, {.restartRows = 1})},
            {"12 bits", Code(Extended(50, 70), deep), 2},
            {"lossless 16", Code(LosslessCoding(50, 70, 1, 16), Picture(50, 70, 1, 2, 16)), 2},
            {"lossless RGB", Code(LosslessCoding(40, 30, 3, 8), Picture(40, 30, 3, 1, 8))}};
}

TEST(JpegEngine, BlocksOfAnySizeGiveOnePictureAndLinesAheadOfABreakAreRight) {
    for (const Sample& sample : Samples()) {
        const auto decode = [&](const ByteVector& stream, std::size_t block = kJpegBufferBytes) {
            return DecodeAll(stream, {.bytesPerSample = sample.bytesPerSample, .block = block});
        };
        const auto first = [&](std::size_t length) {
            const auto begin = sample.stream.begin();
            return ByteVector(begin, begin + static_cast<std::ptrdiff_t>(length));
        };
        const auto whole = decode(sample.stream);
        ASSERT_EQ(whole.lastAnswer, 1) << sample.what;
        const auto pieces = decode(sample.stream, 7);
        EXPECT_EQ(pieces.lastAnswer, 1) << sample.what;
        EXPECT_EQ(pieces.pixels, whole.pixels) << sample.what;
        // Without the end marker everything is there.
        EXPECT_EQ(decode(first(sample.stream.size() - 2)).pixels, whole.pixels) << sample.what;
        int last = 0;
        for (std::size_t length = 0; length + 2 < sample.stream.size(); length += 11) {
            SCOPED_TRACE(std::string(sample.what) + " at " + std::to_string(length));
            const auto decoded = decode(first(length), 512);
            if (decoded.kind < 1) {
                // A table that breaks off between two scans is found when all of them are read.
                const bool isLate = decoded.kind == -13 && sample.what == "progressive";
                EXPECT_TRUE(isLate || decoded.kind == (length < 2 ? -1 : 0));
                continue;
            }
            EXPECT_EQ(decoded.lastAnswer, -1);
            if (sample.what == "progressive") continue;
            EXPECT_GE(decoded.lines, last);
            last = decoded.lines;
            const auto right = decoded.lines * static_cast<std::ptrdiff_t>(decoded.layout.rowBytes);
            EXPECT_TRUE(std::equal(decoded.pixels.begin(), decoded.pixels.begin() + right,
                                   whole.pixels.begin()));
        }
    }
}

constexpr struct {
    const char* what;
    std::size_t place;  // from the frame header's marker
    unsigned char value;
    int kind;
} kHeaders[] = {
    {"lossless, arithmetic", 1, 0xCB, 0},
    {"hierarchical", 1, 0xC5, 0},
    {"9 bits", 4, 9, 0},
    {"no lines", 6, 0, 0},
    {"no components", 9, 0, 0},
    {"no columns", 8, 0, 0},
    {"two components", 9, 2, 0},
    {"arithmetic conditioning", 1, 0xCC, 0},
    {"a header too short for its fixed part", 3, 7, 0},
    {"sampling 0", 11, 0x01, 0},
    {"sampling 5", 11, 0x51, 0},
    {"as it was", 4, 8, kJpegGrey},
};

TEST(JpegEngine, StreamsThatAreNotDecodedAreToldApart) {
    ByteVector stream = Code({.columns = 8, .rows = 8}, Picture(8, 8, 1, 1, 8));
    const auto frame = static_cast<std::size_t>(FindMarker(stream, 0xC0) - stream.begin());
    for (const auto& c : kHeaders) {
        ByteVector other = stream;
        other.at(frame + c.place) = c.value;
        EXPECT_EQ(DecodeAll(other, {}).kind, c.kind) << c.what;
    }
    ByteVector lossless = Code(LosslessCoding(8, 8, 1, 8), Picture(8, 8, 1, 1, 8));
    for (const int bits : {1, 17}) {
        FindMarker(lossless, 0xC3)[4] = static_cast<unsigned char>(bits);
        EXPECT_EQ(DecodeAll(lossless, {}).kind, 0) << bits;
    }
    EXPECT_EQ(DecodeAll({'B', 'M', 1, 2, 3, 4}, {}).kind, -1);
    EXPECT_EQ(DecodeAll({}, {}).kind, -1);
}

TEST(JpegEngine, AProgressiveStreamAsksForNoMoreMemoryThanItsBytesCanFill) {
    const ByteVector small = Picture(16, 16, 3, 1, 8);
    ByteVector stream = MakeJpeg(16, 16, small, {.progressive = true});
    const auto frame = FindMarker(stream, 0xC2);
    for (int i = 5; i < 9; ++i) frame[i] = 0xEA;
    EXPECT_EQ(DecodeAll(stream, {}).kind, 0);
}

}  // namespace
}  // namespace quorvex
