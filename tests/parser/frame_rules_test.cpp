// Frames by the standard rules, unpacked frames, and what is told about a frame.
#include "parser/photometric.h"
#include "quorvex/Attributes.h"
#include "tests/codec/coded_frames.h"
#include "tests/engines/jpeg2000_test_streams.h"
#include "tests/parser/parsed.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/answers.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr ImageFacts RowOf(const char* photometric, unsigned columns, unsigned bits,
                           unsigned samples, const char* frames = nullptr) {
    return {1, columns, bits, photometric, samples, frames};
}

Answered FrameByRules(Rules rules, const Bytes& file, Parsed& parsed) {
    parsed.parser.SetRules(rules);
    EXPECT_EQ(parsed.Read(file), QVM_SUCCESS);
    return FrameOf(parsed.parser);
}

constexpr auto kRefused = QVM_ERROR_INVALID_PHOTOMETRIC;

// Y, Cb, Cr are (252, 130, 130), (100, 90, 240) and (16, 128, 128): by PS3.3 C.7.6.3.1.2 R is
// 254.8, 257.0 and 16.0, G 249.9, 33.1 and 16.0, B 255.5, 32.7 and 16.0.
const Bytes kPixels = {252, 130, 130, 100, 90, 240, 16, 128, 128};
const Bytes kRgb = {255, 250, 255, 255, 33, 33, 16, 16, 16};
const Bytes kPairs = {235, 235, 128, 128, 16, 16, 128, 128};  // of the video range, both Y first
const Bytes kWhiteAndBlack = {255, 255, 255, 255, 255, 255, 0, 0, 0, 0, 0, 0};

const Bytes kTwoFrames = {252, 130, 130, 100, 90, 240, 16, 128, 128, 1, 2, 3, 4, 5, 6, 7, 8, 9};

const struct {
    const char* what;
    ImageFacts facts;
    Bytes pixels;
    Answered standard;
    Answered established;  ///< of three samples
} kPhotometrics[] = {
    {"full", RowOf("YBR_FULL", 3, 8, 3), kPixels, Done(kRgb),
     Done({255, 250, 0, 1, 33, 33, 16, 16, 16})},
    {"small letters", RowOf("ybr_full", 3, 8, 3), kPixels, Done(kRgb), Done(Bytes(9))},
    {"blanks", RowOf(" YBR FULL", 3, 8, 3), kPixels, Done(kRgb), Done(Bytes(9))},
    {"video", RowOf("YBR_PARTIAL_422", 4, 8, 3), kPairs, Done(kWhiteAndBlack),
     Done(kWhiteAndBlack)},
    {"video in small letters", RowOf("Ybr_Partial_422", 4, 8, 3), kPairs, Done(kWhiteAndBlack),
     Done(Bytes(12))},
    {"grey in small letters",
     RowOf("monochrome2", 2, 8, 1),
     {7, 8},
     Done({7, 8}),
     Done({7, 8, 0, 0, 0, 0})},
    {"palette", RowOf("Palette_Color", 2, 8, 1), {7, 8}, Done({7, 8}), {}},
    {"none of the standard", RowOf("YUV", 1, 8, 3), {1, 2, 3}, Refused(kRefused), Done(Bytes(3))},
    {"of coded frames only",
     RowOf("YBR_ICT", 1, 8, 3),
     {1, 2, 3},
     Refused(kRefused),
     Done(Bytes(3))},
    {"16-bit video", RowOf("YBR_PARTIAL_422", 2, 16, 3), Bytes(8), Refused(kRefused),
     Done(Bytes(12))},
    {"32 bits", RowOf("YBR_FULL", 1, 32, 3), Bytes(12), Refused(kRefused), Done(Bytes(12))},
    {"422 of three samples a pixel", RowOf("YBR_FULL_422", 3, 8, 3), kPixels, Done(kRgb), {}},
    {"422 of three samples a pixel, two frames",
     RowOf("YBR_FULL_422", 3, 8, 3, "2"),
     kTwoFrames,
     Done(kRgb),
     {}},
};

TEST(FrameRules, DecideTheColoursOfNativeFrames) {
    for (const auto& c : kPhotometrics) {
        const Bytes file = NativeFile(kExplicitUid, c.facts, c.pixels);
        Parsed standard;
        EXPECT_EQ(FrameByRules(Rules::kStandard, file, standard), c.standard) << c.what;
        const auto samples = Read<unsigned short>(*standard.Header(), tag::kSamplesPerPixel);
        EXPECT_EQ(samples, c.facts.samples) << c.what;
        Parsed established;
        if (c.facts.samples == 3 && c.established.code == QVM_SUCCESS) {
            EXPECT_EQ(FrameByRules(Rules::kEstablished, file, established), c.established)
                << c.what;
        }
        CxDcmParser copy(standard.parser);
        EXPECT_EQ(FrameOf(copy), c.standard) << c.what << ", copied";
        const Parsed whole(file, 1);
        CDcmApp app;
        CxDcmParser ofObject;
        ofObject.SetRules(Rules::kStandard);
        ASSERT_EQ(ofObject.Initialize(&app, whole.Header(), nullptr, 0, 0), QVM_SUCCESS);
        EXPECT_EQ(FrameOf(ofObject), c.standard) << c.what << ", from an object";
    }
}

Bytes AsBytes(const std::vector<unsigned>& words, bool isBigEndian = false) {
    Bytes bytes;
    for (const unsigned word : words) {
        const auto low = static_cast<unsigned char>(word & 0xFF);
        const auto high = static_cast<unsigned char>(word >> 8);
        bytes.push_back(isBigEndian ? high : low);
        bytes.push_back(isBigEndian ? low : high);
    }
    return bytes;
}

// By PS3.3 C.7.6.3.1.2 with half of full scale for no colour: 32768, or 2048 of 12 bits.
TEST(FrameRules, DecideTheColoursOfWords) {
    using Words = std::vector<unsigned>;
    const struct {
        const char* what;
        const char* photometric;
        unsigned columns;
        unsigned stored;
        unsigned planar;
        Words samples;
        Words rgb;
    } kFrames[] = {
        {"pixels",
         "YBR_FULL",
         3,
         16,
         0,
         {40000, 33768, 30768, 65000, 32768, 65535, 100, 0, 32768},
         {37196, 41084, 41772, 65535, 41600, 65000, 100, 11377, 0}},
        {"planes",
         "YBR_FULL",
         3,
         16,
         1,
         {40000, 65000, 100, 33768, 32768, 0, 30768, 65535, 32768},
         {37196, 41084, 41772, 65535, 41600, 65000, 100, 11377, 0}},
        {"12 bits, with others above",
         "YBR_FULL",
         3,
         12,
         0,
         {2000, 0xF000 + 2048, 2048, 2000, 2148, 1848, 4000, 4095, 0},
         {2000, 2000, 2000, 1720, 2108, 2177, 1129, 4095, 4095}},
        {"shared colours",
         "YBR_FULL_422",
         2,
         16,
         0,
         {40000, 50000, 33768, 30768},
         {37196, 41084, 41772, 47196, 51084, 51772}},
        {"three samples a pixel",
         "YBR_FULL_422",
         2,
         16,
         0,
         {40000, 33768, 30768, 50000, 33768, 30768},
         {37196, 41084, 41772, 47196, 51084, 51772}},
    };
    for (const auto& c : kFrames) {
        ImageFacts facts = RowOf(c.photometric, c.columns, 16, 3);
        facts.stored = c.stored;
        for (const auto uid : {kExplicitUid, kBigEndianUid}) {
            const bool isBigEndian = uid == kBigEndianUid;
            const Bytes file = ImageFile(uid, facts)
                                   .Words(tag::kPlanarConfiguration, "US", {c.planar})
                                   .Padded(tag::kPixelData, "OW", AsBytes(c.samples, isBigEndian))
                                   .Bytes();
            Parsed parsed;
            EXPECT_EQ(FrameByRules(Rules::kStandard, file, parsed), Done(AsBytes(c.rgb)))
                << c.what << (isBigEndian ? ", big endian" : "");
        }
    }
    const Bytes coded = JoinSegments({{1, 40000 >> 8, 65000 >> 8},
                                      {1, 40000 & 255, 65000 & 255},
                                      {1, 33768 >> 8, 32768 >> 8},
                                      {1, 33768 & 255, 0},
                                      {1, 30768 >> 8, 255},
                                      {1, 30768 & 255, 255}});
    Parsed parsed;
    const Bytes file = EncapsulatedFile(kRleUid, RowOf("YBR_FULL", 2, 16, 3), {coded});
    EXPECT_EQ(FrameByRules(Rules::kStandard, file, parsed),
              Done(AsBytes({37196, 41084, 41772, 65535, 41600, 65000})));
}

TEST(FrameRules, DecideTheColoursOfRleFrames) {
    const Bytes coded = JoinSegments({{2, 252, 100, 16}, {2, 130, 90, 128}, {2, 130, 240, 128}});
    const Bytes video = JoinSegments({{1, 235, 16}, {1, 128, 128}, {1, 128, 128}});
    const struct {
        const char* photometric;
        unsigned columns;
        const Bytes& stream;
        Answered frame;
    } kFrames[] = {
        {"YBR_FULL", 3, coded, Done(kRgb)},
        {"YBR_FULL_422", 3, coded, Done(kRgb)},
        {"YBR_PARTIAL_422", 2, video, Done({255, 255, 255, 0, 0, 0})},
        {"YBR_RCT", 3, coded, Refused(kRefused)},
    };
    for (const auto& c : kFrames) {
        Parsed parsed;
        const Bytes file =
            EncapsulatedFile(kRleUid, RowOf(c.photometric, c.columns, 8, 3), {c.stream});
        EXPECT_EQ(FrameByRules(Rules::kStandard, file, parsed), c.frame) << c.photometric;
    }
}

/// Lossy JPEG 2000 of 16 bits, of white and black stripes of 12.
CDcmObject StripesCodedWithLosses(bool isSigned) {
    std::vector<std::int16_t> stripes;
    for (int i = 0; i < 64 * 64; ++i) {
        const bool isWhite = i / 3 % 2 == 0;
        stripes.push_back(
            static_cast<std::int16_t>(isSigned ? (isWhite ? 2047 : -2048) : (isWhite ? 4095 : 0)));
    }
    CDcmObject object;
    const unsigned short sign = isSigned ? 1 : 0;
    pipeline_test::FillImage(object, {.size = {64, 64}, .pixelRepresentation = sign}, stripes);
    EXPECT_EQ(test::ConvertTo(kXferJpeg2000, object, 12).Code(), QVM_SUCCESS);
    return object;
}

TEST(FrameRules, BringOvershootBackIntoItsBits) {
    for (const bool isSigned : {false, true}) {
        CDcmObject object = StripesCodedWithLosses(isSigned);
        const auto valuesBy = [&](Rules rules) {
            CDcmApp app;
            CxDcmParser parser;
            parser.SetRules(rules);
            EXPECT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
            const auto bytes = test::FrameOf(parser).bytes;
            std::vector<int> values;
            for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
                const int word = bytes[i] | bytes[i + 1] << 8;
                values.push_back(isSigned ? static_cast<std::int16_t>(word) : word);
            }
            return values;
        };
        const int lowest = isSigned ? -2048 : 0;
        std::vector<int> expected = valuesBy(Rules::kEstablished);
        EXPECT_GT(std::ranges::max(expected), lowest + 4095) << "or it shows nothing";
        for (int& value : expected) value = std::clamp(value, lowest, lowest + 4095);
        EXPECT_EQ(valuesBy(Rules::kStandard), expected);
    }
}

TEST(UnpackedFrames, HaveASampleInEachByteOrWord) {
    const struct {
        const char* what;
        ImageFacts facts;
        Bytes pixels;
        Answered frame;
    } kFrames[] = {
        {"bits",
         RowOf(nullptr, 10, 1, 1),
         {0b11010010, 0b10},
         Done({0, 1, 0, 0, 1, 0, 1, 1, 0, 1})},
        {"bits, cut", RowOf(nullptr, 10, 1, 1), {0xFF}, Done({1, 1, 1, 1, 1, 1, 1, 1, 0, 0})},
        {"4 bits", RowOf(nullptr, 3, 4, 1), {0x21, 0x43}, Done({1, 2, 3})},
        {"12 bits", RowOf(nullptr, 2, 12, 1), {0xBC, 0x3A, 0x12}, Done({0xBC, 0x0A, 0x23, 0x01})},
        {"24 bits", RowOf(nullptr, 1, 24, 1), {1, 2, 3}, Done({1, 2, 3, 0})},
        {"12-bit colour",
         RowOf("RGB", 1, 12, 3),
         {0x01, 0x20, 0x00, 0x03, 0x00},
         Done({1, 0, 2, 0, 3, 0})},
        {"8 bits", RowOf(nullptr, 2, 8, 1), {5, 6}, Done({5, 6})},
        {"16 bits", RowOf(nullptr, 1, 16, 1), {5, 6}, Done({5, 6})},
        {"40 bits", RowOf(nullptr, 1, 40, 1), Bytes(5), Refused(QVM_ERROR_INVALID_BITS_ALLOCATED)},
    };
    for (const auto& c : kFrames) {
        Parsed parsed(NativeFile(kExplicitUid, c.facts, c.pixels));
        unsigned char* data = nullptr;
        unsigned long size = 0;
        const auto code = parsed.parser.GetAFrameUnpacked(0, data, size);
        EXPECT_EQ(Answered::Take(code, data, size), c.frame) << c.what;
    }
}

Bytes Cut(Bytes bytes, std::size_t lacks) {
    bytes.resize(bytes.size() - lacks);
    return bytes;
}

TEST(FrameQuality, IsToldAfterEachFetch) {
    const FrameForm form{64, 64};
    const ImageFacts facts{.rows = 64, .columns = 64, .bits = 8};
    const ImageFacts wider{.rows = 64, .columns = 70, .bits = 8};
    const ImageFacts two{.rows = 64, .columns = 64, .bits = 8, .frames = "2"};
    const Bytes pixels = PictureOf(form);
    const Bytes jpeg = testing::Code({.columns = 64, .rows = 64}, pixels);
    const Bytes j2k = testing::CodeJpeg2000({64, 64}, pixels);
    const Bytes rle = CodeRle(form, pixels);
    const Bytes shortRle = JoinSegments({{257 - 100, 9}});
    const auto coded = [](std::string_view uid, const ImageFacts& as, const Bytes& stream) {
        return EncapsulatedFile(uid, as, {stream});
    };
    const auto split = [](const Bytes& stream) {
        const auto middle = stream.begin() + 10;
        return std::vector<Bytes>{{stream.begin(), middle}, {middle, stream.end()}};
    };
    std::vector<Bytes> fragments = split(jpeg);
    fragments.push_back(jpeg);
    const struct {
        const char* what;
        Bytes file;
        FrameQuality quality;
    } kFrames[] = {
        {"native", NativeFile(kExplicitUid, facts, pixels), FrameQuality::kWhole},
        {"native, cut", NativeFile(kExplicitUid, facts, Cut(pixels, 2)), FrameQuality::kPartial},
        {"RLE", coded(kRleUid, facts, rle), FrameQuality::kWhole},
        {"short RLE", coded(kRleUid, facts, shortRle), FrameQuality::kPartial},
        {"JPEG", coded(kCodings[2].uid, facts, jpeg), FrameQuality::kWhole},
        {"JPEG, cut", coded(kCodings[2].uid, facts, Cut(jpeg, 100)), FrameQuality::kPartial},
        {"narrow JPEG", coded(kCodings[2].uid, wider, jpeg), FrameQuality::kPartial},
        {"JPEG 2000", coded(kCodings[5].uid, facts, j2k), FrameQuality::kWhole},
        {"JPEG 2000, cut", coded(kCodings[5].uid, facts, Cut(j2k, j2k.size() / 3)),
         FrameQuality::kPartial},
        {"starts of image", EncapsulatedFile(kCodings[2].uid, two, fragments),
         FrameQuality::kGuessed},
    };
    for (const auto& c : kFrames) {
        for (const int readWholeFile : {0, 1}) {
            Parsed parsed(c.file, readWholeFile);
            EXPECT_EQ(parsed.parser.GetFrameQuality(), FrameQuality::kNone);
            EXPECT_EQ(FrameOf(parsed.parser).code, QVM_SUCCESS) << c.what;
            EXPECT_EQ(parsed.parser.GetFrameQuality(), c.quality) << c.what << readWholeFile;
            EXPECT_NE(FrameOf(parsed.parser, 7).code, QVM_SUCCESS);
            EXPECT_EQ(parsed.parser.GetFrameQuality(), FrameQuality::kNone);
        }
    }
}

TEST(CodedBits, ComePackedOrAByteEach) {
    constexpr unsigned kColumns = 11;
    constexpr unsigned kRows = 3;
    Bytes pixels(std::size_t{kColumns} * kRows);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = i % 3 == 0 ? 1 : 0;
    const Bytes coded =
        testing::CodeJpeg2000({.columns = kColumns, .rows = kRows, .bitDepth = 1}, pixels);
    Bytes packed(pixels.size());
    for (std::size_t i = 0; i < pixels.size(); ++i)
        packed[i / 8] |= static_cast<unsigned char>(pixels[i] << (i % 8));
    Parsed parsed(EncapsulatedFile(kCodings[6].uid, {.rows = kRows, .columns = kColumns, .bits = 1},
                                   {coded}));
    EXPECT_EQ(FrameOf(parsed.parser).bytes, packed);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    ASSERT_EQ(parsed.parser.GetAFrameUnpacked(0, data, size), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> owner(data);
    EXPECT_EQ(Bytes(data, data + size), pixels);
}

}  // namespace
}  // namespace quorvex
