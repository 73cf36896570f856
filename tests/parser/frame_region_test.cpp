// Parts of frames are the same samples as the whole frame has there, whatever the coding and
// however little is read or decoded for them.
#include "quorvex/Attributes.h"
#include "tests/parser/parsed.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/corpus.h"
#include "tests/support/host_source.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorvex {
namespace {

using namespace test;

Answered RegionOf(CxDcmParser& parser, const CRect& region, int level = 0, int frame = 0) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto code = parser.GetAFrameRegion(frame, region, level, data, size);
    return Answered::Take(code, data, size);
}

Answered WholeOf(CxDcmParser& parser, int frame = 0) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto code = parser.GetAFrameUnpacked(frame, data, size);
    return Answered::Take(code, data, size);
}

Answered Cropped(const Answered& whole, CSize size, const CRect& region) {
    const auto width = static_cast<std::size_t>(size.cx);
    const std::size_t pixelBytes = whole.bytes.size() / (width * static_cast<std::size_t>(size.cy));
    Answered part{whole.code, {}};
    for (int y = region.top; y < region.bottom; ++y) {
        const auto from = whole.bytes.begin() +
                          static_cast<std::ptrdiff_t>((static_cast<std::size_t>(y) * width +
                                                       static_cast<std::size_t>(region.left)) *
                                                      pixelBytes);
        const auto count = static_cast<std::size_t>(region.Width()) * pixelBytes;
        part.bytes.insert(part.bytes.end(), from, from + static_cast<std::ptrdiff_t>(count));
    }
    return part;
}

std::vector<CRect> RegionsOf(CSize size) {
    const auto [cx, cy] = size;
    std::vector<CRect> regions = {{0, 0, 1, 1}, {cx - 1, cy - 1, cx, cy}, {0, 0, cx, cy}};
    if (cx > 2 && cy > 2) {
        regions.push_back({cx / 3, cy / 3, cx / 3 + cx / 2, cy / 3 + cy / 2});
        regions.push_back({0, cy / 2, cx, cy / 2 + 1});
    }
    return regions;
}

CSize SizeOf(const CxDcmParser& parser) {
    const CDcmObject& header = *parser.GetHeader();
    return {Read<int>(header, tag::kColumns).value_or(0),
            Read<int>(header, tag::kRows).value_or(0)};
}

void ExpectPartsOfWhole(CxDcmParser& parser, const std::string& what) {
    const CSize size = SizeOf(parser);
    const Answered whole = WholeOf(parser);
    if (whole.code != QVM_SUCCESS) return;
    for (const CRect& region : RegionsOf(size))
        EXPECT_EQ(RegionOf(parser, region), Cropped(whole, size, region))
            << what << ' ' << region.left << ' ' << region.top;
}

TEST(FrameRegion, IsAPartOfTheFrameInRealFiles) {
    constexpr std::uintmax_t kLargest = 3'000'000;
    CDcmApp app;
    for (const auto& file : FilesIn(
             {CorpusFolder() / "files", CorpusFolder() / "made", QUORVEX_SOURCE_DIR "/samples"})) {
        if (std::filesystem::file_size(file) > kLargest) continue;
        for (const Rules rules : {Rules::kStandard, Rules::kEstablished}) {
            CxDcmParser parser;
            parser.SetRules(rules);
            if (parser.Initialize(&app, CString(file.string()), 0) != QVM_SUCCESS) continue;
            ExpectPartsOfWhole(parser, file.filename().string());
        }
    }
}

TEST(FrameRegion, OfNativePixelsReadsOnlyItsRows) {
    constexpr int kRows = 300;
    constexpr int kColumns = 301;
    const ImageFacts kForms[] = {{.rows = kRows, .columns = kColumns, .bits = 16, .frames = "2"},
                                 {.rows = kRows, .columns = kColumns, .bits = 8, .frames = "2"},
                                 {.rows = kRows,
                                  .columns = kColumns,
                                  .bits = 8,
                                  .photometric = "RGB",
                                  .samples = 3,
                                  .frames = "2"}};
    for (const ImageFacts& facts : kForms) {
        auto file = ImageFile(kExplicitUid, facts);
        const std::size_t rowBytes = std::size_t{kColumns} * facts.samples * facts.bits / 8;
        Bytes pixels(2 * kRows * rowBytes);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<unsigned char>(i * 7 + i / 251);
        const auto source =
            std::make_shared<HostSource>(file.Padded(tag::kPixelData, "OW", pixels).Bytes());
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, source, 0), QVM_SUCCESS);
        const Answered whole = WholeOf(parser, 1);
        const CRect region{5, 100, 90, 103};
        source->taken = 0;
        EXPECT_EQ(RegionOf(parser, region, 0, 1), Cropped(whole, {kColumns, kRows}, region));
        EXPECT_EQ(source->taken, 3 * rowBytes);
        EXPECT_EQ(parser.GetFrameQuality(), FrameQuality::kWhole);
        const auto end = source->bytes.end();
        source->bytes.erase(end - static_cast<std::ptrdiff_t>(250 * rowBytes), end);
        CxDcmParser cut;
        ASSERT_EQ(cut.Initialize(&app, source, 0), QVM_SUCCESS);
        for (const int top : {48, 49, 100}) {
            const CRect rows{0, top, static_cast<int>(kColumns), top + 2};
            const Answered all = WholeOf(cut, 1);
            EXPECT_EQ(RegionOf(cut, rows, 0, 1), Cropped(all, {kColumns, kRows}, rows)) << top;
        }
    }
}

TEST(FrameRegion, OfJpeg2000ComesAtEachResolution) {
    for (const QUORVEX_XFERSYNTAX target : {kXferJpeg2000Lossless, kXferHtj2kLossless}) {
        std::vector<std::uint16_t> samples;
        for (unsigned i = 0; i < 201 * 150; ++i)
            samples.push_back(static_cast<std::uint16_t>(i * 40503U % 4096));
        auto object = pipeline_test::ImageOf({.size = {201, 150}}, samples,
                                             "00080016=1.2.840.10008.5.1.4.1.1.7");
        if (ConvertTo(static_cast<std::int32_t>(target), object).Code() != QVM_SUCCESS) continue;
        CDcmApp app;
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
        ExpectPartsOfWhole(parser, "coded");
        int count = 0;
        ASSERT_EQ(parser.GetFrameLevelCount(0, count), QVM_SUCCESS);
        ASSERT_GT(count, 3);
        CSize size{201, 150};
        for (int level = 1; level < count; ++level) {
            size = {(size.cx + 1) / 2, (size.cy + 1) / 2};
            unsigned char* data = nullptr;
            unsigned long bytes = 0;
            CSize came;
            const auto code = parser.GetAReducedFrame(0, size, data, bytes, came);
            const Answered reduced = Answered::Take(code, data, bytes);
            ASSERT_EQ(came, size);
            for (const CRect& region : RegionsOf(size))
                EXPECT_EQ(RegionOf(parser, region, level), Cropped(reduced, size, region)) << level;
        }
        EXPECT_EQ(RegionOf(parser, {0, 0, 1, 1}, count).code, QVM_ERROR_INVALID_OUTPUT_SIZE);
        EXPECT_EQ(RegionOf(parser, {0, 0, size.cx + 1, 1}, count - 1).code,
                  QVM_ERROR_INVALID_OUTPUT_SIZE);
        object.SetValue(tag::kBitsStored, 10);  // fewer than the values have
        EXPECT_EQ(RegionOf(parser, {0, 0, 9, 9}, 1).code, QVM_ERROR_FAILED_TO_DECOMPRESS);
        EXPECT_EQ(RegionOf(parser, {0, 0, 9, 9}).code, QVM_SUCCESS);
    }
}

TEST(FrameRegion, BeyondTheFrameIsRefused) {
    auto file = ImageFile(kExplicitUid, {.rows = 4, .columns = 5});
    Parsed parsed(file.Padded(tag::kPixelData, "OW", Bytes(40, 1)).Bytes());
    for (const CRect& region : {CRect{}, CRect{-1, 0, 2, 2}, CRect{0, 0, 6, 1}, CRect{0, 3, 1, 5},
                                CRect{3, 0, 2, 1}, CRect{0, -0x7FFFFFFF, 1, 0x7FFFFFFF}})
        EXPECT_EQ(RegionOf(parsed.parser, region).code, QVM_ERROR_INVALID_OUTPUT_SIZE);
    for (const int level : {-1, 1, 40})
        EXPECT_EQ(RegionOf(parsed.parser, {0, 0, 1, 1}, level).code, QVM_ERROR_INVALID_OUTPUT_SIZE);
    EXPECT_EQ(RegionOf(parsed.parser, {0, 0, 1, 1}, 0, 1).code, QVM_ERROR_INVALID_FRAME_INDEX);
}

}  // namespace
}  // namespace quorvex
