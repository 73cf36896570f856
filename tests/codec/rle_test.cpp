#include "codec/rle/rle.h"

#include "tests/codec/rle_frames.h"
#include "tests/reliability/guarded_bytes.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

struct Decoded {
    bool isWhole;
    Bytes frame;
};

std::size_t FrameBytes(const RleLayout& layout) {
    return layout.pixels * layout.samplesPerPixel * layout.bytesPerSample;
}

Decoded Decode(const Bytes& source, const RleLayout& layout) {
    const GuardedBytes guarded(source);
    Decoded decoded{false, Bytes(FrameBytes(layout), 0xEE)};
    decoded.isWhole = DecodeRle(guarded.Bytes(), layout, decoded.frame).isSound;
    return decoded;
}

constexpr struct {
    const char* what;
    std::size_t segments;
    RleLayout layout;
} kInterleaved[] = {
    {"8-bit grey", 1, {40007, 1, 1, false}},
    {"16-bit grey", 2, {20011, 1, 2, false}},
    {"32-bit grey", 4, {9001, 1, 4, false}},
    {"8-bit colour, reversed", 3, {9001, 3, 1, false}},
    {"too many for 8 bits", 2, {1001, 1, 1, false}},
    {"too many for 16 bits", 3, {1000, 1, 2, false}},
    {"one for 16 bits", 1, {1000, 1, 2, false}},
    {"fifteen", 15, {3001, 1, 2, false}},
};

Bytes RandomFrame(std::size_t segments, std::size_t places, std::mt19937& random) {
    std::vector<Bytes> coded;
    for (std::size_t i = 0; i < segments; ++i) {
        coded.push_back(EncodeSegment(RunnyBytes(places, random), random));
    }
    return JoinSegments(coded);
}

Decoded DecodeInterleavedSlowly(const Bytes& source, const auto& c) {
    const std::size_t bytes = FrameBytes(c.layout);
    Decoded decoded{false, Bytes(bytes + c.segments)};
    decoded.isWhole = DecodeSlowly(source, c.segments, decoded.frame, [&](std::size_t i) {
        const std::size_t first = c.segments - 1 - i;
        return Placement{first, c.segments, first + bytes};
    });
    decoded.frame.resize(bytes);
    return decoded;
}

TEST(Rle, GivesWhatByteByByteDecodingGives) {
    std::mt19937 random(3);
    for (const auto& c : kInterleaved) {
        const std::size_t fitting = FrameBytes(c.layout) / c.segments;
        for (const std::size_t places : {fitting, fitting + 70}) {
            const Bytes whole = RandomFrame(c.segments, places, random);
            for (int cut = 0; cut < 40; ++cut) {
                Bytes source = whole;
                // Damage in a middle segment as well: its neighbour begins early.
                if (cut > 20) source.resize(64 + random() % (whole.size() - 64));
                if (cut > 30 && c.segments > 1) PutWord(source, 8, 64 + random() % 200);
                bool isInside = true;
                for (std::size_t i = 0; i < c.segments; ++i) {
                    std::uint32_t offset = 0;
                    std::memcpy(&offset, source.data() + 4 * (i + 1), 4);
                    isInside = isInside && offset <= source.size();
                }
                const Decoded ours = Decode(source, c.layout);
                if (!isInside) {
                    EXPECT_FALSE(ours.isWhole) << c.what;
                    continue;
                }
                const Decoded expected = DecodeInterleavedSlowly(source, c);
                ASSERT_EQ(ours.isWhole, expected.isWhole) << c.what << " " << places << " " << cut;
                ASSERT_TRUE(ours.frame == expected.frame) << c.what << " " << places << " " << cut;
            }
        }
    }
}

const struct {
    const char* what;
    Bytes segment;
    bool isWhole;
    Bytes frame;
} kSmall[] = {
    {"a literal and a replicate run", {1, 5, 6, 0xFF, 7}, true, {5, 6, 7, 7}},
    {"no operation anywhere", {0x80, 0, 1, 0x80, 0xFE, 9, 0x80}, true, {1, 9, 9, 9}},
    {"an odd byte behind the last run", {3, 1, 2, 3, 4, 0}, true, {1, 2, 3, 4}},
    {"a short literal run is dropped", {0, 1, 3, 2, 3}, true, {1, 0, 0, 0}},
    {"a literal run ends with the segment", {2, 1, 2, 3}, true, {1, 2, 3, 0}},
    {"a replicate run without its byte", {0, 1, 0xFF}, false, {1, 0, 0, 0}},
    {"a replicate run past the frame", {0, 1, 0xFC, 2}, false, {1, 2, 2, 2}},
    {"a literal run past the frame", {4, 1, 2, 3, 4, 5}, false, {1, 2, 3, 4}},
    {"nothing", {}, true, {0, 0, 0, 0}},
};

TEST(Rle, TreatsRunsAtTheEnds) {
    for (const auto& c : kSmall) {
        const Decoded decoded = Decode(JoinSegments({c.segment}), {4, 1, 1, false});
        EXPECT_EQ(decoded.isWhole, c.isWhole) << c.what;
        EXPECT_EQ(decoded.frame, c.frame) << c.what;
    }
}

TEST(Rle, RefusesWhatTheHeaderCannotMean) {
    const Bytes good = JoinSegments({{3, 1, 2, 3, 4}, {3, 5, 6, 7, 8}});
    const RleLayout layout{4, 1, 2, false};
    EXPECT_EQ(Decode(good, layout).frame, (Bytes{5, 1, 6, 2, 7, 3, 8, 4}));
    EXPECT_FALSE(Decode(Bytes(good.begin(), good.begin() + 63), layout).isWhole);
    EXPECT_FALSE(Decode({}, layout).isWhole);
    for (const std::size_t count : {std::size_t{0}, std::size_t{16}, std::size_t{0xFFFFFFFF}}) {
        Bytes bad = good;
        PutWord(bad, 0, count);
        const Decoded decoded = Decode(bad, layout);
        EXPECT_EQ(decoded.isWhole, count == 0) << count;
        EXPECT_EQ(decoded.frame, Bytes(8)) << count;
    }
    Bytes lying = good;
    PutWord(lying, 8, good.size() + 1);
    EXPECT_FALSE(Decode(lying, layout).isWhole);
    // Three planes for a frame of one: the first still comes.
    const Bytes planes = JoinSegments({{3, 1, 2, 3, 4}, {3, 5, 6, 7, 8}, {0, 1}});
    const Decoded tooMany = Decode(planes, {4, 1, 1, true});
    EXPECT_FALSE(tooMany.isWhole);
    EXPECT_EQ(tooMany.frame, (Bytes{1, 2, 3, 4}));
}

TEST(Rle, ColourBehindADamagedPlaneIsNotDecoded) {
    std::mt19937 random(5);
    constexpr std::size_t kPixels = 20000;  // more than two bands
    std::vector<Bytes> planes;
    std::vector<Bytes> segments;
    for (int i = 0; i < 3; ++i) {
        planes.push_back(RunnyBytes(kPixels, random));
        segments.push_back(EncodeSegment(planes.back(), random));
    }
    const ColourFrame colour{ColourForm::kRgbPlanes, kPixels, 1, 1};
    const RleLayout layout{kPixels, 3, 1, true};
    Bytes rgb(3 * kPixels, 0xEE);
    EXPECT_TRUE(DecodeRleColour(JoinSegments(segments), layout, colour, rgb).isWhole);
    for (std::size_t p = 0; p < kPixels; ++p) ASSERT_EQ(rgb[3 * p + 2], planes[2][p]) << p;

    segments[1].assign({0, 77, 0xFF});  // the second plane breaks off
    EXPECT_FALSE(DecodeRleColour(JoinSegments(segments), layout, colour, rgb).isSound);
    EXPECT_EQ(rgb[1], 77);
    for (std::size_t p = 0; p < kPixels; ++p) {
        ASSERT_EQ(rgb[3 * p], planes[0][p]) << p;
        ASSERT_EQ(rgb[3 * p + 2], 0) << p;
    }
}

}  // namespace
}  // namespace quorvex::test
