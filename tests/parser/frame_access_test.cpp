#include "tests/codec/rle_frames.h"
#include "tests/parser/parsed.h"
#include "tests/support/corpus.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <numeric>
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
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

const Bytes kItem = {0xFE, 0xFF, 0x00, 0xE0, 2, 0, 0, 0, 9, 9, 7, 7};

/// Two pixels of a row, unless told otherwise.
constexpr ImageFacts Row(const char* frames = nullptr, unsigned columns = 2, unsigned bits = 16) {
    return {.rows = 1, .columns = columns, .bits = bits, .frames = frames};
}
constexpr ImageFacts Colour(const char* photometric, unsigned columns, unsigned bits,
                            const char* frames = nullptr, unsigned samples = 3) {
    return {1, columns, bits, photometric, samples, frames};
}
constexpr ImageFacts kRgb = Colour("RGB", 2, 8);
constexpr ImageFacts kWideRgb = Colour("RGB", 1, 16, "2");
constexpr ImageFacts kHalfChroma = Colour("YBR_FULL_422", 2, 8, "2");

const struct {
    const char* what;
    ImageFacts facts;
    Bytes pixels;
    int index;
    Answered frame;
} kNative[] = {
    {"one frame without a count", Row(), Counting(4), 0, Done({1, 2, 3, 4})},
    {"first", Row("2"), Counting(8), 0, Done({1, 2, 3, 4})},
    {"second", Row("2"), Counting(8), 1, Done({5, 6, 7, 8})},
    {"third of two", Row("2"), Counting(8), 2, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"negative", Row("2"), Counting(8), -1, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"no frames", Row("0"), Counting(4), 0, Refused(QVM_ERROR_INVALID_FRAME_INDEX)},
    {"colour", kRgb, Counting(6), 0, Done(Counting(6))},
    {"16-bit colour", kWideRgb, Counting(12), 1, Done({7, 8, 9, 10, 11, 12})},
    {"4:2:2", kHalfChroma, {9, 8, 128, 128, 7, 6, 128, 128}, 1, Done({7, 7, 7, 6, 6, 6})},
    {"cut", Row("3"), Counting(6), 1, Done({5, 6, 0, 0})},
    {"missing", Row("3"), Counting(6), 2, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"no rows", {.rows = 0}, Counting(8), 0, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"no columns", {.columns = 0}, Counting(8), 0, Refused(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)},
    {"like an item", Row("2", 3), kItem, 1, Done({0, 0, 9, 9, 7, 7})},
    {"like an item tag", Row(), {0xFE, 0xFF, 0x00, 0xE0}, 0, Done({0xFE, 0xFF, 0x00, 0xE0})},
};

TEST(FrameAccess, CutsNativeFramesByTheirStoredSize) {
    for (const auto& c : kNative) {
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

const struct {
    const char* what;
    ImageFacts facts;
    const char* vr;
    std::size_t wordBytes;  ///< of big-endian data
    std::size_t cut = 0;    ///< bytes that the last frame lacks
} kOrders[] = {
    {"bits", {.rows = 3, .columns = 3, .bits = 1, .frames = "3"}, "OW", 2},
    {"bytes in bytes", Row(nullptr, 9, 8), "OB", 1},
    {"bytes in words", Row(nullptr, 6, 8), "OW", 2},
    {"odd frames in words", Row("2", 3, 8), "OW", 2},
    {"words", Row("3", 3), "OW", 2},
    {"words, cut", Row("3", 3), "OW", 2, 2},
    {"32 bits", Row("2", 3, 32), "OW", 4},
    {"four samples", Colour(nullptr, 3, 8, nullptr, 4), "OW", 2},
    {"colour", kRgb, "OB", 1},
    {"colour in words", kRgb, "OW", 2},
    {"16-bit colour", kWideRgb, "OW", 2},
    {"4:2:2", kHalfChroma, "OW", 2},
};

TEST(FrameAccess, ByteOrderLeavesNoTrace) {
    for (const auto& c : kOrders) {
        const bool isHalf = std::string(c.what) == "4:2:2";
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
    ExpectFrame(ImageFile(kBigEndianUid, Row()).Add(tag::kPixelData, "OW", Bytes{2, 1, 4}).Bytes(),
                0, Done({1, 2, 0, 4}), "a word of one byte");
}

/// Frames of 3 x 3 bits, one behind the other: bits 0 to 8, 9 to 17 and so on up to the ninth.
TEST(FrameAccess, FramesOfBitsBeginInsideBytes) {
    const Bytes stored = {0xFF, 0x55, 0x01, 0, 0, 0, 0, 0, 0, 0xFF, 0x01, 0};
    const ImageFacts facts{.rows = 3, .columns = 3, .bits = 1, .frames = "9"};
    const Bytes file = ImageFile(kExplicitUid, facts).Add(tag::kPixelData, "OW", stored).Bytes();
    const auto frame = [](unsigned char first, unsigned char second) {
        return Done({first, second, 0, 0, 0, 0, 0, 0, 0});
    };
    ExpectFrame(file, 0, frame(0xFF, 1), "all bits");
    ExpectFrame(file, 1, frame(0xAA, 0), "every other bit");
    ExpectFrame(file, 8, frame(0xFF, 1), "at a byte again");
    Parsed parsed(file);
    EXPECT_EQ(PlaceOf(parsed.parser, 1).code, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    const Place first = PlaceOf(parsed.parser, 0);
    const Place ninth = PlaceOf(parsed.parser, 8);
    EXPECT_EQ(first.size, 2U);
    EXPECT_EQ(ninth.size, 2U);
    EXPECT_EQ(ninth.offset, first.offset + 9);
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
    const Bytes coded = JoinSegments(
        {{1, 11, 12}, {1, 21, 22}, {1, 31, 32}, {1, 41, 42}, {1, 51, 52}, {1, 61, 62}});
    ExpectFrame(EncapsulatedFile(kRleUid, Colour("RGB", 2, 16), {coded}), 0,
                Done({21, 11, 41, 31, 61, 51, 22, 12, 42, 32, 62, 52}), "16-bit colour");
}

TEST(FrameAccess, CodedBytesNeverPassForPixels) {
    for (const auto uid : {kVideoUid, kExplicitUid}) {
        Parsed parsed(EncapsulatedFile(uid, {.rows = 1, .columns = 4, .bits = 8},
                                       {{0xFF, 0xD8, 1, 2, 3, 4, 0xFF, 0xD9}}));
        ASSERT_EQ(parsed.code, QVM_SUCCESS) << uid;
        EXPECT_EQ(FrameOf(parsed.parser), Refused(QVM_ERROR_FAILED_TO_DECOMPRESS)) << uid;
    }
}

constexpr unsigned kFrames = 40;
constexpr ImageFacts kManyFrames{.rows = 8, .columns = 8, .bits = 8, .frames = "40"};

/// Frames that each hold one value, which tells the frame, and the first of which tells the file.
Bytes Native(unsigned first) {
    Bytes pixels;
    for (unsigned i = 0; i < kFrames; ++i)
        pixels.insert(pixels.end(), 64, static_cast<unsigned char>(first + i));
    return NativeFile(kExplicitUid, kManyFrames, pixels);
}

/// Every frame in two fragments, told apart by the RLE headers that the first of them begin with.
Bytes Rle(unsigned first) {
    std::vector<Bytes> fragments;
    for (unsigned i = 0; i < kFrames; ++i) {
        fragments.push_back(JoinSegments({{}}));
        fragments.push_back({257 - 64, static_cast<unsigned char>(first + i)});
    }
    return EncapsulatedFile(kRleUid, kManyFrames, fragments);
}

/// In any order, and again and again.
void ExpectFrames(CxDcmParser& parser, int first, const char* what) {
    for (const int index : {39, 0, 17, 39, 38, 1}) {
        const Bytes frame(64, static_cast<unsigned char>(first + index));
        EXPECT_EQ(FrameOf(parser, index), Done(frame)) << what << index;
    }
    EXPECT_EQ(FrameOf(parser, kFrames), Refused(QVM_ERROR_INVALID_FRAME_INDEX)) << what;
}

TEST(FrameAccess, FollowsTheFileTheHeaderAndTheCopy) {
    for (const auto make : {Native, Rle}) {
        Parsed parsed(make(1));
        ExpectFrames(parsed.parser, 1, "the file ");
        const auto distance = PlaceOf(parsed.parser, 39).offset - PlaceOf(parsed.parser, 0).offset;
        EXPECT_EQ(distance, 39 * (make == Native ? 64U : 64U + 8 + 2 + 8));
        CxDcmParser copy(parsed.parser);
        ASSERT_EQ(parsed.Read(make(101)), QVM_SUCCESS);
        ExpectFrames(parsed.parser, 101, "another file ");
        ExpectFrames(copy, 1, "a copy of the first ");
        copy = parsed.parser;
        ExpectFrames(copy, 101, "a copy of the other ");
        copy.GetHeader()->SetValue(tag::kNumberOfFrames, "39");
        EXPECT_EQ(FrameOf(copy, 38), Done(Bytes(64, 139)));
        EXPECT_EQ(FrameOf(copy, 39), Refused(QVM_ERROR_INVALID_FRAME_INDEX));
    }
}

TEST(FrameAccess, ParsersWorkSideBySide) {
    const Bytes file = Native(1);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 40; ++round) {
                Parsed parsed(file);
                ExpectFrames(parsed.parser, 1, "side by side ");
            }
        });
    }
    threads.clear();
    EXPECT_GE(CxDcmParser::FrameEventCount(), 0);
}

/// Files of one image each, or of one alone: fragments in uneven numbers, without a table.
const std::vector<std::vector<const char*>> kTwins = {
    {"MR_small.dcm", "MR_small_bigendian.dcm", "MR_small_expb.dcm", "MR_small_implicit.dcm",
     "MR_small_RLE.dcm", "MR_small_jp2klossless.dcm"},
    {"emri_small.dcm", "emri_small_big_endian.dcm", "emri_small_RLE.dcm",
     "emri_small_jpeg_2k_lossless.dcm"},
    {"rtdose.dcm", "rtdose_expb.dcm", "rtdose_rle.dcm"},
    {"SC_rgb_16bit.dcm", "SC_rgb_expb_16bit.dcm", "SC_rgb_rle_16bit.dcm"},
    {"SC_rgb.dcm", "SC_rgb_rle.dcm", "SC_rgb_expb.dcm"},
    {"SC_rgb_32bit.dcm", "SC_rgb_rle_32bit.dcm", "SC_rgb_expb_32bit.dcm"},
    {"SC_rgb_small_odd.dcm", "SC_rgb_small_odd_big_endian.dcm"},
    {"liver_1frame.dcm", "liver_expb_1frame.dcm"},
    {"IM00001.fragmented_no_bot_jpeg_baseline.50.dcm"},
    {"CT0012.fragmented_no_bot_jpeg_lossless.70.dcm"},
    {"CT0012.fragmented_no_bot_jpeg_lossless.57.dcm"},
    {"D_CLUNIE_CT1_RLE_FRAGS.dcm"},
};

TEST(FrameAccess, RealTwinsGiveOneImageFromFileAndObject) {
    const std::filesystem::path samples = "/usr/lib/python3/dist-packages/pydicom/data/test_files";
    int compared = 0;
    for (const auto& family : kTwins) {
        Bytes first;
        for (const std::string name : family) {
            for (const auto& path : FilesIn({samples / name, CorpusFolder() / "files" / name})) {
                for (const int readWholeFile : {0, 1}) {
                    Parsed parsed(BytesOfFile(path), readWholeFile);
                    ASSERT_EQ(parsed.code, QVM_SUCCESS) << name;
                    const auto frame = FrameOf(parsed.parser, parsed.parser.GetFrameCount() - 1);
                    EXPECT_EQ(frame.code, QVM_SUCCESS) << name;
                    if (first.empty()) first = frame.bytes;
                    EXPECT_TRUE(frame.bytes == first) << name;
                    ++compared;
                }
            }
        }
    }
    if (compared == 0) GTEST_SKIP() << "no samples here";
}

}  // namespace
}  // namespace quorvex
