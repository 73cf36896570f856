#include "tests/codec/rle_frames.h"
#include "tests/parser/parsed.h"
#include "tests/support/corpus.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace quorvex {
namespace {

using namespace test;

/// Reads a file and fetches a frame of it, once from the file and once from the object.
void ExpectFrame(const Bytes& file, int index, const Answered& expected, const std::string& what) {
    for (const int readWholeFile : {0, 1}) {
        Parsed parsed(file, readWholeFile);
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << what;
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(FrameOf(parsed.parser, index), expected) << what << readWholeFile;
        }
    }
}

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i + 1);
    return bytes;
}

constexpr ImageFacts kRow{.rows = 1, .columns = 2};
constexpr ImageFacts kTwoFrames{.rows = 1, .columns = 2, .frames = "2"};
constexpr ImageFacts kThreeFrames{.rows = 1, .columns = 2, .frames = "3"};
constexpr ImageFacts kNoFrames{.rows = 1, .columns = 2, .frames = "0"};
constexpr ImageFacts kRgb{.rows = 1, .columns = 2, .bits = 8, .photometric = "RGB", .samples = 3};
constexpr ImageFacts kWideRgb{
    .rows = 1, .columns = 1, .photometric = "RGB", .samples = 3, .frames = "2"};
constexpr ImageFacts kHalfChroma{
    .rows = 1, .columns = 2, .bits = 8, .photometric = "YBR_FULL_422", .samples = 3, .frames = "2"};

struct NativeCase {
    const char* what;
    ImageFacts facts;
    Bytes pixels;
    int index;
    Answered frame;
};

const NativeCase kNative[] = {
    {"one frame without a count", kRow, Counting(4), 0, Done({1, 2, 3, 4})},
    {"first", kTwoFrames, Counting(8), 0, Done({1, 2, 3, 4})},
    {"second", kTwoFrames, Counting(8), 1, Done({5, 6, 7, 8})},
    {"third of two", kTwoFrames, Counting(8), 2, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"negative", kTwoFrames, Counting(8), -1, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"no frames", kNoFrames, Counting(4), 0, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"colour", kRgb, Counting(6), 0, Done(Counting(6))},
    {"16-bit colour", kWideRgb, Counting(12), 1, Done({7, 8, 9, 10, 11, 12})},
    {"4:2:2", kHalfChroma, {9, 8, 128, 128, 7, 6, 128, 128}, 1, Done({7, 7, 7, 6, 6, 6})},
    {"cut", kThreeFrames, Counting(6), 1, Done({5, 6, 0, 0})},
    {"missing", kThreeFrames, Counting(6), 2, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"no rows", {.rows = 0}, Counting(8), 0, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"no columns", {.columns = 0}, Counting(8), 0, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"like an item tag", kRow, {0xFE, 0xFF, 0x00, 0xE0}, 0, Done({0xFE, 0xFF, 0x00, 0xE0})},
};

TEST(FrameAccess, CutsNativeFramesByTheirStoredSize) {
    for (const NativeCase& c : kNative) {
        // What follows short pixels must not come out as some.
        const Bytes file = ImageFile(kExplicitUid, c.facts)
                               .Add(tag::kPixelData, "OW", c.pixels)
                               .Padded(tag::kDataSetTrailingPadding, "OB", "behind the pixels")
                               .Bytes();
        ExpectFrame(file, c.index, c.frame, c.what);
    }
    CxDcmParser parser;
    EXPECT_EQ(parser.GetFrameCount(), 0);
    EXPECT_EQ(FrameOf(parser), Refused(QVM_ERROR_FAILED_TO_PARSE_DICOM));
}

/// The bytes of each word of `wordBytes`, highest first.
Bytes Swapped(Bytes bytes, std::size_t wordBytes) {
    for (std::size_t at = 0; at + wordBytes <= bytes.size(); at += wordBytes) {
        const auto word = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        std::reverse(word, word + static_cast<std::ptrdiff_t>(wordBytes));
    }
    return bytes;
}

struct OrderCase {
    const char* what;
    ImageFacts facts;
    const char* vr;
    std::size_t wordBytes;  ///< of big-endian data
    std::size_t cut = 0;    ///< bytes that the last frame lacks
};

const OrderCase kOrders[] = {
    {"bits", {.rows = 3, .columns = 3, .bits = 1, .frames = "3"}, "OW", 2},
    {"bytes in bytes", {.rows = 3, .columns = 3, .bits = 8}, "OB", 1},
    {"bytes in words", {.rows = 2, .columns = 3, .bits = 8}, "OW", 2},
    {"odd frames in words", {.rows = 1, .columns = 3, .bits = 8, .frames = "2"}, "OW", 2},
    {"words", {.rows = 1, .columns = 3, .frames = "3"}, "OW", 2},
    {"words, cut", {.rows = 1, .columns = 3, .frames = "3"}, "OW", 2, 2},
    {"32 bits", {.rows = 1, .columns = 3, .bits = 32, .frames = "2"}, "OW", 4},
    {"colour", kRgb, "OB", 1},
    {"colour in words", kRgb, "OW", 2},
    {"16-bit colour", kWideRgb, "OW", 2},
    {"4:2:2", kHalfChroma, "OW", 2},
};

TEST(FrameAccess, ByteOrderLeavesNoTrace) {
    for (const OrderCase& c : kOrders) {
        const bool isHalf = std::string(c.facts.photometric).ends_with("422");
        const std::size_t samples = (isHalf ? 2 : c.facts.samples) * c.facts.rows * c.facts.columns;
        const int frames = c.facts.frames == nullptr ? 1 : std::stoi(c.facts.frames);
        const std::size_t bits = samples * c.facts.bits * static_cast<std::size_t>(frames);
        const Bytes little = Counting((bits + 15) / 16 * 2 - c.cut);
        const auto fileOf = [&](std::string_view uid, const Bytes& stored) {
            return ImageFile(uid, c.facts).Add(tag::kPixelData, c.vr, stored).Bytes();
        };
        const Bytes big = fileOf(kBigEndianUid, Swapped(little, c.wordBytes));
        const int last = frames - 1;
        Parsed twin(fileOf(kExplicitUid, little));
        const Answered frame = FrameOf(twin.parser, last);
        EXPECT_EQ(frame.code, QVM_SUCCESS) << c.what;
        ExpectFrame(fileOf(kImplicitUid, little), last, frame, c.what);
        ExpectFrame(big, last, frame, c.what);
        Parsed swapped(big);
        for (const unsigned long length : {1UL, 2UL, 3UL, 1000UL}) {
            EXPECT_EQ(FrameOf(swapped.parser, last, length), FrameOf(twin.parser, last, length))
                << c.what << ", the first " << length;
        }
    }
    // The first byte of a big-endian word is its high one.
    ExpectFrame(ImageFile(kBigEndianUid, kRow).Add(tag::kPixelData, "OW", Bytes{2, 1, 4}).Bytes(),
                0, Done({1, 2, 0, 4}), "a word of one byte");
}

TEST(FrameAccess, JoinsFragments) {
    const Bytes coded = JoinSegments({{5, 1, 2, 3, 4, 5, 6, 0}});
    const std::vector<Bytes> fragments = {{coded.begin(), coded.begin() + 30},
                                          {coded.begin() + 30, coded.begin() + 66},
                                          {coded.begin() + 66, coded.end()}};
    const Bytes file = EncapsulatedFile(kRleUid, {.rows = 1, .columns = 6, .bits = 8}, fragments);
    ExpectFrame(file, 0, Done({1, 2, 3, 4, 5, 6}), "three fragments");

    Parsed parsed(file);
    const Place place = PlaceOf(parsed.parser);
    EXPECT_EQ(place.code, QVM_SUCCESS);
    EXPECT_EQ(place.size, coded.size());
    EXPECT_EQ(place.offset, file.size() - 8 - coded.size() - 2 * 8);
    const auto stored = [&](unsigned long offset, unsigned long size) {
        unsigned char* block = nullptr;
        const auto code = parsed.parser.GetAFrame(offset, size, block);
        return Answered::Take(code, block, size);
    };
    EXPECT_EQ(stored(place.offset, 30), Done(fragments[0]));
    for (const auto& [from, count] :
         {std::pair{file.size(), 1UL}, {file.size() + 1, 0UL}, {1UL, ~0UL}, {~0UL, 2UL}}) {
        EXPECT_EQ(stored(from, count), Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)) << from;
    }
    EXPECT_EQ(FrameOf(parsed.parser, 0, 70), Done(Bytes(6)));  // the run lacks its bytes
    EXPECT_EQ(FrameOf(parsed.parser, 0, 1'000'000), Done({1, 2, 3, 4, 5, 6}));
}

TEST(FrameAccess, RleColourIsInterleavedWhateverTheHeaderSays) {
    const Bytes coded = JoinSegments({{1, 0x11, 0x12},
                                      {1, 0x21, 0x22},
                                      {1, 0x31, 0x32},
                                      {1, 0x41, 0x42},
                                      {1, 0x51, 0x52},
                                      {1, 0x61, 0x62}});
    const ImageFacts facts{.rows = 1, .columns = 2, .photometric = "RGB", .samples = 3};
    ExpectFrame(EncapsulatedFile(kRleUid, facts, {coded}), 0,
                Done({0x21, 0x11, 0x41, 0x31, 0x61, 0x51, 0x22, 0x12, 0x42, 0x32, 0x62, 0x52}),
                "16-bit colour");
}

TEST(FrameAccess, CodedBytesNeverPassForPixels) {
    for (const auto uid : {kJpegLsUid, kExplicitUid}) {
        Parsed parsed(EncapsulatedFile(uid, {.rows = 1, .columns = 4, .bits = 8},
                                       {{0xFF, 0xD8, 1, 2, 3, 4, 0xFF, 0xD9}}));
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << uid;
        EXPECT_EQ(FrameOf(parsed.parser), Refused(QVM_ERROR_FAILED_TO_DECOMPRESS)) << uid;
    }
}

TEST(FrameAccess, ABigClaimCostsNothing) {
    for (const unsigned bits : {8U, 16U}) {
        for (const char* photometric : {"MONOCHROME2", "RGB"}) {
            const ImageFacts facts{
                .rows = 65535, .columns = 65535, .bits = bits, .photometric = photometric};
            for (const Bytes& file : {NativeFile(kExplicitUid, facts, Counting(10)),
                                      EncapsulatedFile(kRleUid, facts, {Counting(64)})}) {
                const auto begin = std::chrono::steady_clock::now();
                Parsed parsed(file);
                ASSERT_EQ(parsed.code, QVM_SUCCESS);
                EXPECT_NE(FrameOf(parsed.parser).code, QVM_SUCCESS);
                EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
            }
        }
    }
}

TEST(FrameAccess, ParsersWorkSideBySide) {
    constexpr int kFrames = 40;
    Bytes pixels(kFrames * 256);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i / 256);
    const ImageFacts facts{.rows = 16, .columns = 16, .bits = 8, .frames = "40"};
    const TemporaryFile onDisk(NativeFile(kExplicitUid, facts, pixels));
    const auto work = [&] {
        CDcmApp app;
        for (int round = 0; round < 10; ++round) {
            CxDcmParser parser;
            ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
            for (int i = kFrames - 1; i >= 0; --i) {
                ASSERT_EQ(FrameOf(parser, i), Done(Bytes(256, static_cast<unsigned char>(i))));
            }
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(work);
    threads.clear();
    EXPECT_GE(CxDcmParser::FrameEventCount(), 0);
}

using Names = std::vector<const char*>;

const std::vector<Names> kTwins = {
    {"MR_small.dcm", "MR_small_bigendian.dcm", "MR_small_expb.dcm", "MR_small_implicit.dcm",
     "MR_small_RLE.dcm", "MR_small_jp2klossless.dcm"},
    {"emri_small.dcm", "emri_small_big_endian.dcm", "emri_small_RLE.dcm"},
    {"rtdose.dcm", "rtdose_expb.dcm", "rtdose_rle.dcm"},
    {"SC_rgb_16bit.dcm", "SC_rgb_expb_16bit.dcm", "SC_rgb_rle_16bit.dcm"},
    {"SC_rgb.dcm", "SC_rgb_rle.dcm", "SC_rgb_expb.dcm"},
    {"SC_rgb_32bit.dcm", "SC_rgb_rle_32bit.dcm", "SC_rgb_expb_32bit.dcm"},
};

TEST(FrameAccess, RealTwinsGiveOneImage) {
    const std::filesystem::path samples = "/usr/lib/python3/dist-packages/pydicom/data/test_files";
    int compared = 0;
    for (const Names& family : kTwins) {
        Bytes first;
        for (const char* name : family) {
            for (const auto& folder : {samples, CorpusFolder() / "files"}) {
                if (!std::filesystem::exists(folder / name)) continue;
                CDcmApp app;
                CxDcmParser parser;
                const CString path((folder / name).string());
                ASSERT_EQ(parser.Initialize(&app, path, 0), QVM_SUCCESS) << name;
                const Answered frame = FrameOf(parser, parser.GetFrameCount() - 1);
                EXPECT_EQ(frame.code, QVM_SUCCESS) << name;
                if (first.empty()) first = frame.bytes;
                EXPECT_TRUE(frame.bytes == first) << name;
                ++compared;
            }
        }
    }
    if (compared == 0) GTEST_SKIP() << "no samples here";
}

}  // namespace
}  // namespace quorvex
