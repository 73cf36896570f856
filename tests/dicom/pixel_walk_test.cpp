#include "foundation/dicom/frames/pixel_walk.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::dicom {
namespace {

/// The frames of a walk, each as one text.
class Frames final : public FrameSink {
public:
    MC_STATUS OffsetTable(Bytes table) override {
        offsetTable = AsText(table);
        return kMcContinue;
    }
    MC_STATUS Piece(std::size_t frame, Bytes piece, bool isFirst, bool isLast) override {
        if (isFirst) frames.emplace_back();
        EXPECT_EQ(frame + 1, frames.size());
        frames.back() += AsText(piece);
        if (isLast) ++ended;
        return frame < refusedFrame ? kMcContinue : kMcRefuse;
    }

    static std::string AsText(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

    std::string offsetTable;
    std::vector<std::string> frames;
    std::size_t ended = 0;
    std::size_t refusedFrame = 99;
};

std::string Header(std::uint16_t element, std::uint32_t length) {
    std::string bytes = {'\xFE', '\xFF', static_cast<char>(element), '\xE0'};
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(length >> (8 * i));
    return bytes;
}

std::string Item(const std::string& content) {
    return Header(0, static_cast<std::uint32_t>(content.size())) + content;
}

const std::string kDelimiter = Header(0xDD, 0);
const std::string kStart = "\xFF\xD8\xFF";

Bytes AsBytes(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// The bytes in a block of exactly their size, so that a read past them is seen.
std::vector<std::string> WalkedFrames(const std::string& value, std::uint32_t frameCount) {
    const std::vector<unsigned char> exact(value.begin(), value.end());
    Frames frames;
    const FrameHints hints = {.frameCount = frameCount, .syntax = kJpegBaseline};
    EXPECT_TRUE(WalkEncapsulated(ItemsIn(exact, kJpegBaseline), hints, frames));
    EXPECT_EQ(frames.ended, frames.frames.size());
    return frames.frames;
}

using Texts = std::vector<std::string>;

struct WalkCase {
    const char* what;
    std::string value;
    std::uint32_t frameCount;
    Texts frames;
};

const WalkCase kWalks[] = {
    {"two frames", Item("") + Item("ab") + Item("cd") + kDelimiter, 2, {"ab", "cd"}},
    {"no delimiter", Item("") + Item("ab") + Item("cd"), 2, {"ab", "cd"}},
    {"a delimiter among the pixels",
     Item("") + Item("a" + kDelimiter + "b") + kDelimiter,
     1,
     {"a" + kDelimiter + "b"}},
    {"something else behind the delimiter",
     Item("") + Item("ab") + kDelimiter + Item("xx"),
     1,
     {"ab"}},
    {"something else in place of the delimiter",
     Item("") + Item("ab") + "\xFC\xFF\xFC\xFF    ",
     1,
     {"ab"}},
    {"a length past the end", Item("") + Item("ab") + Header(0, 500) + "cd", 2, {"ab", "cd"}},
    {"the longest length", Item("") + Header(0, 0xFFFFFFFF) + "cd", 1, {"cd"}},
    {"half an item header", Item("") + Item("ab") + Header(0, 9).substr(0, 5), 1, {"ab"}},
    {"an empty fragment", Item("") + Item("ab") + Item("") + Item("cd") + kDelimiter, 1, {"abcd"}},
    {"no offset table item", Item(kStart + "ab") + Item("cd") + kDelimiter, 1, {kStart + "abcd"}},
    {"nothing but a table", Item(""), 1, {}},
    {"nothing", "", 1, {}},
};

TEST(PixelWalk, FollowsTheLengthsOfItems) {
    for (const auto& c : kWalks) EXPECT_EQ(WalkedFrames(c.value, c.frameCount), c.frames) << c.what;
}

TEST(PixelWalk, FiveFramesOfThreeFragmentsWithoutATableStayFive) {
    std::string value = Item("");
    Texts expected;
    for (char frame = 'a'; frame < 'f'; ++frame) {
        expected.push_back(kStart + std::string(3, frame) + "--" + "++++");
        value += Item(kStart + std::string(3, frame)) + Item("--") + Item("++++");
    }
    EXPECT_EQ(WalkedFrames(value + kDelimiter, 5), expected);
}

TEST(PixelWalk, EveryCutGivesABeginning) {
    const std::string value = Item("") + Item(kStart + "abcde") + Item("fgh") + kDelimiter;
    for (std::size_t length = 0; length < value.size(); ++length) {
        const auto frames = WalkedFrames(value.substr(0, length), 1);
        ASSERT_LE(frames.size(), 1U);
        if (!frames.empty()) {
            EXPECT_TRUE((kStart + "abcdefgh").starts_with(frames[0])) << length;
        }
    }
}

TEST(PixelWalk, ARefusalEndsIt) {
    const std::string value = Item("") + Item("ab") + Item("cd") + Item("ef");
    Frames frames;
    frames.refusedFrame = 1;
    EXPECT_FALSE(
        WalkEncapsulated(ItemsIn(AsBytes(value), kJpegBaseline), {.frameCount = 3}, frames));
    EXPECT_EQ(frames.frames, (Texts{"ab", "cd"}));
}

Texts NativeTexts(const NativeFrames& native) {
    Frames frames;
    std::vector<unsigned char> block(native.BlockBytes());
    EXPECT_TRUE(WalkNative(native, block, frames));
    return frames.frames;
}

TEST(NativeFrames, AreCutBySize) {
    const std::string text = "abcdefg";
    const auto bytes = AsBytes(text);
    EXPECT_EQ(NativeTexts({bytes.first(6), 3, {}}), (Texts{"abc", "def"}));
    EXPECT_EQ(NativeTexts({bytes.first(7), 3, {}}), (Texts{"abc", "def", "g"}));
    EXPECT_EQ(NativeTexts({bytes.first(7), 0, {}}), (Texts{"abcdefg"}));
    EXPECT_EQ(NativeTexts({bytes.first(2), 1'000'000, {}}), (Texts{"ab"}));
    EXPECT_EQ(NativeTexts({bytes.first(0), 3, {}}), Texts{});
    // Two pixels of 4:2:2 lie in four bytes, whatever size the caller computed.
    const PixelShape halfChroma = {.rows = 1,
                                   .columns = 2,
                                   .samplesPerPixel = 3,
                                   .bitsAllocated = 8,
                                   .frameCount = 1,
                                   .isHalfChroma = true};
    EXPECT_EQ(NativeTexts(CutNative(bytes.first(7), halfChroma, 6, {})), (Texts{"abcd", "efg"}));
}

TEST(NativeFrames, OfBitsBeginAtTheirLowestBit) {
    // Three frames of 3 x 3 bits run on: 27 bits, in which only the first of each frame is set.
    const std::vector<unsigned char> runOn = {0x01, 0x02, 0x04, 0x00};
    const PixelShape shape = {
        .rows = 3, .columns = 3, .samplesPerPixel = 1, .bitsAllocated = 1, .frameCount = 3};
    Frames frames;
    const auto native = CutNative(runOn, shape, 0, {});
    std::vector<unsigned char> block(native.BlockBytes());
    ASSERT_TRUE(WalkNative(native, block, frames));
    ASSERT_EQ(frames.frames.size(), 3U);
    for (const auto& frame : frames.frames) {
        EXPECT_EQ(frame.size(), 2U);
        EXPECT_EQ(frame[0], 1);
        EXPECT_EQ(frame[1] & 1, 0);
    }
    // Each frame padded to two bytes of its own.
    const std::vector<unsigned char> padded = {1, 0, 1, 0, 1, 0};
    EXPECT_EQ(NativeTexts(CutNative(padded, shape, 0, {})).size(), 3U);
}

struct OrderCase {
    const char* what;
    MC_VR vr;
    std::uint32_t samplesPerPixel;
    std::uint32_t bitsAllocated;
    std::string stored;
    Texts pixels;  ///< of frames of 1 x 3 pixels, lowest byte first
};

const OrderCase kOrders[] = {
    {"16 bits", MC_VR_OW, 1, 16, "badcfehg", {"abcdef", "gh"}},
    {"8 bits in words", MC_VR_OW, 1, 8, "badcfe", {"abc", "def"}},
    {"8 bits in bytes", MC_VR_OB, 1, 8, "abcdef", {"abc", "def"}},
    {"8 bits, colour in words", MC_VR_OW, 3, 8, "badcfehgji", {"abcdefghi"}},
    {"8 bits, colour in bytes", MC_VR_OB, 3, 8, "abcdefghi", {"abcdefghi"}},
    {"16 bits, colour", MC_VR_OW, 3, 16, "badcfehgjilknmporq", {"abcdefghijklmnopqr"}},
    {"32 bits", MC_VR_OW, 1, 32, "dcbahgfelkji", {"abcdefghijkl"}},
    {"4 samples", MC_VR_OW, 4, 8, "badcfehgjilk", {"abcdefghijkl"}},
};

TEST(NativeFrames, OfBigEndianDataComeOutInThisMachinesOrder) {
    for (const auto& c : kOrders) {
        const PixelShape shape = {.rows = 1,
                                  .columns = 3,
                                  .samplesPerPixel = c.samplesPerPixel,
                                  .bitsAllocated = c.bitsAllocated,
                                  .frameCount = 1};
        const auto order = NativeOrder::Of(true, c.vr, shape);
        EXPECT_EQ(NativeTexts(CutNative(AsBytes(c.stored), shape, 0, order)), c.pixels) << c.what;
    }
}

}  // namespace
}  // namespace quorvex::dicom
