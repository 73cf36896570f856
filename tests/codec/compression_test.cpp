// Plain frames to coded ones, and back. Sizes and samples of every kind stand in the tests of round
// trips of tests/reliability.
#include "tests/codec/coded_frames.h"

#include <gtest/gtest.h>
#include <utility>

namespace quorvex::test {
namespace {

constexpr std::uint16_t kNoQuality = 500;  ///< of forms that have none

struct Form {
    std::uint32_t target;
    std::uint32_t syntax;  ///< that is written
};
constexpr Form kLosslessForms[] = {{kXferJpegLossless, kJpegLosslessFirstOrder},
                                   {kXferJpeg2000Lossless, kJpeg2000Lossless}};

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

TEST(Compression, LosslessFormsTakePalettesAndAnyCaseOfRgb) {
    for (const Form& form : kLosslessForms) {
        for (const auto& [frame, photometric] :
             {std::pair{kGrey, "PALETTE COLOR"}, {kRgb, "rgb"}, {kRgb, "RGB"}}) {
            Bytes pixels = PictureOf(frame);
            _IMAGE_PROCESS_PARAM param = CodingParam(frame, form.target, kNoQuality);
            param.photometric = photometric;
            const CodedFrame coded = Compress(param, pixels);
            EXPECT_EQ(coded.code, QVM_SUCCESS) << photometric;
            EXPECT_EQ(Pixels(frame, form.syntax, coded.stream), pixels) << photometric;
        }
    }
}

TEST(Compression, LossyFormsStayNear) {
    constexpr double kColourNoise = 37;  // three channels that know nothing of each other
    const struct {
        FrameForm frame;
        Form form;
        std::uint16_t quality;
        int pixelRepresentation;
        double decibels;
    } kCases[] = {{kGrey, {kXferJpegBaseline, kJpegBaseline}, 95, 0, 40},
                  {kRgb, {kXferJpegBaseline, kJpegBaseline}, 95, 0, kColourNoise},
                  {k12, {kXferJpegExtended, kJpegExtended}, 1, 0, 40},
                  {kGrey, {kXferJpeg2000, kJpeg2000}, 4, 0, 40},
                  {kWide, {kXferJpeg2000, kJpeg2000}, 4, 1, 40},
                  {kRgb, {kXferJpeg2000, kJpeg2000}, 4, 0, kColourNoise}};
    for (const auto& c : kCases) {
        Bytes pixels = PictureOf(c.frame);
        _IMAGE_PROCESS_PARAM param = CodingParam(c.frame, c.form.target, c.quality);
        param.pixelRepresentation = static_cast<std::uint16_t>(c.pixelRepresentation);
        Bytes stream = Compress(param, pixels).stream;
        param.transferSyntax = c.form.syntax;
        EXPECT_GT(testing::PeakSignalToNoise(Decompress(param, stream).frame, pixels,
                                             static_cast<int>(c.frame.bits)),
                  c.decibels)
            << c.form.target << param.photometric.ToUtf8();
    }
}

TEST(Compression, QualityMeansWhatItsFormSays) {
    const auto size = [](const FrameForm& frame, std::uint32_t target, std::uint16_t quality) {
        return CompressAs(frame, target, quality).stream.size();
    };
    const FrameForm big{500, 500, 1, 12};
    EXPECT_LE(size(big, kXferJpeg2000, 10), 50'000U);
    EXPECT_GE(size(big, kXferJpeg2000, 10), 25'000U);
    EXPECT_GT(size(kGrey, kXferJpegBaseline, 90), size(kGrey, kXferJpegBaseline, 20));
    EXPECT_GT(size(k12, kXferJpegExtended, 1), size(k12, kXferJpegExtended, 50));
    // Clamped to 1 to 1000.
    for (const auto& [given, taken] : {std::pair<std::uint16_t, std::uint16_t>{0, 1}, {5000, 1000}})
        EXPECT_EQ(CompressAs(k12, kXferJpegExtended, given).stream,
                  CompressAs(k12, kXferJpegExtended, taken).stream);
}

TEST(Compression, PlanarColourIsInterleavedFirst) {
    const Bytes pixels = PictureOf(kRgb);
    Bytes planes;
    for (std::size_t sample = 0; sample < 3; ++sample)
        for (std::size_t i = sample; i < pixels.size(); i += 3) planes.push_back(pixels[i]);
    for (const Form& form : kLosslessForms) {
        _IMAGE_PROCESS_PARAM param = CodingParam(kRgb, form.target);
        param.planarConfiguration = 1;
        Bytes source = planes;
        const CodedFrame coded = Compress(param, source);
        EXPECT_EQ(source, form.target == kXferJpegLossless ? pixels : planes);
        EXPECT_EQ(Pixels(kRgb, form.syntax, coded.stream), pixels);
    }
}

TEST(Compression, NoiseMayGrow) {
    std::minstd_rand random(3);
    const FrameForm frame{128, 128, 1, 16};
    Bytes noise(frame.Bytes());
    for (auto& byte : noise) byte = static_cast<unsigned char>(random() >> 8);
    for (const Form& form : kLosslessForms) {
        const CodedFrame coded = Compress(CodingParam(frame, form.target), noise);
        EXPECT_GT(coded.stream.size(), noise.size());
        EXPECT_EQ(Pixels(frame, form.syntax, coded.stream), noise);
    }
}

TEST(Compression, BigEndianSamplesAreRead) {
    const Bytes pixels = PictureOf(kWide);
    Bytes swapped = pixels;
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
    for (const Form& form : kLosslessForms) {
        _IMAGE_PROCESS_PARAM param = CodingParam(kWide, form.target);
        param.transferSyntax = kExplicitBigEndian;
        EXPECT_EQ(Pixels(kWide, form.syntax, Compress(param, swapped).stream), pixels);
    }
}

TEST(Compression, WhatCannotBeCodedIsRefused) {
    const struct {
        const char* what;
        QUORVEX_MESSAGE code;
        std::uint32_t target;
        FrameForm frame;
        void (*change)(_IMAGE_PROCESS_PARAM&) = nullptr;
    } kCases[] = {
        {"12 bits as baseline", QVM_ERROR_INVALID_IMAGE_FORMAT, 5, k12},
        {"8 bits as extended", QVM_ERROR_INVALID_IMAGE_FORMAT, 6, kGrey},
        {"10 bits as extended", QVM_ERROR_FAILED_TO_COMPRESS, 6, k12,
         [](_IMAGE_PROCESS_PARAM& param) { param.bitsAllocated = 10; }},
        {"values above 12 bits", QVM_ERROR_FAILED_TO_COMPRESS, 6, kWide},
        {"YBR", QVM_ERROR_INVALID_PHOTOMETRIC, 7, kRgb,
         [](_IMAGE_PROCESS_PARAM& param) { param.photometric = "YBR_FULL"; }},
        {"RLE", QVM_ERROR_INVALID_TARGET_SYNTAX, 4, kGrey},
        {"10", QVM_ERROR_INVALID_TARGET_SYNTAX, 10, kGrey},
        {"from RLE", QVM_ERROR_INVALID_SOURCE_SYNTAX, 7, kGrey,
         [](_IMAGE_PROCESS_PARAM& param) { param.transferSyntax = kRle; }},
        {"negative lossy bytes", QVM_ERROR_FAILED_TO_COMPRESS, 5, kGrey,
         [](_IMAGE_PROCESS_PARAM& param) { param.pixelRepresentation = 1; }},
        {"grey of three samples", QVM_ERROR_FAILED_TO_COMPRESS, 7, kRgb,
         [](_IMAGE_PROCESS_PARAM& param) { param.photometric = "MONOCHROME2"; }},
        {"a row too many", QVM_ERROR_FAILED_TO_COMPRESS, 7, kGrey,
         [](_IMAGE_PROCESS_PARAM& param) { ++param.rows; }},
    };
    for (const auto& c : kCases) {
        Bytes pixels = PictureOf(c.frame);
        _IMAGE_PROCESS_PARAM param = CodingParam(c.frame, c.target);
        if (c.change != nullptr) c.change(param);
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
        EXPECT_EQ(CxImageProcessor().CompressRawImage2Jp2File(&param, source.data(), length, result,
                                                              size),
                  QVM_SUCCESS);
        const std::unique_ptr<unsigned char[]> owner(result);
        ASSERT_EQ(result != nullptr, length == source.size());
        if (result == nullptr) continue;
        EXPECT_EQ(Pixels(kWide, kJpeg2000Lossless, Bytes(result, result + size)), source);
    }
}

}  // namespace
}  // namespace quorvex::test
