// JPEG streams of the rarer processes: the frame header says what they are, not the syntax.
#include "codec/frame_decoder.h"
#include "tests/codec/coded_frames.h"
#include "tests/engines/jpeg_library_streams.h"

#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr FrameForm kForm{40, 30, 3};

struct Outcome {
    QUORVEX_MESSAGE code;
    Bytes frame;
    bool isWhole;
    bool isSupported;
};

Outcome DecodeJpeg(const Bytes& stream) {
    const auto param = ParamOf(kJpegBaseline, kForm);
    Bytes source = stream;
    Bytes frame(kForm.Bytes());
    unsigned char* result = frame.data();
    unsigned long size = frame.size();
    FrameDecoder decoder(param, source, 1, false);
    const auto code = decoder.Decode(result, size);
    return {code, frame, decoder.IsWhole(), decoder.IsSupported()};
}

Bytes Stream(bool isProgressive, bool isArithmetic) {
    return testing::MakeJpeg(kForm.columns, kForm.rows, PictureOf(kForm),
                             {.progressive = isProgressive, .arithmetic = isArithmetic});
}

TEST(JpegProcesses, ArithmeticStreamsGiveTheSamplesOfTheirHuffmanTwins) {
    for (const bool isProgressive : {false, true}) {
        const auto arithmetic = DecodeJpeg(Stream(isProgressive, true));
        EXPECT_EQ(arithmetic.code, QVM_SUCCESS);
        EXPECT_TRUE(arithmetic.isWhole);
        EXPECT_TRUE(arithmetic.frame == DecodeJpeg(Stream(isProgressive, false)).frame);
    }
}

/// Their decoder would go on with zeros and say nothing.
TEST(JpegProcesses, CutArithmeticStreamsAreNotWhole) {
    for (const bool isProgressive : {false, true}) {
        const Bytes whole = Stream(isProgressive, true);
        for (std::size_t length = 0; length + 2 < whole.size(); length += 5) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            const auto outcome = DecodeJpeg(cut);
            EXPECT_TRUE(outcome.code != QVM_SUCCESS || !outcome.isWhole) << length;
        }
    }
}

TEST(JpegProcesses, WhatIsNotSupportedIsToldApartFromDamage) {
    const Bytes stream = Stream(false, false);
    const auto withMarker = [&](unsigned char marker) {
        Bytes other = stream;
        const unsigned char baseline[] = {0xFF, 0xC0};
        const auto frame = std::search(other.begin(), other.end(), baseline, baseline + 2);
        frame[1] = marker;
        return other;
    };
    Bytes hierarchical = stream;
    const Bytes segment = {0xFF, 0xDE, 0, 17, 8, 0, 60, 0, 80, 3, 1, 17, 0, 2, 17, 0, 3, 17, 0};
    hierarchical.insert(hierarchical.begin() + 2, segment.begin(), segment.end());
    const struct {
        const char* what;
        Bytes stream;
        bool isSupported;
    } kStreams[] = {
        {"lossless, arithmetic", withMarker(0xCB), false},
        {"differential", withMarker(0xC5), false},
        {"hierarchical", hierarchical, false},
        {"cut in its header", Bytes(stream.begin(), stream.begin() + 100), true},
        {"no JPEG", Bytes(100), true},
    };
    for (const auto& c : kStreams) {
        const auto outcome = DecodeJpeg(c.stream);
        EXPECT_EQ(outcome.code, QVM_ERROR_FAILED_TO_DECOMPRESS) << c.what;
        EXPECT_EQ(outcome.isSupported, c.isSupported) << c.what;
    }
}

}  // namespace
}  // namespace quorvex::test
