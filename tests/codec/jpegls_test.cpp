// JPEG-LS frames of every interleave and precision under headers that agree with them or not.
#include "tests/codec/coded_frames.h"

#include <charls/charls.h>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

using charls::interleave_mode;

/// A stream by the library's own coder, of planes where they are asked for.
Bytes Stream(const FrameForm& form, interleave_mode mode, const Bytes& pixels, int bound = 0) {
    Bytes samples = pixels;
    if (mode == interleave_mode::none && form.samples > 1) {
        const std::size_t width = form.SampleBytes();
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const std::size_t pixel = i / width / form.samples;
            const std::size_t sample = i / width % form.samples;
            samples[(sample * form.columns * form.rows + pixel) * width + i % width] = pixels[i];
        }
    }
    charls::jpegls_encoder encoder;
    encoder
        .frame_info(
            {form.columns, form.rows, static_cast<int>(form.bits), static_cast<int>(form.samples)})
        .interleave_mode(mode)
        .near_lossless(bound);
    Bytes stream(4096 + 4 * pixels.size());
    encoder.destination(stream);
    stream.resize(encoder.encode(samples));
    return stream;
}

/// The samples in the bytes that a header allocates for each.
Bytes Widened(const FrameForm& form, const Bytes& pixels, std::size_t sampleBytes) {
    Bytes wide;
    for (std::size_t i = 0; i < pixels.size(); i += form.SampleBytes())
        for (std::size_t byte = 0; byte < sampleBytes; ++byte)
            wide.push_back(byte < form.SampleBytes() ? pixels[i + byte] : 0);
    return wide;
}

TEST(JpegLs, EveryInterleaveAndPrecisionInEveryWidth) {
    for (const unsigned bits : {2U, 5U, 7U, 8U, 9U, 12U, 15U, 16U}) {
        for (const unsigned samples : {1U, 3U, 4U}) {
            const FrameForm form{19, 11, samples, bits};
            const Bytes pixels = PictureOf(form);
            for (const auto mode :
                 {interleave_mode::none, interleave_mode::line, interleave_mode::sample}) {
                if (samples == 1 && mode != interleave_mode::none) continue;
                Bytes stream = Stream(form, mode, pixels);
                stream.push_back(0);  // as padding behind the end
                for (const unsigned allocated : {8U, 16U, 32U}) {
                    SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(samples) +
                                 " samples in " + std::to_string(allocated) + ", mode " +
                                 std::to_string(static_cast<int>(mode)));
                    const Bytes expected = Widened(form, pixels, allocated / 8);
                    auto param = ParamOf(kJpegLsLossless, form);
                    param.bitsAllocated = static_cast<std::uint16_t>(allocated);
                    const auto decoded = DecodeGuarded(param, stream, expected.size());
                    if (form.SampleBytes() * 8 > allocated) {
                        EXPECT_EQ(decoded.code, QVM_ERROR_FAILED_TO_DECOMPRESS);
                    } else {
                        EXPECT_EQ(decoded.code, QVM_SUCCESS);
                        EXPECT_TRUE(decoded.frame == expected);
                    }
                }
            }
        }
    }
}

TEST(JpegLs, NegativeSamplesGetTheirSignBack) {
    const FrameForm form{4, 1, 1, 12};
    const Bytes cut = {0xFF, 0x0F, 0x00, 0x08, 0xFF, 0x07, 0x05, 0x00};
    const Bytes stream = Stream(form, interleave_mode::none, cut);
    auto param = ParamOf(kJpegLsLossless, form);
    EXPECT_EQ(DecodeGuarded(param, stream, 8).frame, cut) << "unsigned";
    param.pixelRepresentation = 1;
    EXPECT_EQ(DecodeGuarded(param, stream, 8).frame,
              (Bytes{0xFF, 0xFF, 0x00, 0xF8, 0xFF, 0x07, 0x05, 0x00}));
}

TEST(JpegLs, YbrIsShownInColour) {
    const FrameForm form{1, 1, 3};
    const Bytes stream = Stream(form, interleave_mode::line, {82, 90, 240});
    for (const char* photometric : {"YBR_FULL", "YBR_FULL_422"}) {
        auto param = ParamOf(kJpegLsLossless, form);
        param.photometric = photometric;
        EXPECT_EQ(DecodeGuarded(param, stream, 3).frame, (Bytes{239, 15, 15})) << photometric;
    }
}

TEST(JpegLs, OtherSizesAndCutStreamsAreRefused) {
    const FrameForm form{40, 30, 1, 12};
    const Bytes pixels = PictureOf(form);
    const Bytes stream = CodeJpegLsFrame(form, pixels);
    for (const FrameForm& header :
         {FrameForm{39, 30, 1, 16}, FrameForm{41, 30, 1, 16}, FrameForm{40, 29, 1, 16},
          FrameForm{40, 31, 1, 16}, FrameForm{40, 30, 3, 16}, FrameForm{40, 30, 1, 8}}) {
        EXPECT_EQ(DecodeGuarded(ParamOf(kJpegLsLossless, header), stream, header.Bytes()).code,
                  QVM_ERROR_FAILED_TO_DECOMPRESS);
    }
    for (std::size_t length = 0; length < stream.size(); ++length) {
        const Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
        const auto decoded = DecodeGuarded(ParamOf(kJpegLsLossless, form), cut, form.Bytes());
        ASSERT_TRUE(decoded.code == QVM_ERROR_FAILED_TO_DECOMPRESS || decoded.frame == pixels)
            << length;
    }
}

}  // namespace
}  // namespace quorvex::test
