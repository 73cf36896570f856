#include "foundation/engines/jpeg/jpeg_engine.h"

#include "tests/engines/jpeg_test_streams.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <string_view>
#include <thread>

namespace quorvex {
namespace {

using testing::ByteVector;
using testing::Code;
using testing::DecodeAll;
using testing::Picture;

JpegCodingBlock Lossless(int columns, int rows, int samples, int precision) {
    return {.columns = static_cast<std::uint16_t>(columns),
            .rows = static_cast<std::uint16_t>(rows),
            .samples = static_cast<std::uint8_t>(samples),
            .bytesPerSample = static_cast<std::uint8_t>(precision > 8 ? 2 : 1),
            .process = JpegProcess::kLossless,
            .precision = static_cast<std::uint8_t>(precision)};
}

int GreatestError(const ByteVector& a, const ByteVector& b, int bytesPerSample) {
    int greatest = a.size() == b.size() ? 0 : 65536;
    for (std::size_t i = 0; greatest < 65536 && i < a.size();
         i += static_cast<std::size_t>(bytesPerSample)) {
        const auto value = [&](const ByteVector& v) {
            return bytesPerSample == 2 ? v[i] | (v[i + 1] << 8) : int{v[i]};
        };
        greatest = std::max(greatest, std::abs(value(a) - value(b)));
    }
    return greatest;
}

TEST(JpegEngine, LosslessPicturesComeBackAsTheyWere) {
    for (int precision = 2; precision <= 16; ++precision) {
        for (int samples : {1, 3}) {
            for (int size = 1; size <= 17; size += precision % 4 + 1) {
                const int bytes = precision > 8 ? 2 : 1;
                const ByteVector picture = Picture(size, 18 - size, samples, bytes, precision);
                const ByteVector stream =
                    Code(Lossless(size, 18 - size, samples, precision), picture);
                const auto decoded = DecodeAll(stream, {.bytesPerSample = bytes});
                EXPECT_EQ(decoded.pixels, picture)
                    << precision << " bits, " << samples << " samples, " << size << " columns";
                EXPECT_EQ(decoded.lastAnswer, 1);
                EXPECT_EQ(decoded.description.precision, precision);
                EXPECT_EQ(decoded.description.process, JpegProcess::kLossless);
            }
        }
    }
}

TEST(JpegEngine, SamplesMayLieAnywhere) {
    const ByteVector picture = Picture(31, 7, 1, 2, 16);
    ByteVector shifted(1, 0);
    shifted.insert(shifted.end(), picture.begin(), picture.end());
    testing::CodedOutput output;
    JpegCodingBlock coding = Lossless(31, 7, 1, 16);
    coding.write = testing::TakeCoded;
    coding.writeContext = &output;
    JpegCompressionHandle coder;
    ASSERT_EQ(comp_im_buf(coder, coding, shifted.data() + 1, 7), 0);
    testing::StreamInput input{.bytes = output.bytes};
    JpegDecompressionHandle handle;
    JpegDescription description;
    JpegPixelLayout layout;
    init_decompression(handle, description, output.bytes.size(), &input, testing::GiveStream);
    ASSERT_EQ(pix_layout(handle, layout, 2, 1, JpegColour::kByStream, false), 0);
    ByteVector decoded(shifted.size());
    unsigned char* rows = decoded.data() + 1;
    EXPECT_EQ(decompress(handle, rows, 7), 1);
    EXPECT_EQ(decoded, shifted);
}

TEST(JpegEngine, EveryLosslessPredictorDecodes) {
    const ByteVector picture = Picture(61, 33, 1, 2, 16);
    for (std::uint8_t predictor = 1; predictor <= 7; ++predictor) {
        JpegCodingBlock coding = Lossless(61, 33, 1, 16);
        coding.predictor = predictor;
        const auto decoded = DecodeAll(Code(coding, picture), {.bytesPerSample = 2, .stripe = 1});
        EXPECT_EQ(decoded.pixels, picture) << int{predictor};
    }
}

TEST(JpegEngine, LossyPicturesComeBackNearly) {
    const std::array<std::uint16_t, 64> ones = [] {
        std::array<std::uint16_t, 64> steps{};
        steps.fill(1);
        return steps;
    }();
    for (int size = 1; size <= 17; ++size) {
        const ByteVector grey12 = Picture(size, 20, 1, 2, 12);
        const ByteVector rgb = Picture(size, 20, 3, 1, 8);
        const auto columns = static_cast<std::uint16_t>(size);
        const auto extended = DecodeAll(Code({.columns = columns,
                                              .rows = 20,
                                              .bytesPerSample = 2,
                                              .process = JpegProcess::kExtended,
                                              .precision = 12,
                                              .quantizationTable = &ones},
                                             grey12),
                                        {.bytesPerSample = 2});
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
    for (std::size_t i = 0; i < 64; ++i) steps[i] = static_cast<std::uint16_t>(1000 + i);
    const ByteVector stream = Code({.columns = 8,
                                    .rows = 8,
                                    .bytesPerSample = 2,
                                    .process = JpegProcess::kExtended,
                                    .precision = 12,
                                    .quantizationTable = &steps},
                                   Picture(8, 8, 1, 2, 12));
    const unsigned char marker[] = {0xFF, 0xDB};
    const auto table = std::search(stream.begin(), stream.end(), marker, marker + 2);
    ASSERT_GT(stream.end() - table, 5 + 128);
    EXPECT_EQ(table[4] >> 4, 1);  // 16-bit steps
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ((table[5 + 2 * i] << 8) | table[6 + 2 * i], 1000 + i);
    }
}

TEST(JpegEngine, SamplesBeyondThePrecisionAreRefused) {
    ByteVector picture(8 * 8 * 2, 0);
    picture[21] = 0x10;  // 4096
    EXPECT_TRUE(Code({.columns = 8,
                      .rows = 8,
                      .bytesPerSample = 2,
                      .process = JpegProcess::kExtended,
                      .precision = 12},
                     picture)
                    .empty());
    EXPECT_TRUE(Code(Lossless(8, 8, 1, 12), picture).empty());
    EXPECT_FALSE(Code(Lossless(8, 8, 1, 13), picture).empty());
}

TEST(JpegEngine, NarrowSamplesAreWidenedAndWideOnesRefused) {
    const ByteVector picture = Picture(9, 5, 1, 1, 8);
    const auto wide = DecodeAll(Code(Lossless(9, 5, 1, 8), picture), {.bytesPerSample = 2});
    for (std::size_t i = 0; i < picture.size(); ++i) {
        EXPECT_EQ(wide.pixels[2 * i], picture[i]);
        EXPECT_EQ(wide.pixels[2 * i + 1], 0);
    }
    const ByteVector deep = Code(Lossless(9, 5, 1, 12), Picture(9, 5, 1, 2, 12));
    EXPECT_EQ(DecodeAll(deep, {.bytesPerSample = 1}).kind, -13);
}

/// A stream from the 8-bit library, with any sampling, colour space, scans.
struct Recipe {
    J_COLOR_SPACE in = JCS_RGB;
    J_COLOR_SPACE stored = JCS_YCbCr;
    int horizontal = 1;
    int vertical = 1;
    bool progressive = false;
    bool marked = true;
    unsigned restart = 0;
};

ByteVector Make(int columns, int rows, int samples, const ByteVector& picture, const Recipe& r) {
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &out, &size);
    codec.image_width = static_cast<JDIMENSION>(columns);
    codec.image_height = static_cast<JDIMENSION>(rows);
    codec.input_components = samples;
    codec.in_color_space = r.in;
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, r.stored);
    jpeg_set_quality(&codec, 95, TRUE);
    codec.comp_info[0].h_samp_factor = r.horizontal;
    codec.comp_info[0].v_samp_factor = r.vertical;
    codec.restart_in_rows = static_cast<int>(r.restart);
    if (!r.marked) {
        codec.write_JFIF_header = FALSE;
        codec.write_Adobe_marker = FALSE;
        for (int i = 0; i < samples; ++i) codec.comp_info[i].component_id = i;
    }
    if (r.progressive) jpeg_simple_progression(&codec);
    jpeg_start_compress(&codec, TRUE);
    for (int y = 0; y < rows; ++y) {
        auto* row =
            const_cast<JSAMPLE*>(picture.data() + static_cast<std::size_t>(y * columns * samples));
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    ByteVector stream(out, out + size);
    std::free(out);
    return stream;
}

TEST(JpegEngine, EverySizeAndSamplingDecodes) {
    for (int size = 1; size <= 17; ++size) {
        // Without chroma detail, so that subsampling loses nothing.
        ByteVector picture;
        for (int i = 0; i < size * (18 - size); ++i) {
            picture.insert(picture.end(), 3, static_cast<unsigned char>(60 + i % 90));
        }
        for (const Recipe& recipe :
             {Recipe{}, Recipe{.horizontal = 2}, Recipe{.vertical = 2},
              Recipe{.horizontal = 2, .vertical = 2}, Recipe{.horizontal = 4},
              Recipe{.horizontal = 2, .vertical = 2, .progressive = true},
              Recipe{.horizontal = 2, .restart = 1}}) {
            const ByteVector stream = Make(size, 18 - size, 3, picture, recipe);
            const auto decoded = DecodeAll(stream, {.block = 7});
            EXPECT_EQ(decoded.lastAnswer, 1);
            EXPECT_LE(GreatestError(decoded.pixels, picture, 1), 20)
                << size << " columns, " << recipe.horizontal << "x" << recipe.vertical;
        }
    }
}

TEST(JpegEngine, ColourFollowsTheStreamsMarks) {
    ByteVector red;
    for (int i = 0; i < 64; ++i) red.insert(red.end(), {200, 30, 40});
    const auto first = [](const testing::DecodedPicture& p) {
        return std::vector<int>(p.pixels.begin(), p.pixels.begin() + 3);
    };
    const auto isRed = [](const std::vector<int>& c) {
        return std::abs(c[0] - 200) < 6 && std::abs(c[1] - 30) < 6 && std::abs(c[2] - 40) < 6;
    };
    const auto ycc = Make(8, 8, 3, red, {});
    EXPECT_TRUE(isRed(first(DecodeAll(ycc, {}))));
    const auto rgb = DecodeAll(Make(8, 8, 3, red, {.stored = JCS_RGB}), {});
    EXPECT_EQ(rgb.kind, kJpegRgb);
    EXPECT_TRUE(isRed(first(rgb)));
    // Without marks only who knows better can tell.
    const auto plain = Make(8, 8, 3, red, {.stored = JCS_RGB, .marked = false});
    const auto stored = DecodeAll(plain, {.colour = JpegColour::kStored});
    EXPECT_FALSE(stored.description.colourIsMarked);
    EXPECT_TRUE(isRed(first(stored)));
    EXPECT_FALSE(isRed(first(DecodeAll(plain, {}))));
}

TEST(JpegEngine, InksBecomeColours) {
    ByteVector inks;  // light, as those who mark four components write it
    for (int i = 0; i < 64; ++i) inks.insert(inks.end(), {250, 40, 50, 200});
    for (J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
        const auto stream = Make(8, 8, 4, inks, {.in = JCS_CMYK, .stored = stored});
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
    int bytesPerSample;
};

std::vector<Sample> Samples() {
    const ByteVector grey = Picture(97, 83, 1, 1, 8);
    const ByteVector rgb = Picture(64, 60, 3, 1, 8);
    return {{"baseline", Code({.columns = 97, .rows = 83, .quality = 90}, grey), 1},
            {"4:2:0", Make(64, 60, 3, rgb, {.horizontal = 2, .vertical = 2}), 1},
            {"progressive", Make(64, 60, 3, rgb, {.progressive = true}), 1},
            {"restarts", Make(64, 60, 3, rgb, {.restart = 1}), 1},
            {"12 bits",
             Code({.columns = 50,
                   .rows = 70,
                   .bytesPerSample = 2,
                   .process = JpegProcess::kExtended,
                   .precision = 12},
                  Picture(50, 70, 1, 2, 12)),
             2},
            {"lossless 16", Code(Lossless(50, 70, 1, 16), Picture(50, 70, 1, 2, 16)), 2},
            {"lossless RGB", Code(Lossless(40, 30, 3, 8), Picture(40, 30, 3, 1, 8)), 1}};
}

TEST(JpegEngine, LinesAheadOfABreakAreRight) {
    for (const Sample& sample : Samples()) {
        const auto whole = DecodeAll(sample.stream, {.bytesPerSample = sample.bytesPerSample});
        ASSERT_EQ(whole.lastAnswer, 1) << sample.what;
        int last = 0;
        for (std::size_t length = 0; length + 2 < sample.stream.size(); length += 11) {
            const ByteVector cut(sample.stream.begin(),
                                 sample.stream.begin() + static_cast<std::ptrdiff_t>(length));
            const auto decoded =
                DecodeAll(cut, {.bytesPerSample = sample.bytesPerSample, .block = 512});
            if (decoded.kind < 1) {
                // A table that breaks off between two scans is found when all of them are read.
                const bool isLate = decoded.kind == -13 && sample.what == "progressive";
                EXPECT_TRUE(isLate || decoded.kind == (length < 2 ? -1 : 0))
                    << sample.what << " at " << length;
                continue;
            }
            EXPECT_EQ(decoded.lastAnswer, -1) << sample.what << " at " << length;
            if (sample.what == "progressive") continue;
            EXPECT_GE(decoded.lines, last) << sample.what << " at " << length;
            last = decoded.lines;
            const auto right = decoded.lines * static_cast<std::ptrdiff_t>(decoded.layout.rowBytes);
            EXPECT_TRUE(std::equal(decoded.pixels.begin(), decoded.pixels.begin() + right,
                                   whole.pixels.begin()))
                << sample.what << " at " << length;
        }
        // Without the end marker everything is there.
        const ByteVector unended(sample.stream.begin(), sample.stream.end() - 2);
        EXPECT_EQ(DecodeAll(unended, {.bytesPerSample = sample.bytesPerSample}).pixels,
                  whole.pixels)
            << sample.what;
    }
}

TEST(JpegEngine, FlippedBitsGiveACodeAndNothingElse) {
    std::mt19937 random(5);
    for (const Sample& sample : Samples()) {
        for (int round = 0; round < 150; ++round) {
            ByteVector damaged = sample.stream;
            for (int flip = 0; flip < 1 + round % 4; ++flip) {
                // Half of the damage goes to the headers.
                const std::size_t range =
                    round % 2 == 0 ? std::min<std::size_t>(damaged.size(), 200) : damaged.size();
                damaged[random() % range] ^= static_cast<unsigned char>(1U << (random() % 8));
            }
            const auto decoded = DecodeAll(damaged, {.bytesPerSample = sample.bytesPerSample});
            EXPECT_LE(decoded.lines, decoded.description.frame.height);
        }
    }
}

struct HeaderCase {
    const char* what;
    std::size_t place;  // from the frame header's marker
    unsigned char value;
    int kind;
};
constexpr HeaderCase kHeaders[] = {
    {"arithmetic coding", 1, 0xC9, 0}, {"hierarchical", 1, 0xC5, 0},   {"9 bits", 4, 9, 0},
    {"no components", 9, 0, 0},        {"two components", 9, 2, 0},    {"sampling 0", 11, 0x01, 0},
    {"sampling 5", 11, 0x51, 0},       {"as it was", 4, 8, kJpegGrey},
};

TEST(JpegEngine, StreamsThatAreNotDecodedAreToldApart) {
    const ByteVector stream = Code({.columns = 8, .rows = 8}, Picture(8, 8, 1, 1, 8));
    const unsigned char marker[] = {0xFF, 0xC0};
    const auto frame = std::search(stream.begin(), stream.end(), marker, marker + 2);
    ASSERT_NE(frame, stream.end());
    for (const HeaderCase& c : kHeaders) {
        ByteVector other = stream;
        other[static_cast<std::size_t>(frame - stream.begin()) + c.place] = c.value;
        EXPECT_EQ(DecodeAll(other, {}).kind, c.kind) << c.what;
    }
    ByteVector flat = stream;
    flat[static_cast<std::size_t>(frame - stream.begin()) + 6] = 0;  // no lines
    EXPECT_EQ(DecodeAll(flat, {}).kind, 0);
    EXPECT_EQ(DecodeAll({'B', 'M', 1, 2, 3, 4}, {}).kind, -1);
    EXPECT_EQ(DecodeAll({}, {}).kind, -1);
}

TEST(JpegEngine, AProgressiveStreamAsksForNoMoreMemoryThanItsBytesCanFill) {
    const ByteVector small = Picture(16, 16, 3, 1, 8);
    ByteVector stream = Make(16, 16, 3, small, {.progressive = true});
    const unsigned char marker[] = {0xFF, 0xC2};
    const auto frame = std::search(stream.begin(), stream.end(), marker, marker + 2);
    for (int i = 5; i < 9; ++i) frame[i] = 0xEA;
    EXPECT_EQ(DecodeAll(stream, {}).kind, 0);
}

int RefuseCoded(int event, void* context, unsigned char** buffer, std::uint16_t* length) {
    if (event == kJpegWriteBlock) return 1;
    return testing::TakeCoded(event, context, buffer, length);
}

TEST(JpegEngine, ARefusingReceiverEndsTheCoding) {
    const ByteVector picture = Picture(300, 300, 1, 2, 16);
    testing::CodedOutput output;
    JpegCodingBlock coding = Lossless(300, 300, 1, 16);
    coding.write = RefuseCoded;
    coding.writeContext = &output;
    JpegCompressionHandle handle;
    EXPECT_NE(comp_im_buf(handle, coding, picture.data(), 300), 0);
    EXPECT_EQ(handle, nullptr);
}

TEST(JpegEngine, ThreadsDoNotDisturbEachOther) {
    const auto samples = Samples();
    std::vector<ByteVector> expected;
    for (const Sample& s : samples) {
        expected.push_back(DecodeAll(s.stream, {.bytesPerSample = s.bytesPerSample}).pixels);
    }
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (unsigned round = 0; round < 20; ++round) {
                const std::size_t i = (t + round) % samples.size();
                const auto decoded =
                    DecodeAll(samples[i].stream, {.bytesPerSample = samples[i].bytesPerSample});
                if (decoded.pixels != expected[i]) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace quorvex
