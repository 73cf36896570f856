// Plain frames to coded ones, and back. Sizes and samples of every kind stand in the tests of round
// trips of tests/reliability.
#include "quorvex/TransferSyntaxes.h"
#include "tests/codec/coded_frames.h"

#include <gtest/gtest.h>
#include <utility>

namespace quorvex::test {
namespace {

constexpr std::uint16_t kNoQuality = 500;  ///< of forms that have none

constexpr struct {
    std::uint32_t target;
    TRANSFER_SYNTAX syntax;  ///< that is written
} kLosslessForms[] = {{kXferJpegLossless, kJpegLosslessFirstOrder},
                      {kXferJpeg2000Lossless, kJpeg2000Lossless},
                      {kXferHtj2kLossless, kHtj2kLossless},
                      {kXferHtj2kRpclLossless, kHtj2kRpclLossless}};

constexpr FrameForm kGrey{61, 43};
constexpr FrameForm kWide{61, 43, 1, 16};
constexpr FrameForm k12{61, 43, 1, 12};
constexpr FrameForm kRgb{61, 43, 3};

_IMAGE_PROCESS_PARAM CodingParam(const FrameForm& frame, std::uint32_t target,
                                 std::uint16_t quality = 1) {
    _IMAGE_PROCESS_PARAM param = ParamOf(kImplicitLittleEndian, frame);
    param.targetSyntax = target;
    param.quality = quality;
    return param;
}

CodedFrame CompressAs(const FrameForm& frame, std::uint32_t target, std::uint16_t quality = 1) {
    Bytes pixels = PictureOf(frame);
    return Compress(CodingParam(frame, target, quality), pixels);
}

/// What comes back of a stream.
Bytes Pixels(const FrameForm& frame, std::uint32_t syntax, Bytes stream) {
    return Decompress(ParamOf(syntax, frame), stream).frame;
}

/// Random bytes, of which no code is shorter than they are.
Bytes Noise(const FrameForm& frame) {
    std::minstd_rand random(3);
    Bytes noise(frame.Bytes());
    for (auto& byte : noise) byte = static_cast<unsigned char>(random() >> 8);
    return noise;
}

/// The samples of colour one plane behind the other.
Bytes Planes(const Bytes& pixels) {
    Bytes planes;
    for (std::size_t sample = 0; sample < 3; ++sample)
        for (std::size_t i = sample; i < pixels.size(); i += 3) planes.push_back(pixels[i]);
    return planes;
}

Bytes Swapped(Bytes words) {
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) std::swap(words[i], words[i + 1]);
    return words;
}

TEST(Compression, LosslessFormsTakeEveryKindOfSource) {
    constexpr FrameForm kSquare{128, 128, 1, 16};
    const struct {
        const char* what;
        FrameForm frame;
        const char* photometric;
        Bytes pixels;
        Bytes source;
        std::uint32_t syntax = kImplicitLittleEndian;
        std::uint16_t planar = 0;
    } kCases[] = {
        {"palette", kGrey, "PALETTE COLOR", PictureOf(kGrey), PictureOf(kGrey)},
        {"rgb", kRgb, "rgb", PictureOf(kRgb), PictureOf(kRgb)},
        {"planes", kRgb, "RGB", PictureOf(kRgb), Planes(PictureOf(kRgb)), kImplicitLittleEndian, 1},
        {"big endian", kWide, "MONOCHROME2", PictureOf(kWide), Swapped(PictureOf(kWide)),
         kExplicitBigEndian},
        {"noise that grows", kSquare, "MONOCHROME2", Noise(kSquare), Noise(kSquare)},
    };
    for (const auto& c : kCases) {
        for (const auto& form : kLosslessForms) {
            if (!TransferSyntaxOf(form.syntax)->isWritten) continue;  // not by this build
            _IMAGE_PROCESS_PARAM param = CodingParam(c.frame, form.target, kNoQuality);
            param.photometric = c.photometric;
            param.planarConfiguration = c.planar;
            param.transferSyntax = c.syntax;
            Bytes source = c.source;
            const CodedFrame coded = Compress(param, source);
            EXPECT_EQ(coded.code, QVM_SUCCESS) << c.what;
            EXPECT_EQ(Pixels(c.frame, form.syntax, coded.stream), c.pixels) << c.what;
            // The coder of JPEG interleaves planes in the source itself.
            const bool isChanged = c.planar == 1 && form.target == kXferJpegLossless;
            EXPECT_TRUE(c.planar == 0 || source == (isChanged ? c.pixels : c.source)) << c.what;
            EXPECT_TRUE(c.frame.columns != 128 || coded.stream.size() > c.pixels.size()) << c.what;
        }
    }
}

/// Lossy JPEG stands in the tests of round trips.
TEST(Compression, LossyJpeg2000StaysNear) {
    const struct {
        FrameForm frame;
        std::uint16_t pixelRepresentation;
        double decibels;  ///< fewer for three channels that know nothing of each other
    } kCases[] = {{kGrey, 0, 40}, {kWide, 1, 40}, {kRgb, 0, 37}};
    for (const auto& c : kCases) {
        Bytes pixels = PictureOf(c.frame);
        _IMAGE_PROCESS_PARAM param = CodingParam(c.frame, kXferJpeg2000, 4);
        param.pixelRepresentation = c.pixelRepresentation;
        Bytes stream = Compress(param, pixels).stream;
        param.transferSyntax = kJpeg2000;
        const Bytes back = Decompress(param, stream).frame;
        EXPECT_GT(testing::PeakSignalToNoise(back, pixels, static_cast<int>(c.frame.bits)),
                  c.decibels)
            << param.photometric.ToUtf8() << c.frame.bits;
    }
}

TEST(Compression, QualityMeansWhatItsFormSays) {
    const auto size = CompressAs({500, 500, 1, 12}, kXferJpeg2000, 10).stream.size();
    EXPECT_LE(size, 50'000U);
    EXPECT_GE(size, 25'000U);
    // Clamped to 1 to 1000.
    for (const auto& [given, taken] : {std::pair<std::uint16_t, std::uint16_t>{0, 1}, {5000, 1000}})
        EXPECT_EQ(CompressAs(k12, kXferJpegExtended, given).stream,
                  CompressAs(k12, kXferJpegExtended, taken).stream);
}

TEST(Compression, WhatCannotBeCodedIsRefused) {
    using P = _IMAGE_PROCESS_PARAM&;
    const struct {
        const char* what;
        QUORVEX_MESSAGE code;
        std::uint32_t target;
        FrameForm frame;
        void (*change)(P) = [](P) {};
    } kCases[] = {
        {"12 bits as baseline", QVM_ERROR_INVALID_IMAGE_FORMAT, 5, k12},
        {"8 bits as extended", QVM_ERROR_INVALID_IMAGE_FORMAT, 6, kGrey},
        {"10 bits", QVM_ERROR_FAILED_TO_COMPRESS, 6, k12,
         [](P param) { param.bitsAllocated = 10; }},
        {"values above 12 bits", QVM_ERROR_FAILED_TO_COMPRESS, 6, kWide},
        {"YBR", QVM_ERROR_INVALID_PHOTOMETRIC, 7, kRgb,
         [](P param) { param.photometric = "YBR_FULL"; }},
        {"RLE", QVM_ERROR_INVALID_TARGET_SYNTAX, 4, kGrey},
        {"10", QVM_ERROR_INVALID_TARGET_SYNTAX, 10, kGrey},
        {"from RLE", QVM_ERROR_INVALID_SOURCE_SYNTAX, 7, kGrey,
         [](P param) { param.transferSyntax = kRle; }},
        {"negative bytes", QVM_ERROR_FAILED_TO_COMPRESS, 5, kGrey,
         [](P param) { param.pixelRepresentation = 1; }},
        {"grey of three", QVM_ERROR_FAILED_TO_COMPRESS, 7, kRgb,
         [](P param) { param.photometric = "MONOCHROME2"; }},
        {"a row too many", QVM_ERROR_FAILED_TO_COMPRESS, 7, kGrey, [](P param) { ++param.rows; }},
    };
    for (const auto& c : kCases) {
        Bytes pixels = PictureOf(c.frame);
        _IMAGE_PROCESS_PARAM param = CodingParam(c.frame, c.target);
        c.change(param);
        EXPECT_EQ(Compress(param, pixels).code, c.code) << c.what;
    }
    _IMAGE_PROCESS_PARAM param = CodingParam(kGrey, kXferJpegLossless);
    unsigned char byte = 0;
    unsigned char* result = &byte;
    unsigned long size = 1;
    EXPECT_EQ(CxImageProcessor().CompressFrameData(&param, nullptr, 0, result, size),
              QVM_ERROR_NULL_SOURCE);
    EXPECT_EQ(result, nullptr);
}

TEST(Compression, TheBareJpeg2000EntryTellsFailureByANullResult) {
    _IMAGE_PROCESS_PARAM param = CodingParam(kWide, kXferJpeg2000Lossless);
    Bytes source = PictureOf(kWide);
    for (const std::size_t length : {source.size(), std::size_t{10}}) {
        unsigned char* result = nullptr;
        unsigned long size = 0;
        CxImageProcessor processor;
        EXPECT_EQ(processor.CompressRawImage2Jp2File(&param, source.data(), length, result, size),
                  QVM_SUCCESS);
        const std::unique_ptr<unsigned char[]> owner(result);
        ASSERT_EQ(result != nullptr, length == source.size());
        if (result == nullptr) continue;
        EXPECT_EQ(Pixels(kWide, kJpeg2000Lossless, Bytes(result, result + size)), source);
    }
}

}  // namespace
}  // namespace quorvex::test
