// Coded frames of a few bytes that claim much, under headers that agree with them or not: what they
// cost goes with the frame that the header describes, and with their own length.
#include "foundation/types/limits.h"
#include "tests/codec/coded_frames.h"
#include "tests/reliability/hostile_streams.h"
#include "tests/reliability/measured_child.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>

namespace quorvex::test {
namespace {

constexpr unsigned kSide = 2048;
constexpr FrameForm kLarge = {kSide, kSide, 1, 8};
/// Without a sanitizer, which a loaded machine makes five times as long; catches what never ends.
constexpr double kMostSeconds = 4.0;
constexpr std::size_t kSlack = std::size_t{64} << 20;
/// Of address space for a pixel: a frame, its copy here, and rows, planes or coefficients.
constexpr std::size_t kUsualBytes = 10;
constexpr std::size_t kJpegXlBytes = 40;  ///< which are asked for ahead of the library

constexpr auto kRefused = QVM_ERROR_FAILED_TO_DECOMPRESS;
constexpr std::optional<QUORVEX_MESSAGE> kAnyAnswer;

struct Bomb {
    std::string what;
    std::uint32_t syntax;
    FrameForm header;
    Bytes stream;
    std::optional<QUORVEX_MESSAGE> answer;
    std::size_t bytesOfPixel = kUsualBytes;
};

void ExpectHarmless(const Bomb& bomb) {
    ASSERT_FALSE(bomb.stream.empty()) << bomb.what;
    const std::size_t pixels = std::size_t{bomb.header.columns} * bomb.header.rows;
    const auto decode = [&] {
        Bytes source = bomb.stream;
        const auto code = Decompress(ParamOf(bomb.syntax, bomb.header), source).code;
        if (!bomb.answer || code == *bomb.answer) return;
        std::cerr << bomb.what << ": answered " << code << '\n';
        std::abort();
    };
    ExpectCost(bomb.what, kMostSeconds, decode,
               kSlack + bomb.bytesOfPixel * pixels + 2 * bomb.stream.size());
}

TEST(FrameBombs, FlatPicturesOfEveryCodingUnderTheirOwnAndOtherHeaders) {
    for (const Coding& coding : kCodings) {
        if (coding.target == kXferUncompressed) continue;
        const FrameForm form{kSide, kSide, 1, std::max(8U, coding.leastBits)};
        const Bytes stream = CodeFrame(coding, form, Bytes(form.Bytes()));
        if (stream.empty()) continue;  // a build without the library
        const bool isJpegXl = coding.target == kXferJpegXlLossless;
        ExpectHarmless({coding.name, coding.syntax, form, stream, QVM_SUCCESS,
                        isJpegXl ? kJpegXlBytes : 2 * kUsualBytes});
        for (const unsigned side : {64U, 2 * kSide, 65535U}) {
            const FrameForm other{side, side, 1, form.bits};
            ExpectHarmless({coding.name + (" under " + std::to_string(side)), coding.syntax, other,
                            stream, side == 65535U ? std::optional(kRefused) : kAnyAnswer,
                            side == 65535U ? 0 : 2 * kUsualBytes});
        }
    }
}

void Put(Bytes& stream, std::size_t at, std::uint32_t number, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        stream.at(at + i) = static_cast<unsigned char>(number >> 8 * (bytes - 1 - i));
}

std::size_t FindMarker(const Bytes& stream, unsigned char marker) {
    const Bytes bytes = {0xFF, marker};
    return static_cast<std::size_t>(std::ranges::search(stream, bytes).begin() - stream.begin());
}

Bytes FlatJpeg2000() {
    const auto* row =
        std::ranges::find(kCodings, std::uint32_t{kJpeg2000Lossless}, &Coding::syntax);
    return CodeFrame(*row, kLarge, Bytes(kLarge.Bytes()));
}

Bytes WithLayers(std::uint32_t layers) {
    Bytes stream = FlatJpeg2000();
    Put(stream, FindMarker(stream, 0x52) + 6, layers, 2);
    return stream;
}

Bytes WithTiles(std::uint32_t side) {
    Bytes stream = FlatJpeg2000();
    Put(stream, FindMarker(stream, 0x51) + 22, side, 4);
    Put(stream, FindMarker(stream, 0x51) + 26, side, 4);
    return stream;
}

Bytes ClaimingJpegLs() {
    const FrameForm small{64, 64};
    Bytes stream = CodeJpegLsFrame(small, Bytes(small.Bytes()));
    const std::size_t frame = FindMarker(stream, 0xF7);
    Put(stream, frame + 5, kSide, 2);
    Put(stream, frame + 7, kSide, 2);
    return stream;
}

/// A segment that takes bytes and gives none.
Bytes IdleRle() {
    Bytes stream(64 + (std::size_t{16} << 20), 128);
    std::fill_n(stream.begin(), 64, static_cast<unsigned char>(0));
    stream[0] = 1;
    stream[4] = 64;
    return stream;
}

TEST(FrameBombs, StreamsThatAskForWorkWithoutBytes) {
    constexpr int kScans = kMostJpegScans;
    const Bytes zeros(std::size_t{64} << 20);
    const Bomb bombs[] = {
        {"layers, as many as are allowed", kJpeg2000Lossless, kLarge, WithLayers(20'000),
         kAnyAnswer},
        {"layers beyond", kJpeg2000Lossless, kLarge, WithLayers(65'535), kRefused},
        {"tiles, as many as are allowed", kJpeg2000Lossless, kLarge, WithTiles(64), kAnyAnswer},
        {"tiles beyond", kJpeg2000Lossless, kLarge, WithTiles(16), kRefused},
        {"JPEG-LS of 64 x 64 that claims more", kJpegLsLossless, kLarge, ClaimingJpegLs(),
         kAnyAnswer},
        {"deflate of sixteen frames", kDeflatedImageFrames, kLarge, DeflateFrame(zeros), kRefused},
        {"deflate of half a frame", kDeflatedImageFrames, kLarge,
         DeflateFrame(std::span(zeros).first(kLarge.Bytes() / 2)), kRefused},
        {"RLE that gives nothing", kRle, kLarge, IdleRle(), kAnyAnswer},
        {"Huffman scans", kJpegBaseline, kLarge, JpegOfEmptyScans({kScans, kSide}), kAnyAnswer},
        {"arithmetic scans", kJpegBaseline, kLarge, JpegOfEmptyScans({kScans, kSide, 8, true}),
         kAnyAnswer},
        {"scans of 12 bits",
         kJpegExtended,
         {kSide, kSide, 1, 12},
         JpegOfEmptyScans({kScans, kSide, 12}),
         kAnyAnswer},
    };
    for (const Bomb& bomb : bombs) ExpectHarmless(bomb);
}

}  // namespace
}  // namespace quorvex::test
