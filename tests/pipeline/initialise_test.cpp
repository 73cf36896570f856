#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"

namespace quorvex::pipeline_test {
namespace {

using DoubleWords = std::vector<std::uint32_t>;

constexpr CSize kView{4, 1};
constexpr ImageShape kDeep{kView, 1, 32, 32};

/// The window over the full range.
constexpr CSize Range(int low, int high) {
    return {high - low, (high + low) / 2};
}

Values RenderedOf(CDcmObject object, CSize view = kView) {
    CXDIPP dipp;
    ShowObject(dipp, object, view);
    return Rendered(dipp);
}

TEST(Initialize, ShowsValuesOverTheirRange) {
    const auto expect = [](CDcmObject image, CSize range, const Values& shown, CSize narrow) {
        CXDIPP dipp;
        ShowObject(dipp, image, kView);
        EXPECT_EQ(WindowOf(dipp), range);
        ExpectNear(Rendered(dipp), shown);
        dipp.UpdateVOILUT_ABS(narrow.cy, narrow.cx);  // at the second pixel
        EXPECT_EQ(Rendered(dipp)[0], 0) << range.cx;
        EXPECT_EQ(Rendered(dipp)[2], 255) << range.cx;
    };
    expect(ImageOf({}, Words{0, 1024, 2048, 4095}, "RescaleIntercept=-1024; RescaleSlope=1"),
           Range(-1024, 3071), {0, 64, 128, 255}, {2, 0});
    expect(ImageOf(kDeep, DoubleWords{0, 250'000, 500'000, 1'000'000}), Range(0, 1'000'000),
           {0, 64, 127, 255}, {40, 250'000});  // 32 bits, scaled; the window counts in values
    ExpectNear(RenderedOf(ImageOf(kDeep, DoubleWords{0, 1U << 31, 3U << 30, 4294967295U})),
               Values{0, 127, 191, 255});  // beyond an int
    EXPECT_EQ(RenderedOf(ImageOf({{8, 1}, 1, 1, 1}, Bytes{0b10110001, 0}), {8, 1}),
              (Values{255, 0, 0, 0, 255, 255, 0, 255}));  // one bit a pixel
}

TEST(Initialize, TheRangeOnlyWidensAndIncludesZero) {
    CXDIPP dipp;
    const CDcmObject colour = ImageOf({kView, 3, 8, 8, 0, "RGB"}, Bytes(12, 7));
    for (CDcmObject image :
         {ImageOf({}, Words{100, 200, 300, 400}), colour, ImageOf({}, Words{1, 2, 3, 4})}) {
        ShowObject(dipp, image, kView);
    }
    EXPECT_EQ(WindowOf(dipp), Range(0, 400));
}

TEST(Initialize, ShowsTheHighByteOfWideColours) {
    const Bytes narrow{200, 100, 50, 200, 100, 50, 200, 100, 50, 200, 100, 50};
    Words wide;
    for (const auto sample : narrow) wide.push_back(static_cast<std::uint16_t>(sample << 8 | 0x7F));
    EXPECT_EQ(RenderedOf(ImageOf({kView, 3, 16, 16, 0, "RGB"}, wide)),
              RenderedOf(ImageOf({kView, 3, 8, 8, 0, "RGB"}, narrow)));
}

TEST(Initialize, AFailureLeavesTheImageThatWasThere) {
    CXDIPP dipp;
    CDcmApp app;
    CDcmObject object = ImageOf({}, Words{100, 200, 300, 400});
    ShowObject(dipp, object, kView);
    dipp.UpdateVOILUT_ABS(250, 200);
    const Values before = Rendered(dipp);
    CDcmObject empty;
    unsigned char pixel[4] = {};
    const auto expect = [&](const char* what, QUORVEX_MESSAGE expected, QUORVEX_MESSAGE answer) {
        EXPECT_EQ(answer, expected) << what;
        EXPECT_EQ(Rendered(dipp), before) << what;
    };
    constexpr auto kNoFrame = QVM_ERROR_INVALID_FRAME_INDEX;
    constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    const auto raw = [&](unsigned char* pixels, CSize size, int pixelBytes) {
        return dipp.Initialize(pixels, kView, size, pixelBytes, 255, 0, 0);
    };
    constexpr int kMost = 2147483647;
    expect("no file", QVM_ERROR_FAILED_TO_READ_FILE, dipp.Initialize(&app, "/no/such", kView, 0));
    expect("no app", QVM_ERROR_INVALID_DCMAPP, dipp.Initialize(nullptr, &object, kView, 0));
    expect("no such frame", kNoFrame, dipp.Initialize(&app, &object, kView, 1));
    expect("no pixels", kNoPixels, dipp.Initialize(&app, &object, nullptr, kView, 0, 0, 0));
    expect("no header", kNoPixels, dipp.Initialize(&app, &empty, pixel, kView, 0, 0, 0));
    expect("null", kNoPixels, raw(nullptr, kView, 1));
    expect("no width", kNoPixels, raw(pixel, {0, 1}, 1));
    expect("no height", kNoPixels, raw(pixel, {4, -1}, 1));
    expect("no bytes", kNoPixels, raw(pixel, kView, 0));
    expect("far too large", kNoPixels, raw(pixel, {kMost, kMost}, 2));
    expect("no such frame of the image", kNoFrame, dipp.Initialize(&app, kView, 7));
    EXPECT_NE(dipp.Initialize(&app, &empty, kView, 0), QVM_SUCCESS);
    EXPECT_EQ(Rendered(dipp), before);
    EXPECT_EQ(dipp.Initialize(&app, kView, 0), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp), Range(0, 400));
    EXPECT_EQ(CXDIPP().Initialize(&app, kView, 0), QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

TEST(Initialize, ANewFrameDropsTheViewOfTheFormerOne) {
    CDcmApp app;
    CDcmObject object = ImageOf({}, Words{1, 2, 3, 4, 40, 30, 20, 10}, "NumberOfFrames=2");
    CXDIPP dipp;
    ShowObject(dipp, object, kView);
    dipp.UpdateZoom_ABS(3.0);
    dipp.UpdateVOILUT_ABS(1, 2);
    ASSERT_EQ(dipp.Initialize(&app, {8, 8}, 1), QVM_SUCCESS);
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 2.0);
    EXPECT_EQ(WindowOf(dipp), Range(0, 40));
    ExpectNear(Shown(dipp), Values{255, 191, 127, 64});
}

TEST(Initialize, TakesACallersPixelsUnderAHeader) {
    CDcmObject object = ImageOf({}, Words{9, 9, 9, 9});
    CDcmObject rescaled = test::With(object, "RescaleIntercept=-1000; RescaleSlope=1");
    Words words{0, 100, 200, 4095};
    auto* pixels = reinterpret_cast<unsigned char*>(words.data());
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(nullptr, &rescaled, pixels, kView, 200, 0, 12345), QVM_SUCCESS);
    words.assign(4, 0);  // they were copied
    // No modality stage; a value beyond the range is its nearest end.
    ExpectNear(Rendered(dipp), Values{0, 127, 255, 255});
    ShowObject(dipp, object, kView);
    EXPECT_EQ(WindowOf(dipp), Range(0, 9)) << "the caller's values do not count";
}

}  // namespace
}  // namespace quorvex::pipeline_test
