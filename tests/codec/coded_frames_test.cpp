// JPEG and JPEG 2000 frames through CxImageProcessor: what fits, what does not, what breaks off.
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"
#include "tests/engines/jpeg2000_test_streams.h"
#include "tests/engines/jpeg_test_streams.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string_view>

namespace quorvex {
namespace {

using testing::ByteVector;
using testing::Code;
using testing::CodeJpeg2000;
using testing::Jpeg2000Picture;
using testing::Picture;

constexpr unsigned char kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 4096;

struct Header {
    std::uint32_t syntax = kJpegBaseline;
    int columns = 0;
    int rows = 0;
    int samples = 1;
    int bitsAllocated = 8;
    const char* photometric = "MONOCHROME2";
    int pixelRepresentation = 0;
};

struct Outcome {
    QUORVEX_MESSAGE result = QVM_ERROR_NO_IMAGE;
    ByteVector frame;
    unsigned long size = 0;
    bool isGuarded = false;
};

/// Decodes into a block with guard bytes around it.
Outcome Decode(const Header& header, ByteVector stream) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = header.syntax;
    param.columns = static_cast<std::uint16_t>(header.columns);
    param.rows = static_cast<std::uint16_t>(header.rows);
    param.samplesPerPixel = static_cast<std::uint16_t>(header.samples);
    param.bitsAllocated = static_cast<std::uint16_t>(header.bitsAllocated);
    param.photometric = header.photometric;
    param.planarConfiguration = 0;
    param.pixelRepresentation = static_cast<std::uint16_t>(header.pixelRepresentation);
    const std::size_t bytes = static_cast<std::size_t>(header.columns) *
                              static_cast<std::size_t>(header.rows * header.samples) *
                              (header.bitsAllocated > 8 ? 2 : 1);
    ByteVector block(bytes + 2 * kGuardBytes, kGuard);
    std::fill_n(block.begin() + kGuardBytes, bytes, static_cast<unsigned char>(0));
    unsigned char* result = block.data() + kGuardBytes;
    Outcome outcome;
    outcome.size = bytes;
    outcome.result = CxImageProcessor().DecompressFrameData(&param, stream.data(), stream.size(),
                                                            result, outcome.size, 0);
    const auto isGuard = [](unsigned char byte) { return byte == kGuard; };
    outcome.isGuarded = std::all_of(block.begin(), block.begin() + kGuardBytes, isGuard) &&
                        std::all_of(block.end() - kGuardBytes, block.end(), isGuard);
    outcome.frame.assign(result, result + bytes);
    return outcome;
}

JpegCodingBlock Lossless(int columns, int rows, int samples, int precision) {
    return {.columns = static_cast<std::uint16_t>(columns),
            .rows = static_cast<std::uint16_t>(rows),
            .samples = static_cast<std::uint8_t>(samples),
            .bytesPerSample = static_cast<std::uint8_t>(precision > 8 ? 2 : 1),
            .process = JpegProcess::kLossless,
            .precision = static_cast<std::uint8_t>(precision)};
}

struct MismatchCase {
    const char* what;
    int columns, rows, samples, bitsAllocated;
    QUORVEX_MESSAGE jpeg;
};
constexpr MismatchCase kMismatches[] = {
    // for a stream of 40 x 30, 1 sample of 12 bits
    {"as the stream", 40, 30, 1, 16, QVM_SUCCESS},
    {"fewer columns", 20, 30, 1, 16, QVM_ERROR_FAILED_TO_DECOMPRESS},
    {"fewer rows: the surplus lines are left out", 40, 7, 1, 16, QVM_SUCCESS},
    {"more rows: the rest is zero", 40, 60, 1, 16, QVM_SUCCESS},
    {"three samples", 40, 30, 3, 16, QVM_ERROR_FAILED_TO_DECOMPRESS},
    {"8 bits", 40, 30, 1, 8, QVM_ERROR_FAILED_TO_DECOMPRESS},
    {"tiny", 1, 1, 1, 16, QVM_ERROR_FAILED_TO_DECOMPRESS},
};

TEST(CodedFrames, NothingIsWrittenPastABlockOfAnotherSize) {
    const ByteVector pixels = Picture(40, 30, 1, 2, 12);
    const ByteVector jpeg = Code(Lossless(40, 30, 1, 12), pixels);
    const ByteVector j2k =
        CodeJpeg2000({.columns = 40, .rows = 30, .bytesPerSample = 2, .bitDepth = 12}, pixels);
    for (const MismatchCase& c : kMismatches) {
        const Header header{.syntax = kJpegLossless,
                            .columns = c.columns,
                            .rows = c.rows,
                            .samples = c.samples,
                            .bitsAllocated = c.bitsAllocated,
                            .photometric = c.samples == 3 ? "RGB" : "MONOCHROME2"};
        const Outcome outcome = Decode(header, jpeg);
        EXPECT_EQ(outcome.result, c.jpeg) << c.what;
        EXPECT_TRUE(outcome.isGuarded) << c.what;
        if (c.jpeg == QVM_SUCCESS) {
            const std::size_t same = std::min(outcome.frame.size(), pixels.size());
            EXPECT_EQ(outcome.size, same) << c.what;
            EXPECT_TRUE(std::equal(pixels.begin(),
                                   pixels.begin() + static_cast<std::ptrdiff_t>(same),
                                   outcome.frame.begin()))
                << c.what;
        }
        Header wavelet = header;
        wavelet.syntax = kJpeg2000Lossless;
        const bool fits = c.columns == 40 && c.rows == 30 && c.samples == 1 && c.bitsAllocated > 8;
        const Outcome other = Decode(wavelet, j2k);
        EXPECT_EQ(other.result, fits ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS) << c.what;
        EXPECT_TRUE(other.isGuarded) << c.what;
    }
}

TEST(CodedFrames, AStreamThatClaimsAHugePictureIsRefused) {
    ByteVector stream = Code({.columns = 16, .rows = 16}, Picture(16, 16, 1, 1, 8));
    const unsigned char marker[] = {0xFF, 0xC0};
    const auto frame = std::search(stream.begin(), stream.end(), marker, marker + 2);
    ASSERT_NE(frame, stream.end());
    for (int i = 5; i < 9; ++i) frame[i] = i % 2 == 1 ? 0xEA : 0x60;  // 60000 x 60000
    const Outcome outcome = Decode({.columns = 16, .rows = 16}, stream);
    EXPECT_EQ(outcome.result, QVM_ERROR_FAILED_TO_DECOMPRESS);
    EXPECT_TRUE(outcome.isGuarded);
    unsigned char* result = nullptr;
    unsigned long size = 0;
    unsigned short columns, rows, samples, bits, bytes;
    EXPECT_EQ(CxImageProcessor().DecompressBlindJPEGData(stream.data(), stream.size(), result, size,
                                                         columns, rows, samples, bits, bytes),
              QVM_ERROR_FAILED_TO_DECOMPRESS);
    EXPECT_EQ(columns, 60000);
    EXPECT_EQ(result, nullptr);  // no memory for what cannot be there
}

TEST(CodedFrames, ABrokenStreamGivesItsFirstLinesAndZeros) {
    const ByteVector pixels = Picture(64, 64, 1, 1, 8);
    const ByteVector whole = Code(Lossless(64, 64, 1, 8), pixels);
    const Header header{.syntax = kJpegLossless, .columns = 64, .rows = 64};
    std::size_t last = 0;
    for (std::size_t length = 120; length < whole.size(); length += 101) {
        const Outcome outcome = Decode(
            header, ByteVector(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        ASSERT_EQ(outcome.result, QVM_SUCCESS) << length;
        EXPECT_GE(outcome.size, last);
        last = outcome.size;
        const auto split = outcome.frame.begin() + static_cast<std::ptrdiff_t>(last);
        EXPECT_TRUE(std::equal(outcome.frame.begin(), split, pixels.begin())) << length;
        EXPECT_TRUE(std::all_of(split, outcome.frame.end(), [](int byte) { return byte == 0; }));
    }
    EXPECT_GT(last, pixels.size() / 2);
}

struct Blind {
    QUORVEX_MESSAGE result;
    ByteVector frame;
    unsigned short columns = 0, rows = 0, samples = 0, bits = 0, bytesPerPixel = 0;
};

Blind DecodeBlind(ByteVector stream, bool isJpeg2000) {
    CxImageProcessor processor;
    Blind blind;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    const auto decode = isJpeg2000 ? &CxImageProcessor::DecompressBlindJP2KData
                                   : &CxImageProcessor::DecompressBlindJPEGData;
    blind.result = (processor.*decode)(stream.data(), stream.size(), result, size, blind.columns,
                                       blind.rows, blind.samples, blind.bits, blind.bytesPerPixel);
    if (result != nullptr) blind.frame.assign(result, result + size);
    delete[] result;
    return blind;
}

TEST(CodedFrames, TheBlindRoutesTellWhatTheyFound) {
    const ByteVector grey = Picture(20, 10, 1, 1, 8);
    const ByteVector wide = Picture(20, 10, 1, 2, 16);
    const ByteVector rgb = Picture(20, 10, 3, 1, 8);
    const auto check = [](const Blind& blind, const ByteVector& frame, int samples, int bits) {
        EXPECT_EQ(blind.result, QVM_SUCCESS);
        EXPECT_EQ(blind.frame, frame);
        EXPECT_EQ(blind.columns, 20);
        EXPECT_EQ(blind.rows, 10);
        EXPECT_EQ(blind.samples, samples);
        EXPECT_EQ(blind.bits, bits);
        EXPECT_EQ(blind.bytesPerPixel, samples * bits / 8);
    };
    check(DecodeBlind(Code(Lossless(20, 10, 1, 8), grey), false), grey, 1, 8);
    check(DecodeBlind(Code(Lossless(20, 10, 1, 16), wide), false), wide, 1, 16);
    check(DecodeBlind(Code(Lossless(20, 10, 3, 8), rgb), false), rgb, 3, 8);
    const Jpeg2000Picture j2k{.columns = 20, .rows = 10};
    check(DecodeBlind(CodeJpeg2000(j2k, grey), true), grey, 1, 8);
    check(DecodeBlind(CodeJpeg2000({20, 10, 1, 2, 16}, wide), true), wide, 1, 16);
    check(DecodeBlind(CodeJpeg2000({20, 10, 3, 1, 8}, rgb), true), rgb, 3, 8);
}

TEST(CodedFrames, TheBlindRoutesTellTroubleApart) {
    const ByteVector deep = Picture(20, 10, 1, 2, 12);
    EXPECT_EQ(DecodeBlind(Code(Lossless(20, 10, 1, 12), deep), false).result,
              QVM_ERROR_INVALID_JPEG_PRECISION);
    EXPECT_EQ(DecodeBlind(CodeJpeg2000({20, 10, 1, 2, 12}, deep), true).result,
              QVM_ERROR_CANNOT_OPEN_STREAM);
    EXPECT_EQ(DecodeBlind({1, 2, 3}, false).result, QVM_ERROR_CANNOT_OPEN_STREAM);
    EXPECT_EQ(DecodeBlind({1, 2, 3}, true).result, QVM_ERROR_CANNOT_OPEN_STREAM);
    EXPECT_EQ(DecodeBlind({0xFF, 0xD8, 0xFF, 0xD9}, false).result, QVM_ERROR_INVALID_JPEG_STREAM);
    for (bool isJpeg2000 : {false, true}) {
        const ByteVector grey = Picture(90, 80, 1, 1, 8);
        ByteVector cut = isJpeg2000 ? CodeJpeg2000({.columns = 90, .rows = 80}, grey)
                                    : Code({.columns = 90, .rows = 80}, grey);
        cut.resize(cut.size() * 2 / 3);
        EXPECT_EQ(DecodeBlind(cut, isJpeg2000).result, QVM_ERROR_FAILED_TO_DECOMPRESS);
    }
}

TEST(CodedFrames, LosslessYbrIsShownInColour) {
    ByteVector ybr;  // a red
    for (int i = 0; i < 12; ++i) ybr.insert(ybr.end(), {82, 90, 240});
    ByteVector stream = Code(Lossless(4, 3, 3, 8), ybr);
    // The coder marks its samples as R, G, B; a stream without marks is what its header says.
    const std::string_view name = "Adobe";
    const auto adobe = std::search(stream.begin(), stream.end(), name.begin(), name.end());
    ASSERT_NE(adobe, stream.end());
    *adobe = 'x';
    for (std::size_t i = 0; i + 3 < stream.size(); ++i) {
        const bool isId = stream[i + 1] == 0x11 || stream[i + 1] == 0x00;
        if (isId && std::string_view("RGB").find(static_cast<char>(stream[i])) < 3)
            stream[i] -= 'A';
    }
    for (const char* photometric : {"YBR_FULL", "YBR_FULL_422"}) {
        const Outcome outcome = Decode({.syntax = kJpegLossless,
                                        .columns = 4,
                                        .rows = 3,
                                        .samples = 3,
                                        .photometric = photometric},
                                       stream);
        ASSERT_EQ(outcome.result, QVM_SUCCESS);
        EXPECT_NEAR(outcome.frame[0], 239, 2);
        EXPECT_NEAR(outcome.frame[1], 15, 2);
        EXPECT_NEAR(outcome.frame[2], 15, 2);
    }
}

}  // namespace
}  // namespace quorvex
