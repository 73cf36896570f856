#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"
#include "tests/engines/jpeg_test_streams.h"

#include <cmath>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using testing::ByteVector;
using testing::Picture;

struct Frame {
    int columns = 61;
    int rows = 43;
    int samples = 1;
    int bitsAllocated = 8;
    int precision = 8;
    const char* photometric = "MONOCHROME2";
    int pixelRepresentation = 0;
    int planarConfiguration = 0;
};

_IMAGE_PROCESS_PARAM Describe(const Frame& frame) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kImplicitLittleEndian;
    param.columns = static_cast<std::uint16_t>(frame.columns);
    param.rows = static_cast<std::uint16_t>(frame.rows);
    param.samplesPerPixel = static_cast<std::uint16_t>(frame.samples);
    param.bitsAllocated = static_cast<std::uint16_t>(frame.bitsAllocated);
    param.photometric = frame.photometric;
    param.planarConfiguration = static_cast<std::uint16_t>(frame.planarConfiguration);
    param.pixelRepresentation = static_cast<std::uint16_t>(frame.pixelRepresentation);
    param.quality = 1;
    return param;
}

ByteVector PixelsOf(const Frame& frame) {
    return Picture(frame.columns, frame.rows, frame.samples, frame.bitsAllocated > 8 ? 2 : 1,
                   frame.precision);
}

struct Coded {
    QUORVEX_MESSAGE result = QVM_ERROR_NO_IMAGE;
    ByteVector stream;
};

Coded Compress(_IMAGE_PROCESS_PARAM param, ByteVector& source) {
    Coded coded;
    unsigned char* result = nullptr;
    unsigned long size = 99;
    coded.result =
        CxImageProcessor().CompressFrameData(&param, source.data(), source.size(), result, size);
    EXPECT_EQ(result == nullptr, coded.result != QVM_SUCCESS);
    EXPECT_EQ(result == nullptr, size == 0);
    if (result != nullptr) coded.stream.assign(result, result + size);
    delete[] result;
    return coded;
}

Coded Compress(const Frame& frame, std::uint32_t target, std::uint16_t quality = 1) {
    _IMAGE_PROCESS_PARAM param = Describe(frame);
    param.targetSyntax = target;
    param.quality = quality;
    ByteVector source = PixelsOf(frame);
    return Compress(param, source);
}

ByteVector Decompress(const Frame& frame, std::uint32_t syntax, ByteVector stream) {
    _IMAGE_PROCESS_PARAM param = Describe(frame);
    param.transferSyntax = syntax;
    param.planarConfiguration = 0;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    CxImageProcessor().DecompressFrameData(&param, stream.data(), stream.size(), result, size, 0);
    ByteVector pixels(result, result + (result == nullptr ? 0 : size));
    delete[] result;
    return pixels;
}

double Psnr(const ByteVector& a, const ByteVector& b, const Frame& frame) {
    double squares = 0;
    std::size_t count = 0;
    const std::size_t step = frame.bitsAllocated > 8 ? 2 : 1;
    if (a.size() != b.size()) return 0;
    for (std::size_t i = 0; i < a.size(); i += step, ++count) {
        const auto value = [&](const ByteVector& v) {
            return step == 2 ? v[i] | (v[i + 1] << 8) : int{v[i]};
        };
        squares += std::pow(value(a) - value(b), 2);
    }
    const double peak = std::pow(2, frame.precision) - 1;
    return 10 * std::log10(peak * peak * static_cast<double>(count) / std::max(squares, 1e-9));
}

constexpr Frame kGrey{};
constexpr Frame kWide{.bitsAllocated = 16, .precision = 16};
constexpr Frame k12{.bitsAllocated = 16, .precision = 12};
constexpr Frame kSigned{.bitsAllocated = 16, .precision = 16, .pixelRepresentation = 1};
constexpr Frame kRgb{.samples = 3, .photometric = "RGB"};
constexpr Frame kLowerRgb{.samples = 3, .photometric = "rgb"};
constexpr Frame kWideRgb{.samples = 3, .bitsAllocated = 16, .precision = 16, .photometric = "RGB"};
constexpr Frame kPalette{.photometric = "PALETTE COLOR"};

TEST(Compression, LosslessFormatsGiveTheFrameBack) {
    for (const Frame& frame : {kGrey, kWide, k12, kSigned, kRgb, kLowerRgb, kWideRgb, kPalette}) {
        const ByteVector pixels = PixelsOf(frame);
        const Coded jpeg = Compress(frame, kXferJpegLossless, 500);
        EXPECT_EQ(jpeg.result, QVM_SUCCESS) << frame.photometric << frame.bitsAllocated;
        EXPECT_EQ(Decompress(frame, kJpegLosslessFirstOrder, jpeg.stream), pixels)
            << frame.photometric << frame.bitsAllocated;
        const Coded j2k = Compress(frame, kXferJpeg2000Lossless, 500);
        EXPECT_EQ(j2k.result, QVM_SUCCESS);
        EXPECT_EQ(Decompress(frame, kJpeg2000Lossless, j2k.stream), pixels)
            << frame.photometric << frame.bitsAllocated;
    }
}

TEST(Compression, LossyFormatsStayNear) {
    struct Case {
        Frame frame;
        std::uint32_t target, syntax;
        std::uint16_t quality;
    };
    constexpr double kColourNoise = 37;  // three channels that know nothing of each other
    for (const Case& c :
         {Case{kGrey, kXferJpegBaseline, kJpegBaseline, 95},
          Case{kRgb, kXferJpegBaseline, kJpegBaseline, 95},
          Case{k12, kXferJpegExtended, kJpegExtended, 1}, Case{kGrey, kXferJpeg2000, kJpeg2000, 4},
          Case{kSigned, kXferJpeg2000, kJpeg2000, 4}, Case{kRgb, kXferJpeg2000, kJpeg2000, 4}}) {
        const Coded coded = Compress(c.frame, c.target, c.quality);
        ASSERT_EQ(coded.result, QVM_SUCCESS) << c.target;
        EXPECT_GT(Psnr(Decompress(c.frame, c.syntax, coded.stream), PixelsOf(c.frame), c.frame),
                  c.frame.samples == 3 ? kColourNoise : 40)
            << c.target << c.frame.photometric;
    }
}

TEST(Compression, QualityMeansWhatItsFormatSays) {
    const Frame big{.columns = 500, .rows = 500, .bitsAllocated = 16, .precision = 12};
    EXPECT_LE(Compress(big, kXferJpeg2000, 10).stream.size(), 50'000U);
    EXPECT_GE(Compress(big, kXferJpeg2000, 10).stream.size(), 25'000U);
    EXPECT_GT(Compress(kGrey, kXferJpegBaseline, 90).stream.size(),
              Compress(kGrey, kXferJpegBaseline, 20).stream.size());
    EXPECT_GT(Compress(k12, kXferJpegExtended, 1).stream.size(),
              Compress(k12, kXferJpegExtended, 50).stream.size());
    EXPECT_EQ(Compress(k12, kXferJpegExtended, 0).stream,
              Compress(k12, kXferJpegExtended, 1).stream);
    EXPECT_EQ(Compress(k12, kXferJpegExtended, 5000).stream,
              Compress(k12, kXferJpegExtended, 1000).stream);
}

TEST(Compression, PlanarColourIsInterleavedFirst) {
    Frame planar = kRgb;
    planar.planarConfiguration = 1;
    const ByteVector pixels = PixelsOf(kRgb);
    ByteVector planes;
    for (std::size_t sample = 0; sample < 3; ++sample) {
        for (std::size_t i = sample; i < pixels.size(); i += 3) planes.push_back(pixels[i]);
    }
    for (std::uint32_t target : {kXferJpegLossless, kXferJpeg2000Lossless}) {
        _IMAGE_PROCESS_PARAM param = Describe(planar);
        param.targetSyntax = target;
        ByteVector source = planes;
        const Coded coded = Compress(param, source);
        const bool isJpeg = target == kXferJpegLossless;
        EXPECT_EQ(source, isJpeg ? pixels : planes);
        EXPECT_EQ(
            Decompress(kRgb, isJpeg ? kJpegLosslessFirstOrder : kJpeg2000Lossless, coded.stream),
            pixels);
    }
}

TEST(Compression, NoiseMayGrow) {
    std::minstd_rand random(3);
    const Frame frame{.columns = 128, .rows = 128, .bitsAllocated = 16, .precision = 16};
    ByteVector noise(128 * 128 * 2);
    for (auto& byte : noise) byte = static_cast<unsigned char>(random() >> 8);
    for (std::uint32_t target : {kXferJpegLossless, kXferJpeg2000Lossless}) {
        _IMAGE_PROCESS_PARAM param = Describe(frame);
        param.targetSyntax = target;
        const Coded coded = Compress(param, noise);
        EXPECT_GT(coded.stream.size(), noise.size());
        const auto syntax =
            target == kXferJpegLossless ? kJpegLosslessFirstOrder : kJpeg2000Lossless;
        EXPECT_EQ(Decompress(frame, syntax, coded.stream), noise);
    }
}

TEST(Compression, WhatCannotBeCodedIsRefused) {
    struct Case {
        const char* what;
        QUORVEX_MESSAGE result;
        std::uint32_t target;
        Frame frame;
    };
    Frame ybr = kRgb;
    ybr.photometric = "YBR_FULL";
    for (const Case& c :
         {Case{"12 bits as baseline", QVM_ERROR_INVALID_IMAGE_FORMAT, 5, k12},
          Case{"8 bits as extended", QVM_ERROR_INVALID_IMAGE_FORMAT, 6, kGrey},
          Case{"10 bits as extended", QVM_ERROR_FAILED_TO_COMPRESS, 6, {.bitsAllocated = 10}},
          Case{"values above 12 bits", QVM_ERROR_FAILED_TO_COMPRESS, 6, kWide},
          Case{"YBR", QVM_ERROR_INVALID_PHOTOMETRIC, 7, ybr},
          Case{"RLE", QVM_ERROR_INVALID_TARGET_SYNTAX, 4, kGrey},
          Case{"10", QVM_ERROR_INVALID_TARGET_SYNTAX, 10, kGrey},

          Case{"negative lossy bytes", QVM_ERROR_FAILED_TO_COMPRESS, 5, {.pixelRepresentation = 1}},
          Case{"grey of three samples", QVM_ERROR_FAILED_TO_COMPRESS, 7, {.samples = 3}}}) {
        EXPECT_EQ(Compress(c.frame, c.target).result, c.result) << c.what;
    }
    ByteVector source = PixelsOf(kGrey);
    _IMAGE_PROCESS_PARAM param = Describe(kGrey);
    param.targetSyntax = kXferJpegLossless;
    source.pop_back();
    EXPECT_EQ(Compress(param, source).result, QVM_ERROR_FAILED_TO_COMPRESS);
    param.transferSyntax = kRle;
    EXPECT_EQ(Compress(param, source).result, QVM_ERROR_INVALID_SOURCE_SYNTAX);
    unsigned char* result = source.data();
    unsigned long size = 1;
    EXPECT_EQ(CxImageProcessor().CompressFrameData(&param, nullptr, 0, result, size),
              QVM_ERROR_NULL_SOURCE);
    EXPECT_EQ(result, nullptr);
}

TEST(Compression, TheBareJpeg2000EntryTellsFailureByANullResult) {
    _IMAGE_PROCESS_PARAM param = Describe(kWide);
    param.targetSyntax = kXferJpeg2000Lossless;
    ByteVector source = PixelsOf(kWide);
    unsigned char* result = nullptr;
    unsigned long size = 0;
    CxImageProcessor processor;
    EXPECT_EQ(
        processor.CompressRawImage2Jp2File(&param, source.data(), source.size(), result, size),
        QVM_SUCCESS);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(Decompress(kWide, kJpeg2000Lossless, ByteVector(result, result + size)), source);
    delete[] result;
    EXPECT_EQ(processor.CompressRawImage2Jp2File(&param, source.data(), 10, result, size),
              QVM_SUCCESS);
    EXPECT_EQ(result, nullptr);
}

TEST(Compression, BigEndianSamplesAreRead) {
    ByteVector swapped = PixelsOf(kWide);
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
    for (std::uint32_t target : {kXferJpegLossless, kXferJpeg2000Lossless}) {
        _IMAGE_PROCESS_PARAM param = Describe(kWide);
        param.transferSyntax = kExplicitBigEndian;
        param.targetSyntax = target;
        const auto syntax =
            target == kXferJpegLossless ? kJpegLosslessFirstOrder : kJpeg2000Lossless;
        EXPECT_EQ(Decompress(kWide, syntax, Compress(param, swapped).stream), PixelsOf(kWide));
    }
}

}  // namespace
}  // namespace quorvex
