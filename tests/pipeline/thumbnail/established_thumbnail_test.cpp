#include "pipeline/thumbnail/thumbnail_pixels.h"
#include "pipeline/thumbnail/thumbnail_window.h"
#include "tests/parser/parsed.h"
#include "tests/support/attribute_values.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace quorvex {
namespace {

using namespace test;

std::vector<std::uint16_t> Words(const std::vector<int>& values) {
    std::vector<std::uint16_t> words;
    for (const int value : values) words.push_back(static_cast<std::uint16_t>(value));
    return words;
}

TEST(ThumbnailWindow, SpansTheData) {
    const struct {
        const char* what;
        std::vector<int> values;
        bool isSigned;
        int low;   ///< the last value of 0
        int high;  ///< the first value of 255
    } kRanges[] = {
        {"wide, above 0", {100, 5000}, false, 100, 3100},
        {"wide on both sides", {-4000, 4000}, true, -3000, 3000},
        {"wide, little below 0", {-1000, 3500}, true, -1000, 2000},
        {"wide, below 0", {-5000, -100}, true, -3100, -100},
        {"narrow", {10, 265}, false, 10, 265},
    };
    for (const auto& c : kRanges) {
        const ThumbnailWindow window = MakeWindowTable(Words(c.values), c.isSigned, 0);
        for (const int value : {-65536, c.low}) EXPECT_EQ(window.At(value), 0) << c.what;
        EXPECT_EQ(window.At((c.low + c.high) / 2), 127) << c.what;
        EXPECT_LT(window.At(c.high - 1), 255) << c.what;
        for (const int value : {c.high, 65535}) EXPECT_EQ(window.At(value), 255) << c.what;
    }
    EXPECT_EQ(MakeWindowTable(Words({7, 7}), false, 0).At(60000), 0);
    EXPECT_EQ(MakeWindowTable(Words({-2000, 0, 255}), true, -2000).At(128), 128);
    EXPECT_EQ(MakeWindowTable(Words({0, 100, 9000}), false, 9000).At(9000), 0);
}

TEST(ThumbnailWindow, FollowsTheHeader) {
    const auto windowOf = [](const std::string& header) {
        return MakeWindowTableFromHeader(With("00280004=MONOCHROME2; 00280101=12" + header));
    };
    const std::string kWindow = "; 00281050=100; 00281051=200";
    const struct {
        const char* what;
        std::string header;
        int value;
        int byte;
    } kHeaders[] = {
        {"below", kWindow, -1, 0},
        {"center", kWindow, 100, 127},
        {"above", kWindow, 200, 255},
        {"inverse, below", kWindow + "; 00280004=MONOCHROME1", -1, 255},
        {"inverse, above", kWindow + "; 00280004=MONOCHROME1", 200, 0},
        {"center by default", "", 1200, 127},
        {"end by default", "", 2400, 255},
        {"center by default, bytes", "; 00280101=8", 255, 127},
        {"width by default", "; 00281050=100", 1300, 255},
    };
    for (const auto& c : kHeaders) EXPECT_EQ(windowOf(c.header).At(c.value), c.byte) << c.what;
    const auto plain = windowOf(kWindow);
    const auto halved = windowOf("; 00281050=200; 00281051=400; 00281053=2");
    for (int i = -10; i < 300; ++i) EXPECT_EQ(halved.At(i), plain.At(i));
    for (const char* odd : {"=0", "=200; 00281053=0", "=-5", "=2147483647; 00281053=1e-30"}) {
        const auto window = windowOf("; 00281050=100; 00281051" + std::string(odd));
        EXPECT_LE(window.At(-60000), window.At(60000)) << odd;
    }
}

struct Asked {
    CSize size{4, 4};
    int format = kXferUncompressed;
    int useDataRange = 1;
    int frame = 0;
};

struct Thumbnail : Answered {
    unsigned long headerSize = 0;
    tagBITMAPINFOHEADER header;
};

Thumbnail Make(const Bytes& file, const Asked& asked = {}) {
    Parsed parsed(file);
    EXPECT_EQ(parsed.code, QVM_SUCCESS);
    unsigned char* image = nullptr;
    unsigned long size = 0;
    tagBITMAPINFOHEADER* header = nullptr;
    Thumbnail made;
    const auto code = parsed.parser.MakeThumbNail(
        asked.frame, asked.size, static_cast<QUORVEX_XFERSYNTAX>(asked.format), asked.useDataRange,
        image, size, header, made.headerSize, 90);
    static_cast<Answered&>(made) = Answered::Take(code, image, size);
    auto* bytes = static_cast<unsigned char*>(static_cast<void*>(header));
    const std::unique_ptr<unsigned char[]> owner(bytes);
    EXPECT_EQ(header != nullptr, code == QVM_SUCCESS && asked.format == kXferUncompressed);
    if (header != nullptr) made.header = *header;
    EXPECT_TRUE(made.headerSize <= 40 || bytes[40 + 4 * 200 + 2] == 200);
    return made;
}

constexpr ImageFacts kColour{4, 4, 8, "RGB", 3};
constexpr ImageFacts kWords{8, 8};

TEST(Thumbnail, IsGreyOrColour) {
    Bytes words(128);
    for (std::size_t i = 0; i < 64; ++i) words[2 * i] = i < 32 ? 10 : 110;
    const Thumbnail small = Make(NativeFile(kExplicitUid, kWords, words));
    ASSERT_EQ(small.code, QVM_SUCCESS);
    ASSERT_EQ(small.bytes.size(), 16U);
    EXPECT_EQ(small.bytes.front(), 0);
    EXPECT_EQ(small.bytes.back(), 255);
    EXPECT_EQ(small.headerSize, 1064U);
    EXPECT_EQ(small.header.biWidth, 4);
    EXPECT_EQ(small.header.biHeight, 4);
    EXPECT_EQ(small.header.biBitCount, 8);

    const Thumbnail rgb = Make(NativeFile(kExplicitUid, kColour, Bytes(48, 77)), {.size = {8, 2}});
    EXPECT_EQ(rgb.bytes, Bytes(48, 77));
    EXPECT_EQ(rgb.headerSize, 40U);
    EXPECT_EQ(rgb.header.biBitCount, 24);
    EXPECT_EQ(Make(NativeFile(kExplicitUid, {4, 4, 8}, Bytes(16, 5))).bytes, Bytes(16, 5));
}

TEST(Thumbnail, IsTheSameForEveryByteOrder) {
    Bytes words(128);
    Bytes swapped(128);
    for (std::size_t i = 0; i < 128; i += 2)
        words[i] = swapped[i + 1] = static_cast<unsigned char>(i / 2 * 3);
    for (const int useDataRange : {0, 1}) {
        const auto made =
            Make(NativeFile(kExplicitUid, kWords, words), {.useDataRange = useDataRange});
        EXPECT_EQ(made.code, QVM_SUCCESS);
        EXPECT_EQ(Make(NativeFile(kBigEndianUid, kWords, swapped), {.useDataRange = useDataRange}),
                  made);
    }
}

TEST(Thumbnail, IsCodedWhereAsked) {
    Bytes words(32, 0);
    std::fill(words.begin() + 16, words.end(), static_cast<unsigned char>(0xFF));
    const ImageFacts grey{.rows = 4, .columns = 4, .representation = 1};
    for (const Bytes& file : {NativeFile(kExplicitUid, kColour, Bytes(48, 77)),
                              NativeFile(kExplicitUid, grey, words)}) {
        const Bytes plain = Make(file, {.size = {8, 8}}).bytes;
        for (const int format : {5, 7}) {
            Thumbnail coded = Make(file, {.size = {8, 8}, .format = format});
            EXPECT_EQ(coded.headerSize, 0U);
            const BlindAnswer decoded = BlindlyDecoded(kBlindDecoders[0], coded.bytes);
            ASSERT_EQ(decoded.code, QVM_SUCCESS) << format;
            EXPECT_EQ(decoded.width, 8);
            EXPECT_EQ(decoded.height, 8);
            ASSERT_EQ(decoded.bytes.size(), plain.size());
            for (std::size_t i = 0; i < plain.size(); ++i)
                EXPECT_NEAR(decoded.bytes[i], plain[i], 8) << format;
        }
    }
}

TEST(ThumbnailPixels, TakeEveryDepth) {
    const struct {
        const char* what;
        std::uint16_t bitsAllocated, samples;
        Bytes frame;  ///< one row of two pixels
        Bytes bytes;
    } cases[] = {
        {"bits", 1, 1, {0b10}, {0, 255}},
        {"bytes, cut", 8, 1, {7}, {7, 0}},
        {"32-bit grey", 32, 1, {0, 0, 0, 64, 0, 0, 0, 192}, {0, 255}},
        {"16-bit colour", 16, 3, {9, 1, 9, 2, 9, 3, 9, 4, 9, 5, 9, 6}, {1, 2, 3, 4, 5, 6}},
        {"four samples", 8, 4, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    for (const auto& c : cases) {
        CDcmObject header;
        FrameShape shape;
        shape.rows = 1;
        shape.columns = 2;
        shape.samplesPerPixel = c.samples;
        shape.bitsAllocated = c.bitsAllocated;
        EXPECT_EQ(ReduceToBytes(header, shape, c.frame, false, 1).bytes, c.bytes) << c.what;
    }
}

TEST(Thumbnail, LeavesNothingBehindARefusingCoder) {
    Parsed parsed(NativeFile(kExplicitUid, {4, 4, 8}, Bytes(16, 5)));
    Bytes old(4);
    unsigned char* image = old.data();
    unsigned long size = 4;
    tagBITMAPINFOHEADER former;
    tagBITMAPINFOHEADER* header = &former;
    unsigned long headerSize = 40;
    EXPECT_EQ(parsed.parser.MakeThumbNail(0, {65536, 1}, kXferJpegBaseline, 1, image, size, header,
                                          headerSize, 90),
              QVM_ERROR_FAILED_TO_COMPRESS);
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(header, nullptr);
    EXPECT_EQ(headerSize, 0U);
}

TEST(Thumbnail, SaysWhyThereIsNone) {
    constexpr ImageFacts kPalette{2, 2, 8, "PALETTE COLOR"};
    const struct {
        const char* what;
        ImageFacts facts;
        Asked asked;
        QUORVEX_MESSAGE code;
    } kRefusals[] = {
        {"width", {}, {.size = {50, 4}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"height", {}, {.size = {4, 0}}, QVM_ERROR_INVALID_OUTPUT_SIZE},
        {"format", {}, {.format = 6}, QVM_ERROR_INVALID_TARGET_SYNTAX},
        {"frame", {}, {.frame = 1}, QVM_ERROR_INVALID_FRAME_INDEX},
        {"depth", {.bits = 12}, {}, QVM_ERROR_INVALID_BITS_ALLOCATED},
        {"palette", kPalette, {}, QVM_ERROR_INVALID_PHOTOMETRIC},
    };
    for (const auto& c : kRefusals) {
        const Thumbnail made = Make(NativeFile(kExplicitUid, c.facts, Bytes(8, 1)), c.asked);
        EXPECT_EQ(made.code, c.code) << c.what;
        EXPECT_TRUE(made.bytes.empty()) << c.what;
    }
    CxDcmParser parser;
    EXPECT_EQ(ThumbnailOf(parser, {}).code, QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

}  // namespace
}  // namespace quorvex
