// A real blood flow map: grey values of which a supplemental palette colours a part.
#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/support/corpus.h"

#include <filesystem>

namespace quorvex::pipeline_test {
namespace {

constexpr int kSupplemental = 3;

MC_STATUS Collect(int, std::uint32_t, void* user, int length, void* data, int, int) {
    const auto* piece = static_cast<const unsigned char*>(data);
    static_cast<Bytes*>(user)->insert(static_cast<Bytes*>(user)->end(), piece, piece + length);
    return kMcContinue;
}

TEST(CorpusVolume, ShowsABloodFlowMapInColour) {
    const auto file =
        test::CorpusFolder() / "files" / "CT0012.fragmented_no_bot_jpeg_lossless.70.dcm";
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "QUORVEX_CORPUS does not have it";
    CDcmApp app;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString(file.string()), 0), QVM_SUCCESS);
    const auto frame = test::FrameOf(parser);
    ASSERT_EQ(frame.bytes.size(), 512U * 512 * 2);
    TestVolume volume({512, 512}, 16, frame.bytes);
    volume.data.windowWidth = 0;
    CXDIPP dipp;
    CDcmObject& header = *parser.GetHeader();
    ASSERT_EQ(dipp.Initialize(&header, &volume.data, {512, 512}, 65535, 0, kSupplemental),
              QVM_SUCCESS);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 512U * 512 * 3);

    int count = 0;
    int first = 0;
    header.GetValue(tag::kRedPaletteColorLookupTableDescriptor, count);
    header.GetNextValue(tag::kRedPaletteColorLookupTableDescriptor, first);
    Bytes entries[3];  // two bytes each, the least significant first
    for (std::uint32_t colour = 0; colour < 3; ++colour) {
        header.GetValue(tag::kRedPaletteColorLookupTableData + colour, &entries[colour], Collect);
        ASSERT_EQ(entries[colour].size(), static_cast<std::size_t>(count) * 2);
    }
    int colouredPixels = 0;
    for (std::size_t i = 0; i < 512 * 512; ++i) {
        const int value = frame.bytes[2 * i] | frame.bytes[2 * i + 1] << 8;
        const int* const pixel = shown.data() + 3 * i;  // blue, green, red
        if (value < first || value >= first + count) {
            ASSERT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2]) << i;
            continue;
        }
        ++colouredPixels;
        const auto highByte = static_cast<std::size_t>(value - first) * 2 + 1;
        for (std::size_t c = 0; c < 3; ++c) {
            ASSERT_NEAR(pixel[2 - c], entries[c][highByte], 1) << i;
        }
    }
    EXPECT_GT(colouredPixels, 50000);
}

}  // namespace
}  // namespace quorvex::pipeline_test
