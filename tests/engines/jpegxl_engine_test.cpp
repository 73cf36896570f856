// JPEG XL streams as we write and read them: to the byte where nothing is to be lost, JPEG streams
// back as they were, and refusals of all that would take the library past its memory.
#include "foundation/engines/jpegxl/jpegxl_engine.h"

#include "foundation/engines/jpegxl/jpegxl_boxes.h"
#include "foundation/engines/jpegxl/jpegxl_samples.h"
#include "tests/engines/jpeg_library_streams.h"
#include "tests/engines/jpegxl_test_streams.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace quorvex::testing {
namespace {

using Bytes = std::vector<unsigned char>;

struct Picture {
    std::uint32_t columns;
    std::uint32_t rows;
    unsigned components;
    unsigned precision;
    std::size_t sampleBytes = precision > 8 ? 2 : 1;
};

Bytes Pixels(const Picture& picture) {
    std::mt19937 random(picture.precision);
    Bytes pixels;
    const std::size_t count = std::size_t{picture.columns} * picture.rows * picture.components;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned value = static_cast<unsigned>(i * 3 / picture.components + random() % 5) %
                               (1U << picture.precision);
        pixels.push_back(static_cast<unsigned char>(value));
        if (picture.sampleBytes == 2) pixels.push_back(static_cast<unsigned char>(value >> 8));
    }
    return pixels;
}

Bytes Code(const Picture& picture, const Bytes& pixels, float distance = 0) {
    return CodeJpegXl({.columns = picture.columns,
                       .rows = picture.rows,
                       .components = picture.components,
                       .precision = picture.precision,
                       .sampleBytes = picture.sampleBytes,
                       .distance = distance,
                       .samples = pixels})
        .value_or(Bytes{});
}

Bytes Decode(const Bytes& stream, std::size_t sampleBytes) {
    JpegXlDecoder decoder(stream);
    if (decoder.State() != JpegXlResult::kDone) return {};
    const JpegXlHeader& header = decoder.Header();
    Bytes pixels(std::size_t{header.columns} * header.rows * header.components * sampleBytes);
    return decoder.Decode(pixels, sampleBytes) == JpegXlResult::kDone ? pixels : Bytes{};
}

/// All that a stream of any origin goes through; the answers are not of interest.
void TryAll(std::span<const unsigned char> stream) {
    JpegXlDecoder decoder(stream);
    if (decoder.State() != JpegXlResult::kDone) return;
    const JpegXlHeader& header = decoder.Header();
    Bytes pixels;
    (void)decoder.RestoreJpeg(pixels);
    if (std::uint64_t{header.columns} * header.rows > 1 << 20) return;
    pixels.resize(std::size_t{header.columns} * header.rows * header.components * 2);
    (void)decoder.Decode(pixels, 2);
}

class JpegXl : public ::testing::Test {
protected:
    void SetUp() override {
        if (!HasJpegXl()) GTEST_SKIP() << "built without libjxl";
    }
};

TEST(JpegXlSamples, AreSpreadAndComeBack) {
    for (const std::size_t bytes : {1U, 2U}) {
        for (unsigned precision = 1; precision <= 8 * bytes; ++precision) {
            const Picture all{1U << precision, 1, 1, precision, bytes};
            Bytes samples;
            for (unsigned value = 0; value < all.columns; ++value)
                for (std::size_t i = 0; i < bytes; ++i)
                    samples.push_back(static_cast<unsigned char>(value >> 8 * i));
            Bytes spread;
            ASSERT_TRUE(SpreadSamples(samples, bytes, precision, spread));
            EXPECT_EQ(Bytes(bytes, 0), Bytes(spread.begin(), spread.begin() + long(bytes)));
            EXPECT_EQ(Bytes(bytes, 255), Bytes(spread.end() - long(bytes), spread.end()));
            NarrowSamples(spread, bytes, precision);
            EXPECT_EQ(spread, samples) << precision << " bits in " << bytes;
        }
    }
}

TEST(JpegXlSamples, TakeTheNearestOfFewerBits) {
    for (unsigned precision = 1; precision < 16; ++precision) {
        const unsigned highest = (1U << precision) - 1;
        for (unsigned value = 0; value <= 65535; ++value) {
            Bytes sample = {static_cast<unsigned char>(value),
                            static_cast<unsigned char>(value >> 8)};
            NarrowSamples(sample, 2, precision);
            const unsigned nearest = (value * highest * 2 + 65535) / (2 * 65535);
            ASSERT_EQ(sample[0] | sample[1] << 8, nearest) << value << " of " << precision;
        }
    }
}

TEST_F(JpegXl, ComesBackToTheByte) {
    for (const unsigned components : {1U, 3U}) {
        for (unsigned precision = 1; precision <= 16; ++precision) {
            for (const auto& [columns, rows] :
                 {std::pair{1U, 1U}, {5U, 3U}, {300U, 1U}, {270U, 260U}}) {
                Picture picture{columns, rows, components, precision};
                if (rows == 3) picture.sampleBytes = 2;
                const Bytes pixels = Pixels(picture);
                const Bytes coded = Code(picture, pixels);
                EXPECT_EQ(Decode(coded, picture.sampleBytes), pixels)
                    << components << " of " << precision << " bits, " << columns << " x " << rows;
                ASSERT_GT(coded.size(), 2U);
                EXPECT_EQ(coded[1], 0x0A);  // bare
            }
        }
    }
}

TEST_F(JpegXl, LosesMoreWithTheDistance) {
    const Picture picture{200, 150, 3, 8};
    Bytes pixels = Pixels(picture);
    std::size_t former = pixels.size();
    for (const float distance : {0.1F, 0.5F, 2.0F, 10.0F}) {
        const Bytes coded = Code(picture, pixels, distance);
        EXPECT_LT(coded.size(), former) << distance;
        EXPECT_EQ(Decode(coded, 1).size(), pixels.size()) << distance;
        former = coded.size();
    }
    const Picture deep{64, 64, 1, 12};
    pixels.clear();
    for (unsigned i = 0; i < 64 * 64; ++i) {
        pixels.push_back(static_cast<unsigned char>(i));
        pixels.push_back(static_cast<unsigned char>(i >> 8));
    }
    const Bytes back = Decode(Code(deep, pixels, 0.5F), 2);
    ASSERT_EQ(back.size(), pixels.size());
    for (std::size_t i = 0; i < back.size(); i += 2) {
        const int difference = (back[i] | back[i + 1] << 8) - (pixels[i] | pixels[i + 1] << 8);
        ASSERT_LE(std::abs(difference), 64) << i;
    }
}

TEST_F(JpegXl, RefusesSamplesBeyondThePrecision) {
    const Picture picture{8, 8, 1, 4};
    Bytes pixels(64, 15);
    EXPECT_FALSE(Code(picture, pixels).empty());
    pixels[63] = 16;
    EXPECT_TRUE(Code(picture, pixels).empty());
}

TEST_F(JpegXl, GivesJpegStreamsBackToTheByte) {
    const Bytes picture = Pixels({70, 50, 3, 8});
    for (const JpegRecipe& recipe :
         {JpegRecipe{}, JpegRecipe{.horizontal = 2}, JpegRecipe{.horizontal = 2, .vertical = 2},
          JpegRecipe{.horizontal = 2, .progressive = true}, JpegRecipe{.restartRows = 1},
          JpegRecipe{.stored = JCS_RGB}, JpegRecipe{.stored = JCS_GRAYSCALE},
          JpegRecipe{.marked = false}}) {
        Bytes jpeg = MakeJpeg(70, 50, picture, recipe);
        for (const int padding : {0, 1}) {
            jpeg.resize(jpeg.size() + std::size_t(padding));
            const auto coded = RecompressJpeg(jpeg);
            ASSERT_TRUE(coded);
            JpegXlDecoder decoder(*coded);
            ASSERT_EQ(decoder.State(), JpegXlResult::kDone);
            EXPECT_TRUE(decoder.Header().hasJpeg);
            EXPECT_EQ(decoder.Header().columns, 70U);
            Bytes back;
            EXPECT_EQ(decoder.RestoreJpeg(back), JpegXlResult::kDone);
            EXPECT_EQ(back, jpeg);
        }
    }
}

TEST_F(JpegXl, RefusesWhatIsNoWholeJpegStream) {
    const Bytes jpeg = MakeJpeg(70, 50, Pixels({70, 50, 3, 8}), {});
    EXPECT_FALSE(RecompressJpeg({}));
    EXPECT_FALSE(RecompressJpeg(Bytes{0xFF, 0xD8, 0xFF, 0xD9}));
    EXPECT_FALSE(RecompressJpeg(std::span(jpeg).first(jpeg.size() / 2)));
    JpegXlDecoder without(Code({8, 8, 1, 8}, Bytes(64, 7)));
    Bytes back;
    EXPECT_FALSE(without.Header().hasJpeg);
    EXPECT_EQ(without.RestoreJpeg(back), JpegXlResult::kUnsupported);
}

TEST_F(JpegXl, AnswersToStreamsThatAreCutOffOrDamaged) {
    const Bytes jpeg = MakeJpeg(70, 50, Pixels({70, 50, 3, 8}), {.horizontal = 2});
    const Bytes streams[] = {Code({20, 30, 1, 12}, Pixels({20, 30, 1, 12})),
                             Code({20, 30, 3, 8}, Pixels({20, 30, 3, 8}), 2),
                             RecompressJpeg(jpeg).value_or(Bytes{})};
    std::mt19937 random(1);
    for (const Bytes& whole : streams) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + long(size));
            EXPECT_TRUE(Decode(cut, 2).empty()) << size;
            TryAll(cut);
        }
        for (int i = 0; i < 500; ++i) {
            Bytes changed = whole;
            for (auto count = 1 + random() % 3; count > 0; --count)
                changed[random() % changed.size()] = static_cast<unsigned char>(random());
            TryAll(changed);
        }
    }
}

TEST_F(JpegXl, FindsTheCodestreamInItsBoxes) {
    const Picture picture{20, 30, 1, 8};
    const Bytes pixels = Pixels(picture);
    const Bytes bare = Code(picture, pixels);
    for (const std::size_t parts : {1U, 2U, 3U}) {
        const Bytes boxed = InBoxes(bare, parts);
        EXPECT_EQ(Decode(boxed, 1), pixels) << parts;
        for (std::size_t size = 0; size < boxed.size(); ++size)
            TryAll(std::span(boxed).first(size));
    }
    Bytes padded = bare;
    padded.push_back(0);
    EXPECT_EQ(Decode(padded, 1), pixels);
}

TEST_F(JpegXl, RefusesFramesThatAskForMoreThanTheirPicture) {
    const auto stateOf = [](const Bytes& stream) { return JpegXlDecoder(stream).State(); };
    EXPECT_EQ(stateOf(WithHiddenFrame(200000, 1)), JpegXlResult::kDamaged);
    EXPECT_EQ(stateOf(WithHiddenFrame(1U << 29, 1)), JpegXlResult::kDamaged);
    EXPECT_EQ(stateOf(WithHiddenFrame(200, 17)), JpegXlResult::kDamaged);
    EXPECT_EQ(stateOf(WithHiddenFrame(200, 3)), JpegXlResult::kDone);
}

}  // namespace
}  // namespace quorvex::testing
