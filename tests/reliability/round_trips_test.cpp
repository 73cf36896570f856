// Encoders: what goes in comes out, for every coder, size from 1 to 17 and kind of sample.
#include "tests/reliability/coded_frames.h"
#include "tests/reliability/guarded_bytes.h"
#include "tests/support/every_route.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {
namespace {

struct Samples {
    const char* what;
    unsigned samples;
    unsigned bits;
    bool isSigned;
};
constexpr Samples kSamples[] = {{"grey bytes", 1, 8, false},    {"colour bytes", 3, 8, false},
                                {"12 bits", 1, 12, false},      {"words", 1, 16, false},
                                {"signed words", 1, 16, true},  {"signed bytes", 1, 8, true},
                                {"colour words", 3, 16, false}, {"12-bit colour", 3, 12, false}};

/// The kinds of samples that a coder takes for certain, and how far it may miss.
struct Coder {
    const Coding& coding;
    bool (*takes)(const Samples&);
    int greatestError;  ///< for samples of 8 bits; in proportion for more
};
const Coder kCoders[] = {
    {kCodings[2], [](const Samples& s) { return s.bits == 8; }, 12},
    {kCodings[3], [](const Samples& s) { return s.bits == 12 && s.samples == 1; }, 12},
    {kCodings[4], [](const Samples& s) { return s.samples == 1 || s.bits == 8; }, 0},
    // A byte target leaves such small pictures little beside their headers.
    {kCodings[5], [](const Samples&) { return true; }, 255},
    {kCodings[6], [](const Samples&) { return true; }, 0},
};

int SampleAt(const Bytes& bytes, std::size_t index, const Samples& kind) {
    if (kind.bits == 8)
        return kind.isSigned ? static_cast<signed char>(bytes[index]) : int{bytes[index]};
    const int word = bytes[2 * index] | bytes[2 * index + 1] << 8;
    return kind.isSigned ? static_cast<std::int16_t>(word) : word;
}

int GreatestError(const Bytes& one, const Bytes& other, const Samples& kind) {
    int error = 0;
    for (std::size_t i = 0; i < one.size() / (kind.bits > 8 ? 2 : 1); ++i)
        error = std::max(error, std::abs(SampleAt(one, i, kind) - SampleAt(other, i, kind)));
    return error;
}

void ExpectRoundTrip(const Coder& coder, const Samples& kind, const FrameForm& form) {
    Bytes pixels = PictureOf(form, form.columns * 31 + form.rows);
    _IMAGE_PROCESS_PARAM param = DecodingParam(coder.coding, form);
    param.pixelRepresentation = kind.isSigned ? 1 : 0;
    param.targetSyntax = coder.coding.target;
    param.quality = coder.coding.target == kXferJpegBaseline ? 98 : 1;
    param.transferSyntax = kExplicitLittleEndian;
    const auto [code, coded] = Compress(param, pixels);
    ASSERT_TRUE(code == QVM_SUCCESS || !coder.takes(kind)) << code;
    if (code != QVM_SUCCESS) return;
    param.transferSyntax = coder.coding.syntax;
    const auto back = DecodeGuarded(param, coded, pixels.size());
    EXPECT_EQ(back.code, QVM_SUCCESS);
    EXPECT_LE(GreatestError(back.frame, pixels, kind), coder.greatestError << (kind.bits - 8));
}

TEST(RoundTrips, GiveBackWhatWentIn) {
    for (const Coder& coder : kCoders) {
        for (const Samples& kind : kSamples) {
            const bool isLossyJpeg = coder.coding.target <= kXferJpegExtended;
            if (isLossyJpeg && kind.isSigned) continue;  // refused only with negative samples
            for (unsigned size = 0; size < 17 * 17; ++size) {
                const FrameForm form{size % 17 + 1, size / 17 + 1, kind.samples, kind.bits};
                SCOPED_TRACE(std::string(coder.coding.name) + ", " + kind.what + ", " +
                             std::to_string(form.columns) + " x " + std::to_string(form.rows));
                ExpectRoundTrip(coder, kind, form);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

/// Sizes, samples and bits that contradict the source, at every coder.
TEST(RoundTrips, CodersRefuseWhatTheirSourceDoesNotHold) {
    const FrameForm form{.columns = 8, .rows = 8};
    for (const Coder& coder : kCoders) {
        for (const unsigned rows : {0U, 9U, 65535U}) {
            for (const unsigned columns : {0U, 9U, 65535U}) {
                for (const unsigned samples : {0U, 1U, 2U, 3U, 4U, 255U, 65535U}) {
                    for (const unsigned bits : {0U, 1U, 8U, 16U, 24U, 32U, 256U, 65535U}) {
                        _IMAGE_PROCESS_PARAM param = DecodingParam(
                            coder.coding, {.columns = columns, .rows = rows, .samples = samples});
                        param.transferSyntax = kExplicitLittleEndian;
                        param.bitsAllocated = static_cast<std::uint16_t>(bits);
                        param.targetSyntax = coder.coding.target;
                        Bytes pixels = PictureOf(form);
                        EXPECT_NE(Compress(param, pixels).code, QVM_SUCCESS)
                            << columns << ' ' << rows << ' ' << samples;
                    }
                }
            }
        }
    }
}

/// The maker's coders at sizes that no scanner has.
TEST(RoundTrips, ConversionsKeepOddFrames) {
    for (const unsigned columns : {1U, 2U, 3U, 9U, 17U}) {
        for (const unsigned rows : {1U, 2U, 3U, 9U, 17U}) {
            for (const unsigned samples : {1U, 3U}) {
                const FrameForm form{columns, rows, samples, samples == 3 ? 8U : 16U};
                const Bytes pixels = PictureOf(form);
                MemoryFile file{.bytes = FileOf(kCodings[0], form, pixels)};
                CDcmObject object;
                ASSERT_EQ(ReadUpTo(object, file, kToTheEnd), kDcmSuccess);
                for (const auto target : {kXferUncompressed, kXferUncompressedExplicit,
                                          kXferJpegLossless, kXferJpeg2000Lossless}) {
                    const auto made = ConvertedOf(object, target);
                    EXPECT_TRUE(made.bytes == pixels) << target << ' ' << columns << ' ' << rows;
                }
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
