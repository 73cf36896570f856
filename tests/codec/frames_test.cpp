// Plain and RLE frames through CxImageProcessor, and frames scaled.
#include "tests/codec/coded_frames.h"

#include <chrono>
#include <gtest/gtest.h>
#include <numeric>

namespace quorvex::test {
namespace {

_IMAGE_PROCESS_PARAM Grey(std::uint32_t syntax, unsigned rows, unsigned columns, int bits) {
    _IMAGE_PROCESS_PARAM param = ParamOf(syntax, {columns, rows});
    param.bitsAllocated = static_cast<std::uint16_t>(bits);
    return param;
}

_IMAGE_PROCESS_PARAM Colour(std::uint32_t syntax, unsigned rows, unsigned columns,
                            const char* photometric = "RGB") {
    _IMAGE_PROCESS_PARAM param = ParamOf(syntax, {columns, rows, 3});
    param.photometric = photometric;
    return param;
}

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

TEST(PlainFrame, IsCopiedUnderEverySyntaxWithoutDecoder) {
    for (const std::uint32_t syntax : {100U, 101U, 104U, 115U, 117U, 7U}) {
        for (const int allocMode : {1, 0}) {
            Bytes source = Counting(8);
            const auto decoded = Decompress(Grey(syntax, 2, 2, 16), source, allocMode);
            EXPECT_EQ(decoded.code, QVM_FRAME_COPIED) << syntax;
            EXPECT_EQ(decoded.frame, Counting(8)) << syntax;
        }
    }
    Bytes source = Counting(8);
    EXPECT_EQ(Decompress(Grey(0, 2, 2, 16), source).code, QVM_ERROR_INVALID_SOURCE_SYNTAX);
}

TEST(PlainFrame, BigEndianIsSwappedInTheSource) {
    for (const std::uint32_t syntax : {102U, 103U}) {
        Bytes source{1, 2, 3, 4, 5};
        EXPECT_EQ(Decompress(Grey(syntax, 1, 5, 8), source).frame, (Bytes{2, 1, 4, 3, 5}));
        EXPECT_EQ(source, (Bytes{2, 1, 4, 3, 5}));
    }
    Bytes colour = Counting(6);
    EXPECT_EQ(Decompress(Colour(102, 1, 2), colour).frame, Counting(6));
}

TEST(PlainFrame, GrowsWithItsSourceAndIsZeroWhereThatEnds) {
    Bytes longer = Counting(16);  // 32 bits allocated: the frame counts two bytes for each
    EXPECT_EQ(Decompress(Grey(101, 2, 2, 32), longer).frame, Counting(16));
    Bytes shorter = Counting(3);
    EXPECT_EQ(Decompress(Grey(101, 2, 2, 16), shorter).frame, (Bytes{1, 2, 3, 0, 0, 0, 0, 0}));
    Bytes unknown = Counting(12);
    EXPECT_EQ(Decompress(Colour(101, 2, 2, "CMYK"), unknown).frame, Bytes(12));
}

TEST(PlainFrame, StaysInsideTheCallersBlock) {
    auto param = Grey(101, 2, 2, 16);
    Bytes source = Counting(40);
    for (const unsigned long stated : {0UL, 8UL, 6UL}) {
        const bool fits = stated != 6;
        Bytes block(40, 0xEE);
        unsigned char* result = block.data();
        unsigned long size = stated;
        EXPECT_EQ(CxImageProcessor().DecompressFrameData(&param, source.data(), source.size(),
                                                         result, size, 0),
                  fits ? QVM_FRAME_COPIED : QVM_ERROR_FAILED_TO_DECOMPRESS);
        EXPECT_EQ(result, block.data());
        Bytes expected(40, 0xEE);
        if (fits) std::copy_n(source.begin(), 8, expected.begin());
        EXPECT_EQ(block, expected) << stated;
    }
}

TEST(CodedFrame, IsRefusedForGeometryThatNoDecoderHas) {
    Bytes source(64);
    for (const std::uint32_t syntax : {105U, 106U, 107U, 113U, 123U, 124U, 125U}) {
        auto samples = Grey(syntax, 2, 2, 8);
        samples.samplesPerPixel = 2;
        for (const auto& param :
             {samples, Grey(syntax, 0, 2, 8), Grey(syntax, 2, 0, 8), Grey(syntax, 2, 2, 7)}) {
            EXPECT_EQ(Decompress(param, source).code, QVM_ERROR_INVALID_IMAGE_FORMAT) << syntax;
        }
    }
}

TEST(CodedFrame, RleFailureIsReportedForGreyAndShownForColour) {
    Bytes damaged = JoinSegments({{0, 9, 0xFF}, {1, 1, 2}, {1, 3, 4}});
    auto colour = Colour(kRle, 1, 2);
    colour.planarConfiguration = 1;
    const auto shown = Decompress(colour, damaged);
    EXPECT_EQ(shown.code, QVM_SUCCESS);
    EXPECT_EQ(shown.frame, (Bytes{9, 0, 0, 0, 0, 0}));
    Bytes grey = JoinSegments({{0, 9, 0xFF}});
    EXPECT_EQ(Decompress(Grey(kRle, 1, 2, 8), grey).code, QVM_ERROR_FAILED_TO_DECOMPRESS);

    Bytes whole = JoinSegments({{1, 1, 2}, {1, 3, 4}, {1, 5, 6}});
    EXPECT_EQ(Decompress(colour, whole).frame, (Bytes{1, 3, 5, 2, 4, 6}));
    colour.planarConfiguration = 0;  // a segment for each byte of a pixel, the first one last
    EXPECT_EQ(Decompress(colour, whole).frame, (Bytes{5, 3, 1, 6, 4, 2}));
    colour.photometric = "YBR_ICT";
    EXPECT_EQ(Decompress(colour, whole).frame, Bytes(6));
}

TEST(CodedFrame, WideRleKeepsAllItsBytes) {
    Bytes source = JoinSegments({{0, 1}, {0, 2}, {0, 3}, {0, 4}});
    EXPECT_EQ(Decompress(Grey(kRle, 1, 1, 32), source).frame, (Bytes{4, 3, 2, 1}));
}

TEST(AnyFrame, TenBytesDoNotBuyGigabytes) {
    const auto begin = std::chrono::steady_clock::now();
    for (const std::uint32_t syntax : {101U, 102U, 105U, 106U, 124U}) {
        for (const auto& param : {Grey(syntax, 65535, 65535, 8), Colour(syntax, 65535, 65535)}) {
            Bytes source(10);
            const auto decoded = Decompress(param, source);
            EXPECT_EQ(decoded.code, QVM_ERROR_FAILED_TO_DECOMPRESS) << syntax;
            EXPECT_TRUE(decoded.frame.empty());
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
}

constexpr struct {
    const char* what;
    int bits, samples;
    CSize size;
    QUORVEX_MESSAGE code;
    std::size_t bytes;  ///< of the result; 0 for none
    unsigned char value = 0;
} kResizes[] = {
    {"grey", 8, 1, {12, 9}, QVM_SUCCESS, 108, 0x33},
    {"colour", 8, 3, {12, 9}, QVM_SUCCESS, 324, 0x33},
    {"four samples", 8, 4, {12, 9}, QVM_SUCCESS, 432, 0x33},
    {"words", 16, 1, {12, 9}, QVM_SUCCESS, 216, 0x33},
    {"32 bits: zeros", 32, 1, {4, 4}, QVM_SUCCESS, 64},
    {"two samples", 8, 2, {4, 4}, QVM_ERROR_INVALID_SAMPLES_PER_PIXEL, 32},
    {"a width of no whole words", 8, 1, {102, 4}, QVM_ERROR_INVALID_OUTPUT_SIZE, 0},
    {"no width", 8, 1, {0, 4}, QVM_ERROR_INVALID_OUTPUT_SIZE, 0},
    {"a negative width", 8, 1, {-4, 4}, QVM_ERROR_INVALID_OUTPUT_SIZE, 0},
    {"no height", 8, 1, {4, 0}, QVM_ERROR_INVALID_OUTPUT_SIZE, 0},
    {"too large", 8, 1, {2147483644, 2147483647}, QVM_ERROR_INVALID_OUTPUT_SIZE, 0},
};

TEST(ResizedFrame, HasItsSizeAndKeepsFlatPixels) {
    for (const auto& c : kResizes) {
        auto param = Grey(101, 7, 5, c.bits);
        param.samplesPerPixel = static_cast<std::uint16_t>(c.samples);
        Bytes source(static_cast<std::size_t>(7 * 5 * c.bits / 8 * c.samples), 0x33);
        unsigned char* result = nullptr;
        unsigned long size = 0;
        EXPECT_EQ(CxImageProcessor().ResizeImage(&param, source.data(), result, size, c.size),
                  c.code)
            << c.what;
        const std::unique_ptr<unsigned char[]> owner(result);
        EXPECT_EQ(result != nullptr, c.bytes != 0) << c.what;
        EXPECT_EQ(Bytes(result, result + size), Bytes(c.bytes, c.value)) << c.what;
    }
}

}  // namespace
}  // namespace quorvex::test
