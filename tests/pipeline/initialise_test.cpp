#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/test_objects.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::FillImage;
using pipeline_test::ImageShape;
using pipeline_test::Rendered;

using Values = std::vector<int>;
using Words = std::vector<std::uint16_t>;

constexpr CSize kView{4, 1};

template <class Sample>
QUORVEX_MESSAGE Show(CXDIPP& dipp, const ImageShape& shape, const std::vector<Sample>& samples) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, shape, samples);
    return dipp.Initialize(&app, &object, shape.size, 0);
}

TEST(Initialize, ShowsRescaledWordsOverTheirRange) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{0, 1024, 2048, 4095});
    object.SetValue(0x00281052, "-1024");
    object.SetValue(0x00281053, "1");
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    const CXDIPPInspector look{dipp};
    EXPECT_EQ(look.Words(), (Values{-1024, 0, 1024, 3071}));
    EXPECT_EQ(look.MinValue(), -1024);
    EXPECT_EQ(look.MaxValue(), 3071);
    int width = 0;
    int level = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 4095);
    EXPECT_EQ(level, 1023);
    const Values shown = Rendered(dipp);
    EXPECT_NEAR(shown[0], 0, 1);
    EXPECT_NEAR(shown[1], 64, 1);
    EXPECT_NEAR(shown[3], 255, 1);
}

TEST(Initialize, TheRangeOnlyWidensAndIncludesZero) {
    CXDIPP dipp;
    const CXDIPPInspector look{dipp};
    ASSERT_EQ(Show(dipp, {}, Words{100, 200, 300, 400}), QVM_SUCCESS);
    EXPECT_EQ(look.MinValue(), 0);
    EXPECT_EQ(look.MaxValue(), 400);
    ASSERT_EQ(Show(dipp, {kView, 3, 8, 8, 0, "RGB"}, std::vector<std::uint8_t>(12, 7)),
              QVM_SUCCESS);
    ASSERT_EQ(Show(dipp, {}, Words{1, 2, 3, 4}), QVM_SUCCESS);
    EXPECT_EQ(look.MaxValue(), 400);
    EXPECT_EQ(look.Range().domainHigh, 400);
}

TEST(Initialize, ShowsWhatHasUnusualBits) {
    CXDIPP dipp;
    // One bit a pixel: white and black, over the full range.
    ASSERT_EQ(Show(dipp, {{8, 1}, 1, 1, 1}, std::vector<std::uint8_t>{0b10110001, 0}), QVM_SUCCESS);
    const Values bits = Rendered(dipp);
    EXPECT_EQ(bits, (Values{255, 0, 0, 0, 255, 255, 0, 255}));

    // 32 bits: scaled, with a window that counts in values.
    CXDIPP dose;
    ASSERT_EQ(
        Show(dose, {kView, 1, 32, 32}, std::vector<std::uint32_t>{0, 250'000, 500'000, 1'000'000}),
        QVM_SUCCESS);
    Values shown = Rendered(dose);
    EXPECT_NEAR(shown[1], 64, 1);
    EXPECT_NEAR(shown[2], 127, 1);
    EXPECT_GE(shown[3], 254);
    int width = 0;
    int level = 0;
    dose.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 1'000'000);
    dose.UpdateVOILUT_ABS(250'000, 40);
    shown = Rendered(dose);
    EXPECT_EQ(shown[0], 0);
    EXPECT_EQ(shown[2], 255);

    // Values beyond an int.
    CXDIPP huge;
    ASSERT_EQ(Show(huge, {kView, 1, 32, 32},
                   std::vector<std::uint32_t>{0, 1U << 31, 3U << 30, 4294967295U}),
              QVM_SUCCESS);
    shown = Rendered(huge);
    EXPECT_NEAR(shown[1], 127, 1);
    EXPECT_NEAR(shown[2], 191, 1);
}

TEST(Initialize, ShowsTheHighByteOfWideColours) {
    CXDIPP dipp;
    const std::vector<std::uint8_t> narrow{200, 100, 50, 200, 100, 50, 200, 100, 50, 200, 100, 50};
    ASSERT_EQ(Show(dipp, {kView, 3, 8, 8, 0, "RGB"}, narrow), QVM_SUCCESS);
    const Values expected = Rendered(dipp);
    Words wide;
    for (const auto sample : narrow) wide.push_back(static_cast<std::uint16_t>(sample << 8 | 0x7F));
    ASSERT_EQ(Show(dipp, {kView, 3, 16, 16, 0, "RGB"}, wide), QVM_SUCCESS);
    EXPECT_EQ(Rendered(dipp), expected);
}

TEST(Initialize, AFailureLeavesTheImageThatWasThere) {
    CXDIPP dipp;
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{100, 200, 300, 400});
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    dipp.UpdateVOILUT_ABS(250, 200);
    const Values before = Rendered(dipp);
    const auto expectUnchanged = [&](QUORVEX_MESSAGE result, QUORVEX_MESSAGE expected) {
        EXPECT_EQ(result, expected);
        EXPECT_EQ(Rendered(dipp), before);
        EXPECT_EQ(CXDIPPInspector{dipp}.MaxValue(), 400);
    };
    CDcmObject empty;
    expectUnchanged(dipp.Initialize(&app, CString("/no/such/file"), kView, 0),
                    QVM_ERROR_FAILED_TO_READ_FILE);
    expectUnchanged(dipp.Initialize(nullptr, &object, kView, 0), QVM_ERROR_INVALID_DCMAPP);
    expectUnchanged(dipp.Initialize(&app, &object, kView, 1), QVM_ERROR_INVALID_FRAME_INDEX);
    EXPECT_NE(dipp.Initialize(&app, &empty, kView, 0), QVM_SUCCESS);
    expectUnchanged(dipp.Initialize(&app, &empty, nullptr, kView, 0, 0, 0),
                    QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    // The parser of the image is still there too.
    expectUnchanged(dipp.Initialize(&app, kView, 7), QVM_ERROR_INVALID_FRAME_INDEX);
    EXPECT_EQ(dipp.Initialize(&app, kView, 0), QVM_SUCCESS);
    CXDIPP fresh;
    EXPECT_EQ(fresh.Initialize(&app, kView, 0), QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

TEST(Initialize, ANewFrameDropsTheViewOfTheFormerOne) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{1, 2, 3, 4, 40, 30, 20, 10});
    object.SetValue(0x00280008, "2");
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    dipp.UpdateZoom_ABS(3.0);
    dipp.UpdateVOILUT_ABS(1, 2);
    ASSERT_EQ(dipp.Initialize(&app, {8, 8}, 1), QVM_SUCCESS);
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 2.0);
    EXPECT_EQ(CXDIPPInspector{dipp}.Words(), (Values{40, 30, 20, 10}));
    int width = 0;
    int level = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 40);
}

TEST(Initialize, TakesACallersPixelsUnderAHeader) {
    CDcmObject object;
    FillImage(object, {}, Words{9, 9, 9, 9});
    object.SetValue(0x00281052, "-1000");  // no modality stage here
    object.SetValue(0x00281053, "1");
    Words words{0, 100, 200, 4095};
    auto* pixels = reinterpret_cast<unsigned char*>(words.data());
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(nullptr, &object, pixels, kView, 200, 0, 12345), QVM_SUCCESS);
    words.assign(4, 0);  // they were copied
    EXPECT_EQ(CXDIPPInspector{dipp}.Words(), (Values{0, 100, 200, 4095}));
    EXPECT_EQ(CXDIPPInspector{dipp}.MaxValue(), 0);
    const Values shown = Rendered(dipp);
    EXPECT_NEAR(shown[1], 127, 1);
    EXPECT_EQ(shown[3], shown[2]);  // beyond the range: its nearest end
}

}  // namespace
}  // namespace quorvex
