#include "foundation/dicom/frames/pixel_walk.h"

#include "tests/dicom/pixel_frames.h"
#include "tests/support/dicom_builder.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

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

/// The header of an item that claims a length.
std::string Header(std::uint32_t length) {
    return test::DicomBuilder().Item(length).Text();
}
std::string Item(const std::string& content) {
    return Header(static_cast<std::uint32_t>(content.size())) + content;
}

const std::string kDelimiter = test::DicomBuilder().EndSequence().Text();
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

const std::string kTable = Item("");
const WalkCase kWalks[] = {
    {"two frames", kTable + Item("ab") + Item("cd") + kDelimiter, 2, {"ab", "cd"}},
    {"no delimiter", kTable + Item("ab") + Item("cd"), 2, {"ab", "cd"}},
    {"a delimiter among pixels",
     kTable + Item(kDelimiter + "b") + kDelimiter,
     1,
     {kDelimiter + "b"}},
    {"something behind the delimiter", kTable + Item("ab") + kDelimiter + Item("xx"), 1, {"ab"}},
    {"something else for a delimiter", kTable + Item("ab") + "\xFC\xFF\xFC\xFF    ", 1, {"ab"}},
    {"a length past the end", kTable + Item("ab") + Header(500) + "cd", 2, {"ab", "cd"}},
    {"the longest length", kTable + Header(0xFFFFFFFF) + "cd", 1, {"cd"}},
    {"half an item header", kTable + Item("ab") + Header(9).substr(0, 5), 1, {"ab"}},
    {"an empty fragment", kTable + Item("ab") + Item("") + Item("cd") + kDelimiter, 1, {"abcd"}},
    {"no offset table item", Item(kStart + "ab") + Item("cd") + kDelimiter, 1, {kStart + "abcd"}},
    {"nothing but a table", kTable, 1, {}},
    {"nothing", "", 1, {}},
};

TEST(PixelWalk, FollowsTheLengthsOfItems) {
    for (const auto& c : kWalks) EXPECT_EQ(WalkedFrames(c.value, c.frameCount), c.frames) << c.what;
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
    const PixelShape halfChroma{1, 2, 3, 8, 1, true};
    EXPECT_EQ(NativeTexts(CutNative(bytes.first(7), halfChroma, 6, {})), (Texts{"abcd", "efg"}));
}

const struct {
    const char* what;
    PixelShape shape;  ///< rows, columns, samples, bits, frames
    Texts frames;
    std::vector<unsigned char> stored;
} kBits[] = {
    {"run on", {3, 3, 1, 1, 3}, {{1, 0}, {1, 0}, {1, 0}}, {0x01, 0x02, 0x04, 0x00}},
    {"run on, not made even", {3, 3, 1, 1, 2}, {"\xFF\1", "\xFF\1"}, {0xFF, 0xFF, 0x03}},
    {"one frame", {3, 3, 1, 1, 1}, {"\xFF\1"}, {0xFF, 0x01}},
    {"no count", {3, 3, 1, 1, 0}, {"\xFF\1"}, {0xFF, 0xFF}},
    {"cut within a frame", {3, 3, 1, 1, 4}, {"\xFF\1", "\x7F"}, {0xFF, 0xFF}},
    {"bytes of their own", {3, 3, 1, 1, 3}, {{1, 0}, {1, 0}, {1, 0}}, {1, 0, 1, 0, 1, 0}},
    {"whole bytes", {2, 4, 1, 1, 2}, {"a", "b"}, {'a', 'b'}},
    {"12 bits", {1, 1, 1, 12, 2}, {"\x34\2", "\x56\1"}, {0x34, 0x62, 0x15}},
};

TEST(NativeFrames, OfBitsBeginAtTheirLowestBit) {
    for (const auto& c : kBits) {
        const std::size_t bits =
            std::size_t{c.shape.rows} * c.shape.columns * c.shape.bitsAllocated;
        for (const std::size_t frameBytes : {std::size_t{0}, bits / 8, (bits + 7) / 8})
            EXPECT_EQ(NativeTexts(CutNative(c.stored, c.shape, frameBytes, {})), c.frames)
                << c.what << frameBytes;
    }
}

/// Joins the pieces of each frame as the events say.
MC_STATUS JoinPiece(int, unsigned long length, unsigned char* data, int, int event, void* user) {
    auto& frames = *static_cast<Texts*>(user);
    if (event == kPixelWalkBegins) frames.assign(1, "");
    if (event == kPixelFrameEnds) frames.emplace_back();
    if (event == 0) frames.at(frames.size() - 1).append(data, data + length);
    return kMcContinue;
}
MC_STATUS RefusePiece(int item, unsigned long, unsigned char*, int, int event, void*) {
    return item > 0 && event == 0 ? kMcRefuse : kMcContinue;
}

TEST(ObjectWalk, LeavesBigEndianPiecesAsTheyAreOnlyWhereAsked) {
    CDcmObject object;
    unsigned char value[] = {1, 2, 3, 4};
    Texts frames;
    unsigned char* scratch = nullptr;
    const auto walk = [&](int reserved, auto callback) {
        frames.clear();
        delete[] std::exchange(scratch, nullptr);
        return object.GetValueEx(&scratch, 4, value, 1, reserved, 2, &frames, callback);
    };
    object.SetTransferSyntax(kExplicitBigEndian);
    object.SetValue(tag::kBitsAllocated, static_cast<unsigned short>(16));
    EXPECT_EQ(walk(1, JoinPiece), kDcmSuccess);
    EXPECT_EQ(scratch, nullptr);
    EXPECT_EQ(frames, (Texts{"\1\2", "\3\4", ""}));
    EXPECT_EQ(walk(0, JoinPiece), kDcmSuccess);
    EXPECT_EQ(frames, (Texts{"\2\1", "\4\3", ""}));
    EXPECT_NE(walk(0, RefusePiece), kDcmSuccess);
    EXPECT_NE(walk(0, PixelWalkCallback{}), kDcmSuccess);
    delete[] std::exchange(scratch, nullptr);
    EXPECT_NE(object.GetValueEx(&scratch, 0, value, 1, 0, 2, &frames, JoinPiece), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(tag::kPixelData, &frames, test::JoinItem), kDcmSuccess);
    unsigned char item[] = {0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 0};
    EXPECT_NE(CDcmObject().GetValueEx(nullptr, 8, item, 1, 0, 0, &frames, JoinPiece), kDcmSuccess);
    delete[] scratch;
}

}  // namespace
}  // namespace quorvex::dicom
