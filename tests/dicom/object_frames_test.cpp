#include "tests/dicom/pixel_frames.h"
#include "tests/support/corpus.h"
#include "tests/support/memory_file.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using Texts = std::vector<std::string>;

/// A file's bytes, and its header as a parser reads it.
struct OpenFile {
    test::MemoryFile file;
    CDcmObject header;
    unsigned long pixelDataOffset = 0;
};

std::string PathOf(const char* name) {
    return (test::CorpusFolder() / "files" / name).string();
}

/// Null where the file is missing or cannot be read.
std::unique_ptr<OpenFile> Opened(const char* name) {
    auto open = std::make_unique<OpenFile>();
    open->file.bytes = test::BytesOfFile(PathOf(name));
    const auto result =
        test::ReadUpTo(open->header, open->file, test::kUpToPixelData, &open->pixelDataOffset);
    return result == kDcmSuccess ? std::move(open) : nullptr;
}

/// Joins the pieces of each frame as the events say.
struct Joined {
    Texts frames;
    std::string offsetTable;
    bool isBegun = false;
    bool isOpen = false;
};

MC_STATUS JoinPiece(int item, unsigned long length, unsigned char* data, int skip, int event,
                    void* user) {
    auto& joined = *static_cast<Joined*>(user);
    if (event == kPixelWalkBegins) {
        joined.isBegun = true;
    } else if (event == kPixelFrameEnds) {
        joined.isOpen = false;
    } else if (item == 0 && skip == 0) {
        joined.offsetTable.assign(data, data + length);
    } else {
        if (!joined.isOpen) joined.frames.emplace_back();
        joined.isOpen = true;
        joined.frames.back().append(data, data + length);
    }
    return kMcContinue;
}

Joined WalkFile(OpenFile& open, unsigned long frameSize) {
    const auto begin = open.pixelDataOffset + open.header.PixelDataHeaderLength();
    auto& bytes = open.file.bytes;
    unsigned char* scratch = nullptr;
    Joined joined;
    EXPECT_EQ(open.header.GetValueEx(&scratch, bytes.size() - begin, bytes.data() + begin, 1, 0,
                                     frameSize, &joined, JoinPiece),
              kDcmSuccess);
    delete[] scratch;
    EXPECT_TRUE(joined.isBegun);
    EXPECT_FALSE(joined.isOpen);
    return joined;
}

Texts WalkObject(const char* name) {
    CDcmObject object;
    EXPECT_TRUE(test::ReadWhole(object, PathOf(name))) << name;
    return test::StoredFrames(object);
}

struct Frames {
    Texts ofBuffer;
    Texts ofObject;
};

Frames FetchNative(const char* name) {
    const auto open = Opened(name);
    if (open == nullptr) return {};
    const auto number = [&](std::uint32_t tag) {
        return static_cast<unsigned long>(Read<unsigned int>(open->header, tag).value_or(0));
    };
    const auto size = number(tag::kRows) * number(tag::kColumns) * number(tag::kSamplesPerPixel) *
                      number(tag::kBitsAllocated) / 8;
    Frames frames = {WalkFile(*open, size).frames, WalkObject(name)};
    const auto count = Read<int>(open->header, tag::kNumberOfFrames).value_or(1);
    for (auto* texts : {&frames.ofBuffer, &frames.ofObject})
        texts->resize(static_cast<std::size_t>(count));
    return frames;
}

struct Pair {
    const char* littleEndian;
    const char* bigEndian;
};

constexpr Pair kPairs[] = {
    {"MR_small.dcm", "MR_small_expb.dcm"},
    {"MR_small.dcm", "MR_small_bigendian.dcm"},
    {"emri_small.dcm", "emri_small_big_endian.dcm"},
    {"rtdose.dcm", "rtdose_expb.dcm"},
    {"SC_rgb_16bit.dcm", "SC_rgb_expb_16bit.dcm"},
    {"SC_rgb_small_odd.dcm", "SC_rgb_small_odd_big_endian.dcm"},
    {"liver_1frame.dcm", "liver_expb_1frame.dcm"},
};

TEST(ObjectFrames, ABigEndianFileGivesThePixelsOfItsLittleEndianTwin) {
    if (test::CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    for (const auto& pair : kPairs) {
        const auto little = FetchNative(pair.littleEndian);
        const auto big = FetchNative(pair.bigEndian);
        ASSERT_FALSE(little.ofBuffer.empty()) << pair.littleEndian;
        EXPECT_TRUE(big.ofBuffer == little.ofBuffer) << pair.bigEndian;
        EXPECT_TRUE(big.ofObject == little.ofBuffer) << pair.bigEndian;
        EXPECT_TRUE(little.ofObject == little.ofBuffer) << pair.littleEndian;
    }
}

struct FragmentedFile {
    const char* name;
    std::size_t frames;
};

constexpr FragmentedFile kFragmentedFiles[] = {
    {"IM00001.fragmented_no_bot_jpeg_baseline.50.dcm", 8},
    {"CT0012.fragmented_no_bot_jpeg_lossless.70.dcm", 2},
    {"CT0012.fragmented_no_bot_jpeg_lossless.57.dcm", 2},
    {"D_CLUNIE_CT1_RLE_FRAGS.dcm", 1},
    {"emri_small_RLE.dcm", 10},
    {"emri_small_jpeg_2k_lossless.dcm", 10},
};

TEST(ObjectFrames, BufferAndObjectGiveTheSameFrames) {
    if (test::CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    for (const auto& c : kFragmentedFiles) {
        const auto file = Opened(c.name);
        ASSERT_NE(file, nullptr) << c.name;
        const auto joined = WalkFile(*file, 0);
        EXPECT_EQ(joined.frames.size(), c.frames) << c.name;
        EXPECT_TRUE(joined.frames == WalkObject(c.name)) << c.name;
    }
}

TEST(ObjectFrames, ReservedKeepsBigEndianPiecesInTheBuffer) {
    CDcmObject object;
    object.SetTransferSyntax(kExplicitBigEndian);
    object.SetValue(tag::kBitsAllocated, static_cast<unsigned short>(16));
    unsigned char value[] = {1, 2, 3, 4};
    unsigned char* scratch = nullptr;
    Joined joined;
    EXPECT_EQ(object.GetValueEx(&scratch, 4, value, 1, 1, 2, &joined, JoinPiece), kDcmSuccess);
    EXPECT_EQ(scratch, nullptr);
    EXPECT_EQ(joined.frames, (Texts{"\1\2", "\3\4"}));
    joined = {};
    EXPECT_EQ(object.GetValueEx(&scratch, 4, value, 1, 0, 2, &joined, JoinPiece), kDcmSuccess);
    EXPECT_EQ(joined.frames, (Texts{"\2\1", "\4\3"}));
    delete[] scratch;
}

TEST(ObjectFrames, NativeWordsMayLookLikeAnItemTag) {
    CDcmObject object;
    object.SetTransferSyntax(kExplicitLittleEndian);
    unsigned char value[] = {0xFE, 0xFF, 0x00, 0xE0, 2, 0, 0, 0, 9, 9, 7, 7};
    Joined joined;
    EXPECT_EQ(object.GetValueEx(nullptr, sizeof value, value, 1, 0, 6, &joined, JoinPiece),
              kDcmSuccess);
    EXPECT_EQ(joined.frames.size(), 2U);
}

MC_STATUS RefusePiece(int item, unsigned long, unsigned char*, int, int event, void*) {
    return item > 0 && event == 0 ? kMcRefuse : kMcContinue;
}

TEST(ObjectFrames, UnusableCallsFail) {
    const CDcmObject object;
    unsigned char value[] = {0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 0};
    Joined joined;
    EXPECT_NE(object.GetValueEx(nullptr, 8, nullptr, 1, 0, 0, &joined, JoinPiece), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(nullptr, 0, value, 1, 0, 0, &joined, JoinPiece), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(nullptr, 8, value, 1, 0, 0, nullptr, nullptr), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(nullptr, 8, value, 1, 0, 0, &joined, JoinPiece), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(nullptr, 4, value, 1, 0, 2, &joined, RefusePiece), kDcmSuccess);
    EXPECT_NE(object.GetValueEx(tag::kPixelData, &joined, test::JoinItem), kDcmSuccess);
}

struct NameCase {
    const char* file;
    const char* name;
};

constexpr NameCase kNames[] = {
    {"chrArab.dcm", "قباني^لنزار"},
    {"chrFrenMulti.dcm", "Buc^Jérôme"},
    {"chrGerm.dcm", "Äneas^Rüdiger"},
    {"chrGreek.dcm", "Διονυσιος"},
    {"chrH31.dcm", "Yamada^Tarou=山田^太郎=やまだ^たろう"},
    {"chrH32.dcm", "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎=やまだ^たろう"},
    {"chrHbrw.dcm", "שרון^דבורה"},
    {"chrI2.dcm", "Hong^Gildong=洪^吉洞=홍^길동"},
    {"chrJapMulti.dcm", "やまだ^たろう"},
    {"chrJapMultiExplicitIR6.dcm", "やまだ^たろう"},
    {"chrKoreanMulti.dcm", "김희중"},
    {"chrRuss.dcm", "Люкceмбypг"},
    {"chrX1.dcm", "Wang^XiaoDong=王^小東="},
    {"chrX2.dcm", "Wang^XiaoDong=王^小东="},
    {"chrGB2312.dcm", "Zhang^XiaoDong=张^小东="},
    {"GH1301.dcm", "Wang^XiaoDong=王^小东="},
    {"MarekLatin2.dcm", "Testowy^Teste"},
    {"Issue56-NoPixelData.dcm", "Гусева Е.Н^Амур"},
};

TEST(Text, OfRealFilesIsDecoded) {
    if (test::CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    for (const auto& c : kNames) {
        const auto file = Opened(c.file);
        ASSERT_NE(file, nullptr) << c.file;
        EXPECT_EQ(Read<CString>(file->header, tag::kPatientName), CString(c.name)) << c.file;
    }
}

}  // namespace
}  // namespace quorvex
