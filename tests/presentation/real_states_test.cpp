// Real presentation states: what other tools read out of them.
#include "tests/presentation/presentation_objects.h"
#include "tests/support/corpus.h"

#include <gtest/gtest.h>
#include <numeric>
#include <string>

namespace quorvex {
namespace {

using namespace test;

CDcmObject ReadCorpusFile(const std::string& name) {
    CDcmObject object;
    CDcmApp app;
    object.Open((CorpusFolder() / "files" / name).string());
    EXPECT_EQ(object.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    return object;
}

int Sum(const std::uint16_t* entries) {
    return std::accumulate(entries, entries + 256, 0);
}

TEST(RealStates, CombinedLuts) {
    if (CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    CDcmObject state = ReadCorpusFile("prLUTs.dcm");
    Record info;
    CXGSPSObject().GSPSApplier(&state, &info, "1.2.276.0.7230010.3.200.6.3.1", -1);
    ASSERT_NE(info.modalityLUTData, nullptr);
    ASSERT_NE(info.voiLUTData, nullptr);
    ASSERT_NE(info.presentationLUTData, nullptr);
    EXPECT_EQ(info.modalityLUTCount, 256);
    EXPECT_EQ(info.voiLUTBits, 8);
    EXPECT_EQ(Sum(info.modalityLUTData), 32640);
    EXPECT_EQ(Sum(info.voiLUTData), 32640);
    EXPECT_EQ(Sum(info.presentationLUTData), 32640);
    EXPECT_EQ(info.presentationLUTData[0], 8);
    EXPECT_EQ(info.presentationLUTData[255], 255);
    EXPECT_EQ(info.displayedAreaRight, 512);
    EXPECT_EQ(info.presentationSizeMode, 0);
}

TEST(RealStates, TextAndEllipse) {
    if (CorpusFolder().empty()) GTEST_SKIP() << "QUORVEX_CORPUS is not set";
    CDcmObject state = ReadCorpusFile("PR000000.dcm");
    Record info;
    CXGSPSObject().GSPSApplier(&state, &info,
                               "1.2.276.0.7230010.3.1.4.665618.6496.1546453790.314808", -1);
    EXPECT_EQ(info.windowCenter, 2048);
    EXPECT_EQ(info.windowWidth, 4096);
    EXPECT_EQ(info.presentationShape, 0);
    EXPECT_EQ(info.displayedAreaRight, 2688);
    ASSERT_EQ(info.textObjects.GetSize(), 1);
    ASSERT_EQ(info.graphicObjects.GetSize(), 1);
    const auto& text = *static_cast<const GSPSTextObject*>(info.textObjects[0]);
    EXPECT_GE(text.textValue.Find(CString("cm\xC2\xB2 (W: 12.68")), 0);
    ASSERT_EQ(text.hasBoundingBox, 1);
    EXPECT_EQ(text.boundingBoxTopLeft[0], 1714.3681640625);
    EXPECT_EQ(text.boundingBoxBottomRight[1], 1554.252685546875);
    ASSERT_EQ(text.hasAnchor, 1);
    EXPECT_EQ(text.anchorPoint[1], 1366.642578125);
    EXPECT_EQ(text.anchorVisible, 0);
    const auto& graphic = *static_cast<const GSPSGraphicObject*>(info.graphicObjects[0]);
    EXPECT_EQ(graphic.graphicType, 5);
    EXPECT_EQ(graphic.filled, 0);
    EXPECT_EQ(graphic.points.GetSize(), 4);
}

}  // namespace
}  // namespace quorvex
