// Real presentation states: what other tools read out of them.
#include "tests/presentation/presentation_objects.h"
#include "tests/support/corpus.h"

#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <string>

namespace quorvex {
namespace {

using namespace test;

/// What a state of the corpus says of an image.
std::unique_ptr<Record> ReadCorpus(const std::string& name, const char* image) {
    CDcmApp app;
    CDcmObject state;
    state.Open((CorpusFolder() / "files" / name).string());
    EXPECT_EQ(state.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    auto info = std::make_unique<Record>();
    CXGSPSObject().GSPSApplier(&state, info.get(), image, -1);
    return info;
}

TEST(RealStates, CombinedLuts) {
    if (CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto info = ReadCorpus("prLUTs.dcm", "1.2.276.0.7230010.3.200.6.3.1");
    EXPECT_EQ(TextOf(*info),
              "area left 1; top 1; right 512; bottom 512; aspect x 1; aspect y 1; "
              "modality 256,0,0: 0 147 83 174 57 222 230 231; "
              "VOI 256,0,8: 0 233 103 3 246 166 178 177; "
              "presentation 256,0,8: 8 141 171 173 137 39 90 159");
    for (const auto* table : {info->modalityLUTData, info->voiLUTData, info->presentationLUTData}) {
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(std::accumulate(table, table + 256, 0), 32640);
    }
    EXPECT_EQ(info->presentationLUTData[255], 255);
}

TEST(RealStates, TextAndEllipse) {
    if (CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    const auto info =
        ReadCorpus("PR000000.dcm", "1.2.276.0.7230010.3.1.4.665618.6496.1546453790.314808");
    EXPECT_EQ(TextOf(*info),
              "center 2048; width 4096; right 2688; bottom 2688; aspect x 1; aspect y 1; "
              "text Mean: 2651.41  SD: 344.29\r\nMin: 1362.00 US  Max: 3614.00 US\r\n"
              "Area: 119.58 cm\xC2\xB2 (W: 12.68 cm H:12.01 cm) "
              "box 1714.37,1398.99 to 2605.07,1554.25 has 11 units 00 at 0 anchor 1714.37,1366.64; "
              "graphic 5 of 4 units 0 "
              "1714.37,991.422 2506.86,991.422 2110.61,616.202 2110.61,1366.64");
    const auto& text = *static_cast<const GSPSTextObject*>(info->textObjects[0]);
    EXPECT_EQ(text.boundingBoxTopLeft[0], 1714.3681640625);
    EXPECT_EQ(text.boundingBoxBottomRight[1], 1554.252685546875);
    EXPECT_EQ(text.anchorPoint[1], 1366.642578125);
}

}  // namespace
}  // namespace quorvex
