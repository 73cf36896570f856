#include "quorvex/CxDcmParser.h"
#include "tests/codec/rle_frames.h"
#include "tests/support/corpus.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>

namespace quorvex {
namespace {

using test::Bytes;
using test::ImageFacts;
using test::TemporaryFile;

struct Fetched {
    QUORVEX_MESSAGE code;
    Bytes frame;
};

Fetched Fetch(CxDcmParser& parser, int index, unsigned long sourceLength = 0) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    Fetched fetched{parser.GetAFrame(index, data, size, sourceLength), {}};
    if (fetched.code == QVM_SUCCESS) {
        fetched.frame.assign(data, data + size);
    } else {
        EXPECT_EQ(data, nullptr);
    }
    delete[] data;
    return fetched;
}

/// Reads a file and fetches a frame of it, once from the file and once from the object.
void ExpectFrame(const Bytes& file, int index, const Fetched& expected, const std::string& what) {
    CDcmApp app;
    const TemporaryFile onDisk(file);
    for (const int readWholeFile : {0, 1}) {
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), readWholeFile), QVM_SUCCESS)
            << what;
        for (int again = 0; again < 2; ++again) {
            const Fetched fetched = Fetch(parser, index);
            EXPECT_EQ(fetched.code, expected.code) << what << readWholeFile;
            EXPECT_EQ(fetched.frame, expected.frame) << what << readWholeFile;
        }
    }
}

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i + 1);
    return bytes;
}

TEST(FrameAccess, CutsNativeFramesByTheirStoredSize) {
    const ImageFacts two{.rows = 1, .columns = 2, .bits = 16, .frames = "2"};
    const Bytes file = test::NativeFile(test::kExplicitUid, two, Counting(8));
    ExpectFrame(file, 0, {QVM_SUCCESS, {1, 2, 3, 4}}, "first");
    ExpectFrame(file, 1, {QVM_SUCCESS, {5, 6, 7, 8}}, "second");
    ExpectFrame(file, 2, {QVM_ERROR_INVALID_FRAME_INDEX, {}}, "third");
    ExpectFrame(file, -1, {QVM_ERROR_INVALID_FRAME_INDEX, {}}, "negative");
    const ImageFacts none{.rows = 1, .columns = 2, .frames = "0"};
    ExpectFrame(test::NativeFile(test::kExplicitUid, none, Counting(4)), 0,
                {QVM_ERROR_INVALID_FRAME_INDEX, {}}, "no frames");
    const ImageFacts half{.rows = 1,
                          .columns = 2,
                          .bits = 8,
                          .photometric = "YBR_FULL_422",
                          .samples = 3,
                          .frames = "2"};
    ExpectFrame(test::NativeFile(test::kExplicitUid, half, {9, 8, 128, 128, 7, 6, 128, 128}), 1,
                {QVM_SUCCESS, {7, 7, 7, 6, 6, 6}}, "4:2:2");
}

TEST(FrameAccess, AShortFrameGivesWhatIsThere) {
    const ImageFacts two{.rows = 1, .columns = 2, .bits = 16, .frames = "3"};
    const Bytes file = test::ImageFile(test::kExplicitUid, two)
                           .Add(tag::kPixelData, "OW", Counting(6))
                           .Padded(tag::kDataSetTrailingPadding, "OB", "behind the pixels")
                           .Bytes();  // the padding must not come out as a frame
    ExpectFrame(file, 1, {QVM_SUCCESS, {5, 6, 0, 0}}, "cut");
    ExpectFrame(file, 2, {QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, {}}, "missing");
}

TEST(FrameAccess, ByteOrderLeavesNoTrace) {
    struct {
        ImageFacts facts;
        Bytes little;
        Bytes big;
    } const cases[] = {
        {{.rows = 1, .columns = 3, .bits = 16}, {1, 2, 3, 4, 5, 6}, {2, 1, 4, 3, 6, 5}},
        {{.rows = 2, .columns = 3, .bits = 8}, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
        {{.rows = 1, .columns = 2, .bits = 8, .photometric = "RGB", .samples = 3},
         {1, 2, 3, 4, 5, 6},
         {1, 2, 3, 4, 5, 6}},
        {{.rows = 1, .columns = 1, .bits = 16, .photometric = "RGB", .samples = 3},
         {1, 2, 3, 4, 5, 6},
         {2, 1, 4, 3, 6, 5}},
    };
    for (const auto& c : cases) {
        const std::string what = c.facts.photometric + std::to_string(c.facts.bits);
        for (const auto uid : {test::kExplicitUid, test::kImplicitUid}) {
            ExpectFrame(test::NativeFile(uid, c.facts, c.little), 0, {QVM_SUCCESS, c.little}, what);
        }
        ExpectFrame(test::NativeFile(test::kBigEndianUid, c.facts, c.big), 0,
                    {QVM_SUCCESS, c.little}, what);
    }
}

TEST(FrameAccess, JoinsFragments) {
    const ImageFacts facts{.rows = 1, .columns = 6, .bits = 8};
    const Bytes coded = test::JoinSegments({{5, 1, 2, 3, 4, 5, 6, 0}});
    const std::vector<Bytes> fragments = {{coded.begin(), coded.begin() + 30},
                                          {coded.begin() + 30, coded.begin() + 66},
                                          {coded.begin() + 66, coded.end()}};
    const Bytes file = test::EncapsulatedFile(test::kRleUid, facts, fragments);
    ExpectFrame(file, 0, {QVM_SUCCESS, {1, 2, 3, 4, 5, 6}}, "three fragments");

    CDcmApp app;
    CxDcmParser parser;
    const TemporaryFile onDisk(file);
    ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
    unsigned long offset = 0;
    unsigned long size = 0;
    EXPECT_EQ(parser.GetAFrameOffsetSize(0, offset, size), QVM_SUCCESS);
    EXPECT_EQ(size, coded.size());
    EXPECT_EQ(offset, file.size() - 8 - coded.size() - 2 * 8);
    unsigned char* stored = nullptr;
    ASSERT_EQ(parser.GetAFrame(offset, 30, stored), QVM_SUCCESS);
    EXPECT_EQ(Bytes(stored, stored + 30), fragments[0]);
    delete[] stored;
    stored = nullptr;
    for (const auto& [from, count] :
         {std::pair{file.size(), 1UL}, {file.size() + 1, 0UL}, {1UL, ~0UL}, {~0UL, 2UL}}) {
        EXPECT_EQ(parser.GetAFrame(from, count, stored), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
        EXPECT_EQ(stored, nullptr);
    }
    EXPECT_EQ(Fetch(parser, 0, 70).frame, (Bytes{0, 0, 0, 0, 0, 0}));  // the run lacks its bytes
    EXPECT_EQ(Fetch(parser, 0, 1'000'000).frame, (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(FrameAccess, RleColourIsInterleavedWhateverTheHeaderSays) {
    const ImageFacts facts{.rows = 1, .columns = 2, .bits = 16, .photometric = "RGB", .samples = 3};
    const Bytes coded = test::JoinSegments({{1, 0x11, 0x12},
                                            {1, 0x21, 0x22},
                                            {1, 0x31, 0x32},
                                            {1, 0x41, 0x42},
                                            {1, 0x51, 0x52},
                                            {1, 0x61, 0x62}});
    ExpectFrame(
        test::EncapsulatedFile(test::kRleUid, facts, {coded}), 0,
        {QVM_SUCCESS, {0x21, 0x11, 0x41, 0x31, 0x61, 0x51, 0x22, 0x12, 0x42, 0x32, 0x62, 0x52}},
        "16-bit colour");
}

TEST(FrameAccess, CodedBytesNeverPassForPixels) {
    const ImageFacts facts{.rows = 1, .columns = 4, .bits = 8};
    for (const auto uid : {test::kJpegLsUid, test::kExplicitUid}) {
        const Bytes file =
            test::EncapsulatedFile(uid, facts, {{0xFF, 0xD8, 1, 2, 3, 4, 0xFF, 0xD9}});
        CDcmApp app;
        CxDcmParser parser;
        const TemporaryFile onDisk(file);
        ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS) << uid;
        EXPECT_EQ(Fetch(parser, 0).code, QVM_ERROR_FAILED_TO_DECOMPRESS) << uid;
    }
    // Pixels may begin with the bytes of an item tag.
    const Bytes pixels{0xFE, 0xFF, 0x00, 0xE0};
    ExpectFrame(test::NativeFile(test::kExplicitUid, facts, pixels), 0, {QVM_SUCCESS, pixels},
                "tag");
}

TEST(FrameAccess, RefusesHeadersWithoutGeometry) {
    for (const ImageFacts& facts : {ImageFacts{.rows = 0}, ImageFacts{.columns = 0}}) {
        ExpectFrame(test::NativeFile(test::kExplicitUid, facts, Counting(8)), 0,
                    {QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, {}}, "no pixels");
    }
    CxDcmParser parser;
    EXPECT_EQ(parser.GetFrameCount(), 0);
    EXPECT_EQ(Fetch(parser, 0).code, QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

TEST(FrameAccess, ABigClaimCostsNothing) {
    CDcmApp app;
    for (const unsigned bits : {8U, 16U}) {
        for (const char* photometric : {"MONOCHROME2", "RGB"}) {
            const ImageFacts facts{
                .rows = 65535, .columns = 65535, .bits = bits, .photometric = photometric};
            for (const Bytes& file :
                 {test::NativeFile(test::kExplicitUid, facts, Counting(10)),
                  test::EncapsulatedFile(test::kRleUid, facts, {Counting(64)})}) {
                const auto begin = std::chrono::steady_clock::now();
                CxDcmParser parser;
                const TemporaryFile onDisk(file);
                ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
                EXPECT_NE(Fetch(parser, 0).code, QVM_SUCCESS);
                EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
            }
        }
    }
}

TEST(FrameAccess, ParsersWorkSideBySide) {
    const ImageFacts facts{.rows = 16, .columns = 16, .bits = 8, .frames = "40"};
    const Bytes pixels = [] {
        Bytes bytes(40 * 256);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(i / 256);
        return bytes;
    }();
    const TemporaryFile onDisk(test::NativeFile(test::kExplicitUid, facts, pixels));
    const auto work = [&] {
        CDcmApp app;
        for (int round = 0; round < 10; ++round) {
            CxDcmParser parser;
            ASSERT_EQ(parser.Initialize(&app, CString(onDisk.Path()), 0), QVM_SUCCESS);
            for (int i = 39; i >= 0; --i) {
                ASSERT_EQ(Fetch(parser, i).frame, Bytes(256, static_cast<unsigned char>(i)));
            }
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(work);
    threads.clear();
    EXPECT_GE(CxDcmParser::FrameEventCount(), 0);
}

TEST(FrameAccess, RealTwinsGiveOneImage) {
    const std::filesystem::path samples = "/usr/lib/python3/dist-packages/pydicom/data/test_files";
    const std::vector<std::vector<const char*>> twins = {
        {"MR_small.dcm", "MR_small_bigendian.dcm", "MR_small_expb.dcm", "MR_small_implicit.dcm",
         "MR_small_RLE.dcm", "MR_small_jp2klossless.dcm"},
        {"emri_small.dcm", "emri_small_big_endian.dcm", "emri_small_RLE.dcm"},
        {"rtdose.dcm", "rtdose_expb.dcm", "rtdose_rle.dcm"},
        {"SC_rgb_16bit.dcm", "SC_rgb_expb_16bit.dcm", "SC_rgb_rle_16bit.dcm"},
        {"SC_rgb.dcm", "SC_rgb_rle.dcm", "SC_rgb_expb.dcm"},
        {"SC_rgb_32bit.dcm", "SC_rgb_rle_32bit.dcm", "SC_rgb_expb_32bit.dcm"},
    };
    CDcmApp app;
    int compared = 0;
    for (const auto& family : twins) {
        std::vector<Bytes> frames;
        for (const char* name : family) {
            for (const auto& folder : {samples, test::CorpusFolder() / "files"}) {
                CxDcmParser parser;
                if (!std::filesystem::exists(folder / name)) continue;
                ASSERT_EQ(parser.Initialize(&app, CString((folder / name).string()), 0),
                          QVM_SUCCESS);
                const int last = parser.GetFrameCount() - 1;
                const Fetched fetched = Fetch(parser, last);
                EXPECT_EQ(fetched.code, QVM_SUCCESS) << name;
                frames.push_back(fetched.frame);
                EXPECT_TRUE(frames.back() == frames.front()) << name;
                ++compared;
            }
        }
    }
    if (compared == 0) GTEST_SKIP() << "no samples here";
}

}  // namespace
}  // namespace quorvex
