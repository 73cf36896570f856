// A real blood flow map: grey values of which a supplemental palette colours a part.
#include "quorvex/CLData.h"
#include "quorvex/CxDcmParser.h"
#include "tests/pipeline/inspector.h"
#include "tests/support/corpus.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace quorvex {
namespace {

constexpr int kSupplemental = 3;

MC_STATUS Collect(int, std::uint32_t, void* user, int length, void* data, int, int) {
    auto& words = *static_cast<std::vector<std::uint16_t>*>(user);
    const auto* piece = static_cast<const unsigned char*>(data);
    for (int i = 0; i + 1 < length; i += 2) {
        words.push_back(static_cast<std::uint16_t>(piece[i] | piece[i + 1] << 8));
    }
    return kMcContinue;
}

struct ColouredPart {
    int first = 0;
    std::vector<std::uint16_t> entries[3];

    explicit ColouredPart(const CDcmObject& header) {
        int count = 0;
        header.GetValue(0x00281101, count);
        header.GetNextValue(0x00281101, first);
        for (std::uint32_t colour = 0; colour < 3; ++colour) {
            header.GetValue(0x00281201 + colour, &entries[colour], Collect);
            EXPECT_EQ(entries[colour].size(), static_cast<std::size_t>(count));
        }
    }
    [[nodiscard]] bool Has(int value) const {
        return value >= first && value < first + static_cast<int>(entries[0].size());
    }
    [[nodiscard]] int Byte(std::size_t colour, int value) const {
        return entries[colour][static_cast<std::size_t>(value - first)] >> 8;
    }
};

TEST(CorpusVolume, ShowsABloodFlowMapInColour) {
    const auto file =
        test::CorpusFolder() / "files" / "CT0012.fragmented_no_bot_jpeg_lossless.70.dcm";
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "QUORVEX_CORPUS does not have it";
    CDcmApp app;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString(file.string()), 0), QVM_SUCCESS);
    unsigned char* frame = nullptr;
    unsigned long size = 0;
    ASSERT_EQ(parser.GetAFrame(0, frame, size, 0), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> owner(frame);
    ASSERT_EQ(size, 512U * 512 * 2);
    CLData data;
    data.pixels = frame;
    data.width = data.height = 512;
    data.bitsAllocated = data.bitsStored = 16;
    data.photometricInterpretation = "MONOCHROME2";
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(parser.GetHeader(), &data, {512, 512}, 65535, 0, kSupplemental),
              QVM_SUCCESS);
    dipp.UpdateZoom_ABS(1.0);
    const auto shown = pipeline_test::Rendered(dipp);
    ASSERT_EQ(shown.size(), 512U * 512 * 3);

    const ColouredPart coloured(*parser.GetHeader());
    int colouredPixels = 0;
    for (std::size_t i = 0; i < 512 * 512; ++i) {
        const int value = frame[2 * i] | frame[2 * i + 1] << 8;
        const int* const pixel = shown.data() + 3 * i;  // blue, green, red
        if (coloured.Has(value)) {
            ++colouredPixels;
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_NEAR(pixel[2 - c], coloured.Byte(c, value), 1) << i;
            }
        } else {
            ASSERT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2]) << i;
        }
    }
    EXPECT_GT(colouredPixels, 50000);
}

}  // namespace
}  // namespace quorvex
