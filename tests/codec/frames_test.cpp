#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"
#include "rle_frames.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace quorvex {
namespace {

using test::Bytes;

_IMAGE_PROCESS_PARAM Grey(std::uint32_t syntax, int rows, int columns, int bits) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = syntax;
    param.samplesPerPixel = 1;
    param.photometric = "MONOCHROME2";
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(rows);
    param.columns = static_cast<std::uint16_t>(columns);
    param.bitsAllocated = static_cast<std::uint16_t>(bits);
    param.pixelRepresentation = 0;
    param.targetSyntax = 1;
    return param;
}

struct Outcome {
    QUORVEX_MESSAGE code;
    Bytes frame;
};

Outcome Decompress(_IMAGE_PROCESS_PARAM param, Bytes& source, int allocMode = 1) {
    CxImageProcessor processor;
    processor.SetAllocMode(allocMode);
    unsigned char* result = nullptr;
    unsigned long size = 0;
    const auto code =
        processor.DecompressFrameData(&param, source.data(), source.size(), result, size, 0);
    Outcome outcome{code, {}};
    if (result != nullptr) outcome.frame.assign(result, result + size);
    if (allocMode == 1) {
        delete[] result;
    } else {
        ReleasePages(result);
    }
    return outcome;
}

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

TEST(PlainFrame, IsCopiedUnderEverySyntaxWithoutDecoder) {
    for (const std::uint32_t syntax : {100U, 101U, 104U, 110U, 126U, 7U}) {
        for (const int allocMode : {1, 0}) {
            Bytes source = Counting(8);
            const Outcome outcome = Decompress(Grey(syntax, 2, 2, 16), source, allocMode);
            EXPECT_EQ(outcome.code, QVM_FRAME_COPIED) << syntax;
            EXPECT_EQ(outcome.frame, Counting(8)) << syntax;
        }
    }
    Bytes source = Counting(8);
    EXPECT_EQ(Decompress(Grey(0, 2, 2, 16), source).code, QVM_ERROR_INVALID_SOURCE_SYNTAX);
}

TEST(PlainFrame, BigEndianIsSwappedInTheSource) {
    for (const std::uint32_t syntax : {102U, 103U}) {
        Bytes source{1, 2, 3, 4, 5};
        const Outcome outcome = Decompress(Grey(syntax, 1, 5, 8), source);
        EXPECT_EQ(outcome.frame, (Bytes{2, 1, 4, 3, 5}));
        EXPECT_EQ(source, outcome.frame);
    }
    Bytes colour = Counting(6);
    auto param = Grey(102, 1, 2, 8);
    param.samplesPerPixel = 3;
    param.photometric = "RGB";
    EXPECT_EQ(Decompress(param, colour).frame, Counting(6));
}

TEST(PlainFrame, GrowsWithItsSourceAndIsZeroWhereThatEnds) {
    Bytes longer = Counting(16);  // 32 bits allocated: the frame counts two bytes for each
    EXPECT_EQ(Decompress(Grey(101, 2, 2, 32), longer).frame, Counting(16));
    Bytes shorter = Counting(3);
    EXPECT_EQ(Decompress(Grey(101, 2, 2, 16), shorter).frame, (Bytes{1, 2, 3, 0, 0, 0, 0, 0}));
    auto colour = Grey(101, 2, 2, 8);
    colour.samplesPerPixel = 3;
    colour.photometric = "CMYK";
    Bytes unknown = Counting(12);
    EXPECT_EQ(Decompress(colour, unknown).frame, Bytes(12));
}

TEST(PlainFrame, StaysInsideTheCallersBlock) {
    auto param = Grey(101, 2, 2, 16);
    Bytes source = Counting(40);
    for (const unsigned long stated : {0UL, 8UL, 6UL}) {
        Bytes block(40, 0xEE);
        unsigned char* result = block.data();
        unsigned long size = stated;
        CxImageProcessor processor;
        EXPECT_EQ(
            processor.DecompressFrameData(&param, source.data(), source.size(), result, size, 0),
            QVM_FRAME_COPIED);
        EXPECT_EQ(result, block.data());
        const std::size_t written = stated == 0 ? 8 : stated;
        for (std::size_t i = 0; i < block.size(); ++i) {
            EXPECT_EQ(block[i], i < written ? source[i] : 0xEE) << stated << " " << i;
        }
    }
}

TEST(CodedFrame, IsRefusedForGeometryThatNoDecoderHas) {
    Bytes source(64);
    for (const std::uint32_t syntax : {105U, 106U, 107U, 113U, 123U, 124U, 125U}) {
        auto samples = Grey(syntax, 2, 2, 8);
        samples.samplesPerPixel = 2;
        for (auto param :
             {samples, Grey(syntax, 0, 2, 8), Grey(syntax, 2, 0, 8), Grey(syntax, 2, 2, 7)}) {
            EXPECT_EQ(Decompress(param, source).code, QVM_ERROR_INVALID_IMAGE_FORMAT) << syntax;
        }
    }
}

TEST(CodedFrame, RleFailureIsReportedForGreyAndShownForColour) {
    Bytes damaged = test::JoinSegments({{0, 9, 0xFF}, {1, 1, 2}, {1, 3, 4}});
    auto colour = Grey(kRle, 1, 2, 8);
    colour.samplesPerPixel = 3;
    colour.photometric = "RGB";
    colour.planarConfiguration = 1;
    const Outcome shown = Decompress(colour, damaged);
    EXPECT_EQ(shown.code, QVM_SUCCESS);
    EXPECT_EQ(shown.frame, (Bytes{9, 0, 0, 0, 0, 0}));
    Bytes grey = test::JoinSegments({{0, 9, 0xFF}});
    EXPECT_EQ(Decompress(Grey(kRle, 1, 2, 8), grey).code, QVM_ERROR_FAILED_TO_DECOMPRESS);

    Bytes whole = test::JoinSegments({{1, 1, 2}, {1, 3, 4}, {1, 5, 6}});
    EXPECT_EQ(Decompress(colour, whole).frame, (Bytes{1, 3, 5, 2, 4, 6}));
    colour.planarConfiguration = 0;  // a segment for each byte of a pixel, the first one last
    EXPECT_EQ(Decompress(colour, whole).frame, (Bytes{5, 3, 1, 6, 4, 2}));
    colour.photometric = "YBR_ICT";
    EXPECT_EQ(Decompress(colour, whole).frame, Bytes(6));
}

TEST(CodedFrame, WideRleKeepsAllItsBytes) {
    Bytes source = test::JoinSegments({{0, 1}, {0, 2}, {0, 3}, {0, 4}});
    EXPECT_EQ(Decompress(Grey(kRle, 1, 1, 32), source).frame, (Bytes{4, 3, 2, 1}));
}

TEST(AnyFrame, TenBytesDoNotBuyGigabytes) {
    const auto begin = std::chrono::steady_clock::now();
    for (const std::uint32_t syntax : {101U, 102U, 105U, 106U, 124U}) {
        for (const int samples : {1, 3}) {
            Bytes source(10);
            auto param = Grey(syntax, 65535, 65535, 8);
            param.samplesPerPixel = static_cast<std::uint16_t>(samples);
            param.photometric = "RGB";
            const Outcome outcome = Decompress(param, source);
            EXPECT_EQ(outcome.code, QVM_ERROR_FAILED_TO_DECOMPRESS) << syntax;
            EXPECT_TRUE(outcome.frame.empty());
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
}

TEST(ResizedFrame, HasItsSizeAndKeepsFlatColours) {
    for (const auto& [bits, samples] : {std::pair{8, 1}, {8, 3}, {8, 4}, {16, 1}}) {
        auto param = Grey(101, 7, 5, bits);
        param.samplesPerPixel = static_cast<std::uint16_t>(samples);
        Bytes source(static_cast<std::size_t>(7 * 5 * bits / 8 * samples), 0x33);
        unsigned char* result = nullptr;
        unsigned long size = 0;
        CxImageProcessor processor;
        ASSERT_EQ(processor.ResizeImage(&param, source.data(), result, size, {12, 9}), QVM_SUCCESS);
        EXPECT_EQ(Bytes(result, result + size),
                  Bytes(static_cast<std::size_t>(12 * 9 * bits / 8 * samples), 0x33));
        delete[] result;
    }
}

TEST(ResizedFrame, RefusesWhatHasNoResult) {
    auto param = Grey(101, 4, 4, 8);
    Bytes source(64, 1);
    CxImageProcessor processor;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    for (const CSize bad : {CSize{102, 4}, {0, 4}, {-4, 4}, {4, 0}, {2147483644, 2147483647}}) {
        EXPECT_EQ(processor.ResizeImage(&param, source.data(), result, size, bad),
                  QVM_ERROR_INVALID_OUTPUT_SIZE);
        EXPECT_EQ(result, nullptr);
    }
    param.samplesPerPixel = 2;
    EXPECT_EQ(processor.ResizeImage(&param, source.data(), result, size, {4, 4}),
              QVM_ERROR_INVALID_SAMPLES_PER_PIXEL);
    EXPECT_EQ(Bytes(result, result + size), Bytes(32));
    delete[] result;
    param.samplesPerPixel = 1;
    param.bitsAllocated = 32;
    result = nullptr;
    EXPECT_EQ(processor.ResizeImage(&param, source.data(), result, size, {4, 4}), QVM_SUCCESS);
    EXPECT_EQ(Bytes(result, result + size), Bytes(64));
    delete[] result;
}

}  // namespace
}  // namespace quorvex
