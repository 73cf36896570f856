// High-bit lossless paths reached by code for 8 bits: every precision of lossless JPEG meets every
// option that comes after the decoder.
#include "codec/colour.h"
#include "tests/reliability/coded_frames.h"
#include "tests/support/every_route.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

constexpr unsigned kColumns = 19;
constexpr unsigned kRows = 11;

struct LosslessStream {
    unsigned precision;
    unsigned samples;
    Bytes picture;  ///< samples as wide as the precision needs
    Bytes stream;
};

template <class Check>
void ForEachStream(Check check) {
    for (unsigned precision = 2; precision <= 16; ++precision) {
        for (const unsigned samples : {1U, 3U}) {
            SCOPED_TRACE(std::to_string(precision) + " bits, " + std::to_string(samples));
            const Bytes picture = PictureOf({kColumns, kRows, samples, precision}, precision);
            auto coding = testing::LosslessCoding(kColumns, kRows, static_cast<int>(samples),
                                                  static_cast<int>(precision));
            coding.predictor = static_cast<std::uint8_t>(1 + precision % 7);
            check(LosslessStream{precision, samples, picture, testing::Code(coding, picture)});
        }
    }
}

/// The stream without its word that the components are R, G and B.
Bytes Unmarked(Bytes stream) {
    constexpr unsigned char kAdobe[] = {0xFF, 0xEE};
    constexpr unsigned char kComment = 0xFE;
    constexpr unsigned char kFrame[] = {0xFF, 0xC3};
    constexpr unsigned char kScan[] = {0xFF, 0xDA};
    if (const auto adobe = std::ranges::search(stream, kAdobe)) adobe.begin()[1] = kComment;
    const auto frame = std::ranges::search(stream, kFrame).begin();
    const auto scan = std::ranges::search(stream, kScan).begin();
    for (unsigned char i = 0; i < 3; ++i) frame[10 + 3 * i] = scan[5 + 2 * i] = i + 1U;
    return stream;
}

/// The picture in samples of that width.
Bytes Widened(const LosslessStream& made, unsigned sampleBytes) {
    if (sampleBytes == 1 || made.precision > 8) return made.picture;
    Bytes wide;
    for (const unsigned char sample : made.picture) wide.insert(wide.end(), {sample, 0});
    return wide;
}

/// Unmarked lossless samples are whatever the header says: bytes that it calls full-range YBR
/// become R, G, B.
Bytes Expected(const LosslessStream& made, bool isMarked, const _IMAGE_PROCESS_PARAM& param) {
    Bytes samples = Widened(made, param.bitsAllocated > 8 ? 2 : 1);
    const bool isYbr = param.photometric == "YBR_FULL" || param.photometric == "YBR_FULL_422";
    if (!isYbr || isMarked || param.bitsAllocated > 8) return samples;
    ConvertYbrInPlace(samples, YbrArithmetic::kClamped);
    return samples;
}

void ExpectDecoded(const LosslessStream& made, bool isMarked, const _IMAGE_PROCESS_PARAM& param) {
    const bool isWide = param.bitsAllocated > 8;
    const std::size_t frameBytes = std::size_t{kColumns} * kRows * made.samples * (isWide ? 2 : 1);
    const Bytes stream = isMarked ? made.stream : Unmarked(made.stream);
    const auto decoded = DecodeGuarded(param, stream, frameBytes);
    const bool fits = made.precision <= 8 || isWide;
    ASSERT_EQ(decoded.code, fits ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS);
    if (!fits) return;
    ASSERT_EQ(decoded.frame, Expected(made, isMarked, param));
}

constexpr const char* kPhotometrics[] = {"MONOCHROME1",  "PALETTE COLOR", "RGB", "YBR_FULL",
                                         "YBR_FULL_422", "YBR_ICT",       ""};

TEST(LosslessPrecisions, MeetEveryHeader) {
    ForEachStream([](const LosslessStream& made) {
        auto param = ParamOf(kJpegLosslessFirstOrder, {kColumns, kRows, made.samples});
        for (const char* photometric : kPhotometrics) {
            for (const unsigned bits : {8U, 12U, 16U}) {
                for (unsigned option = 0; option < 8; ++option) {
                    const bool isMarked = made.samples == 1 || option < 4;
                    param.transferSyntax = option == 3 ? kJpegBaseline : kJpegLosslessFirstOrder;
                    param.bitsAllocated = static_cast<std::uint16_t>(bits);
                    param.photometric = photometric;
                    param.planarConfiguration = option & 1U;
                    param.pixelRepresentation = option >> 1U & 1U;
                    SCOPED_TRACE(std::string(photometric) + ", " + std::to_string(bits) +
                                 " allocated, option " + std::to_string(option));
                    ExpectDecoded(made, isMarked, param);
                }
            }
        }
    });
}

RenderedResult Render(const CString& path, int rotation, bool isFlipped, bool isInverse) {
    CDcmApp app;
    CXDIPP viewer;
    EXPECT_EQ(viewer.Initialize(&app, path, {20, 12}, 0), QVM_SUCCESS);
    viewer.UpdateZoom_ABS(4.0);
    viewer.UpdateRotate_ABS(rotation);
    if (isFlipped) viewer.UpdateHFlip_Toggle();
    if (isInverse) viewer.Inverse();
    EXPECT_EQ(viewer.Render(), QVM_SUCCESS);
    return ResultOf(viewer);
}

Bytes Reversed(const RenderedResult& picture) {
    Bytes reversed;
    const auto step = static_cast<std::size_t>(picture.pixelSize);
    for (std::size_t at = picture.bytes.size(); at != 0; at -= step)
        for (std::size_t s = 0; s < step; ++s) reversed.push_back(picture.bytes[at - step + s]);
    return reversed;
}

TEST(LosslessPrecisions, MeetEveryViewOption) {
    const Coding& lossless = kCodings[4];
    ForEachStream([&](const LosslessStream& made) {
        const FrameForm header{kColumns, kRows, made.samples, made.precision};
        const TemporaryFile file(FileOf(lossless, header, made.stream));
        const TemporaryFile native(FileOf(kCodings[0], header, made.picture));
        for (const int rotation : {0, 90, 180, 270}) {
            for (const bool isFlipped : {false, true}) {
                for (const bool isInverse : {false, true}) {
                    const auto shown = Render(file.Path(), rotation, isFlipped, isInverse);
                    EXPECT_EQ(shown.bytes,
                              Render(native.Path(), rotation, isFlipped, isInverse).bytes);
                    const auto turned = Render(file.Path(), rotation + 180, isFlipped, isInverse);
                    EXPECT_EQ(turned.bytes, Reversed(shown)) << rotation;
                }
            }
        }
        const auto answers = AskEverything(FileOf(lossless, header, made.stream));
        const auto plain = AskEverything(FileOf(kCodings[0], header, made.picture));
        for (std::size_t i = 0; i + 2 < plain.size(); ++i) EXPECT_EQ(answers[i], plain[i]) << i;
    });
}

}  // namespace
}  // namespace quorvex::test
