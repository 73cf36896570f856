// JPEG and JPEG 2000 frames through CxImageProcessor: what fits, what does not, what breaks off.
#include "tests/codec/coded_frames.h"

#include "foundation/dicom/model/transfer_syntax.h"
#include "tests/engines/jpeg2000_test_streams.h"
#include "tests/support/answers.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string_view>

namespace quorvex::test {
namespace {

using testing::Code;
using testing::CodeJpeg2000;
using testing::LosslessCoding;

Bytes First(const Bytes& bytes, std::size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

/// A coding with a decoder in the table of syntaxes has one in the codec: its frames are not
/// copied.
TEST(CodedFrames, EverySyntaxWithADecoderHasOne) {
    for (std::uint32_t number = 1; number <= kOtherEncapsulated; ++number) {
        Bytes source(64);
        const auto code = Decompress(ParamOf(number, {}), source).code;
        EXPECT_EQ(code != QVM_FRAME_COPIED, HasDecoder(static_cast<TRANSFER_SYNTAX>(number)))
            << number;
    }
}

constexpr struct {
    const char* what;
    FrameForm header;
    bool isJpegDecoded;
    bool isJpeg2000Decoded = false;
} kMismatches[] = {
    // for a stream of 40 x 30, 1 sample of 12 bits
    {"as the stream", {40, 30, 1, 16}, true, true},
    {"fewer columns", {20, 30, 1, 16}, false},
    {"fewer rows: the surplus lines are left out", {40, 7, 1, 16}, true},
    {"more rows: the rest is zero", {40, 60, 1, 16}, true},
    {"more columns: zeros behind each line", {47, 30, 1, 16}, true},
    {"more columns, fewer rows", {47, 7, 1, 16}, true},
    {"more of both", {41, 33, 1, 16}, true},
    {"three samples", {40, 30, 3, 16}, false},
    {"8 bits", {40, 30, 1, 8}, false},
    {"tiny", {1, 1, 1, 16}, false},
};

TEST(CodedFrames, AHeaderOfAnotherSizeGivesWhatFitsOrACode) {
    const auto codeOf = [](bool isDecoded) {
        return isDecoded ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS;
    };
    const Bytes pixels = PictureOf({40, 30, 1, 12});
    const Bytes jpeg = Code(LosslessCoding(40, 30, 1, 12), pixels);
    const Bytes j2k = CodeJpeg2000({40, 30, 1, 2, 12}, pixels);
    for (const auto& c : kMismatches) {
        const std::size_t bytes = c.header.Bytes();
        const auto decoded = DecodeGuarded(ParamOf(kJpegLossless, c.header), jpeg, bytes);
        EXPECT_EQ(decoded.code, codeOf(c.isJpegDecoded)) << c.what;
        EXPECT_EQ(DecodeGuarded(ParamOf(kJpeg2000Lossless, c.header), j2k, bytes).code,
                  codeOf(c.isJpeg2000Decoded))
            << c.what;
        if (!c.isJpegDecoded) continue;
        const std::size_t lines = std::min(c.header.rows, 30U);
        const std::size_t stride = c.header.columns * 2;
        Bytes expected(bytes);
        for (std::size_t line = 0; line < lines; ++line)
            std::copy_n(&pixels[line * 80], 80, &expected[line * stride]);
        EXPECT_EQ(decoded.frame, expected) << c.what;
        EXPECT_EQ(decoded.size, lines * stride) << c.what;
    }
}

TEST(CodedFrames, AStreamThatClaimsAHugePictureIsRefused) {
    Bytes stream = Code({.columns = 16, .rows = 16}, PictureOf({16, 16}));
    const unsigned char marker[] = {0xFF, 0xC0};
    const auto frame = std::search(stream.begin(), stream.end(), marker, marker + 2);
    ASSERT_NE(frame, stream.end());
    for (int i = 5; i < 9; ++i) frame[i] = i % 2 == 1 ? 0xEA : 0x60;  // 60000 x 60000
    EXPECT_EQ(DecodeGuarded(ParamOf(kJpegBaseline, {16, 16}), stream, 256).code,
              QVM_ERROR_FAILED_TO_DECOMPRESS);
    const BlindAnswer blind = BlindlyDecoded(kBlindDecoders[0], stream);
    EXPECT_EQ(blind.code, QVM_ERROR_FAILED_TO_DECOMPRESS);
    EXPECT_EQ(blind.width, 60000);
    EXPECT_TRUE(blind.bytes.empty());  // no memory for what cannot be there
}

TEST(CodedFrames, ABrokenStreamGivesItsFirstLinesAndZeros) {
    const FrameForm form{64, 64};
    const Bytes pixels = PictureOf(form);
    const Bytes whole = Code(LosslessCoding(64, 64, 1, 8), pixels);
    std::size_t last = 0;
    for (std::size_t length = 120; length < whole.size(); length += 101) {
        const auto decoded =
            DecodeGuarded(ParamOf(kJpegLossless, form), First(whole, length), form.Bytes());
        ASSERT_EQ(decoded.code, QVM_SUCCESS) << length;
        EXPECT_GE(decoded.size, last);
        last = decoded.size;
        Bytes expected = First(pixels, last);
        expected.resize(pixels.size());
        EXPECT_EQ(decoded.frame, expected) << length;
    }
    EXPECT_GT(last, pixels.size() / 2);
}

TEST(CodedFrames, TheBlindRoutesTellWhatTheyFound) {
    for (const FrameForm& form :
         {FrameForm{20, 10, 1, 8}, FrameForm{20, 10, 1, 16}, FrameForm{20, 10, 3, 8}}) {
        const Bytes pixels = PictureOf(form);
        const int samples = static_cast<int>(form.samples);
        const int bits = static_cast<int>(form.bits);
        const auto word = [](int value) { return static_cast<unsigned short>(value); };
        const BlindAnswer expected{{QVM_SUCCESS, pixels}, 20,         10,
                                   word(samples),         word(bits), word(samples * bits / 8)};
        Bytes jpeg = Code(LosslessCoding(20, 10, samples, bits), pixels);
        Bytes j2k = CodeJpeg2000({20, 10, samples, bits / 8, bits}, pixels);
        EXPECT_EQ(BlindlyDecoded(kBlindDecoders[0], jpeg), expected) << samples << ' ' << bits;
        EXPECT_EQ(BlindlyDecoded(kBlindDecoders[1], j2k), expected) << samples << ' ' << bits;
    }
}

TEST(CodedFrames, TheBlindRoutesTellTroubleApart) {
    const Bytes deep = PictureOf({20, 10, 1, 12});
    const Bytes large = PictureOf({90, 80});
    Bytes cutJpeg = Code({.columns = 90, .rows = 80}, large);
    cutJpeg.resize(cutJpeg.size() * 2 / 3);
    Bytes cutJ2k = CodeJpeg2000({90, 80}, large);
    cutJ2k.resize(cutJ2k.size() * 2 / 3);
    const Bytes noHeader = {0xFF, 0xD8, 0xFF, 0xD9};
    const Bytes deepJpeg = Code(LosslessCoding(20, 10, 1, 12), deep);
    const struct {
        const char* what;
        Bytes stream;
        int decoder;  ///< 0 for JPEG
        QUORVEX_MESSAGE code;
    } kTroubles[] = {
        {"12-bit JPEG", deepJpeg, 0, QVM_ERROR_INVALID_JPEG_PRECISION},
        {"12-bit J2K", CodeJpeg2000({20, 10, 1, 2, 12}, deep), 1, QVM_ERROR_CANNOT_OPEN_STREAM},
        {"no JPEG", {1, 2, 3}, 0, QVM_ERROR_CANNOT_OPEN_STREAM},
        {"no J2K", {1, 2, 3}, 1, QVM_ERROR_CANNOT_OPEN_STREAM},
        {"no frame header", noHeader, 0, QVM_ERROR_INVALID_JPEG_STREAM},
        {"JPEG that ends early", cutJpeg, 0, QVM_ERROR_FAILED_TO_DECOMPRESS},
        {"J2K that ends early", cutJ2k, 1, QVM_ERROR_FAILED_TO_DECOMPRESS},
    };
    for (const auto& c : kTroubles) {
        Bytes stream = c.stream;
        EXPECT_EQ(BlindlyDecoded(kBlindDecoders[c.decoder], stream).code, c.code) << c.what;
    }
}

/// Lossless samples that no marker calls R, G, B: they are what their header says.
Bytes UnmarkedLossless(const Bytes& pixels) {
    Bytes stream = Code(LosslessCoding(4, 3, 3, 8), pixels);
    const std::string_view name = "Adobe";
    const auto adobe = std::search(stream.begin(), stream.end(), name.begin(), name.end());
    EXPECT_NE(adobe, stream.end());
    *adobe = 'x';
    for (std::size_t i = 0; i + 3 < stream.size(); ++i) {
        const bool isId = stream[i + 1] == 0x11 || stream[i + 1] == 0x00;
        if (isId && std::string_view("RGB").find(static_cast<char>(stream[i])) < 3)
            stream[i] -= 'A';
    }
    return stream;
}

constexpr struct {
    const char* what;
    std::array<unsigned char, 3> ybr, rgb;
} kColours[] = {
    {"red", {82, 90, 240}, {239, 15, 15}},
    {"beyond white", {252, 130, 130}, {255, 250, 255}},
    {"below black", {100, 128, 38}, {0, 164, 100}},
};

TEST(CodedFrames, LosslessYbrIsShownInColour) {
    for (const auto& c : kColours) {
        Bytes ybr;
        for (int i = 0; i < 12; ++i) ybr.insert(ybr.end(), c.ybr.begin(), c.ybr.end());
        const Bytes jpeg = UnmarkedLossless(ybr);
        const Bytes j2k = CodeJpeg2000({4, 3, 3, 1, 8}, ybr);
        for (const char* photometric : {"YBR_FULL", "YBR_FULL_422"}) {
            for (const auto syntax : {kJpegLossless, kJpeg2000Lossless}) {
                _IMAGE_PROCESS_PARAM param = ParamOf(syntax, {4, 3, 3});
                param.photometric = photometric;
                const auto decoded =
                    DecodeGuarded(param, syntax == kJpegLossless ? jpeg : j2k, ybr.size());
                ASSERT_EQ(decoded.code, QVM_SUCCESS) << c.what;
                EXPECT_EQ(First(decoded.frame, 3), Bytes(c.rgb.begin(), c.rgb.end()))
                    << c.what << syntax;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
