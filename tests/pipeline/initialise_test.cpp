#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"

#include <cstdint>
#include <functional>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kView{4, 1};

template <class Sample>
QUORVEX_MESSAGE Show(CXDIPP& dipp, const ImageShape& shape, const std::vector<Sample>& samples) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, shape, samples);
    return dipp.Initialize(&app, &object, shape.size, 0);
}

/// Lowest and highest value of the full range.
void ExpectRange(const CXDIPP& dipp, int low, int high) {
    EXPECT_EQ(WindowOf(dipp), (CSize{high - low, (high + low) / 2}));
}

void ExpectNear(const Values& shown, const Values& expected) {
    ASSERT_EQ(shown.size(), expected.size());
    for (std::size_t i = 0; i < shown.size(); ++i) EXPECT_NEAR(shown[i], expected[i], 1) << i;
}

TEST(Initialize, ShowsRescaledWordsOverTheirRange) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{0, 1024, 2048, 4095});
    object.SetValue(tag::kRescaleIntercept, "-1024");
    object.SetValue(tag::kRescaleSlope, "1");
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    ExpectRange(dipp, -1024, 3071);
    ExpectNear(Rendered(dipp), {0, 64, 128, 255});
    dipp.UpdateVOILUT_ABS(0, 2);  // 0 is what was 1024
    EXPECT_EQ(Rendered(dipp)[0], 0);
    EXPECT_EQ(Rendered(dipp)[2], 255);
}

TEST(Initialize, TheRangeOnlyWidensAndIncludesZero) {
    CXDIPP dipp;
    ASSERT_EQ(Show(dipp, {}, Words{100, 200, 300, 400}), QVM_SUCCESS);
    ExpectRange(dipp, 0, 400);
    ASSERT_EQ(Show(dipp, {kView, 3, 8, 8, 0, "RGB"}, Bytes(12, 7)), QVM_SUCCESS);
    ASSERT_EQ(Show(dipp, {}, Words{1, 2, 3, 4}), QVM_SUCCESS);
    ExpectRange(dipp, 0, 400);
}

TEST(Initialize, ShowsWhatHasUnusualBits) {
    CXDIPP bits;  // one a pixel: white and black, over the full range
    ASSERT_EQ(Show(bits, {{8, 1}, 1, 1, 1}, Bytes{0b10110001, 0}), QVM_SUCCESS);
    EXPECT_EQ(Rendered(bits), (Values{255, 0, 0, 0, 255, 255, 0, 255}));

    using DoubleWords = std::vector<std::uint32_t>;
    CXDIPP dose;  // 32 bits: scaled, with a window that counts in values
    ASSERT_EQ(Show(dose, {kView, 1, 32, 32}, DoubleWords{0, 250'000, 500'000, 1'000'000}),
              QVM_SUCCESS);
    ExpectNear(Rendered(dose), {0, 64, 127, 255});
    ExpectRange(dose, 0, 1'000'000);
    dose.UpdateVOILUT_ABS(250'000, 40);
    EXPECT_EQ(Rendered(dose)[0], 0);
    EXPECT_EQ(Rendered(dose)[2], 255);

    CXDIPP huge;  // values beyond an int
    ASSERT_EQ(Show(huge, {kView, 1, 32, 32}, DoubleWords{0, 1U << 31, 3U << 30, 4294967295U}),
              QVM_SUCCESS);
    ExpectNear(Rendered(huge), {0, 127, 191, 255});
}

TEST(Initialize, ShowsTheHighByteOfWideColours) {
    CXDIPP dipp;
    const Bytes narrow{200, 100, 50, 200, 100, 50, 200, 100, 50, 200, 100, 50};
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
    CDcmObject empty;
    unsigned char pixel[4] = {};
    constexpr auto kRefused = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    const struct {
        const char* what;
        std::function<QUORVEX_MESSAGE()> show;
        QUORVEX_MESSAGE expected;
    } refusals[] = {
        {"no file", [&] { return dipp.Initialize(&app, CString("/no/such/file"), kView, 0); },
         QVM_ERROR_FAILED_TO_READ_FILE},
        {"no app", [&] { return dipp.Initialize(nullptr, &object, kView, 0); },
         QVM_ERROR_INVALID_DCMAPP},
        {"no such frame", [&] { return dipp.Initialize(&app, &object, kView, 1); },
         QVM_ERROR_INVALID_FRAME_INDEX},
        {"no pixels", [&] { return dipp.Initialize(&app, &object, nullptr, kView, 0, 0, 0); },
         kRefused},
        {"an empty header", [&] { return dipp.Initialize(&app, &empty, pixel, kView, 0, 0, 0); },
         kRefused},
        {"null", [&] { return dipp.Initialize(nullptr, kView, kView, 1, 255, 0, 0); }, kRefused},
        {"no width",
         [&] {
             return dipp.Initialize(pixel, kView, {0, 1}, 1, 255, 0, 0);
         },
         kRefused},
        {"no height",
         [&] {
             return dipp.Initialize(pixel, kView, {4, -1}, 1, 255, 0, 0);
         },
         kRefused},
        {"no bytes", [&] { return dipp.Initialize(pixel, kView, kView, 0, 255, 0, 0); }, kRefused},
        {"far too large",
         [&] {
             return dipp.Initialize(pixel, kView, {2147483647, 2147483647}, 2, 255, 0, 0);
         },
         kRefused},
        // the parser of the image is still there too
        {"no such frame of the same", [&] { return dipp.Initialize(&app, kView, 7); },
         QVM_ERROR_INVALID_FRAME_INDEX},
    };
    for (const auto& c : refusals) {
        EXPECT_EQ(c.show(), c.expected) << c.what;
        EXPECT_EQ(Rendered(dipp), before) << c.what;
    }
    EXPECT_NE(dipp.Initialize(&app, &empty, kView, 0), QVM_SUCCESS);
    EXPECT_EQ(Rendered(dipp), before);
    EXPECT_EQ(dipp.Initialize(&app, kView, 0), QVM_SUCCESS);
    ExpectRange(dipp, 0, 400);
    CXDIPP fresh;
    EXPECT_EQ(fresh.Initialize(&app, kView, 0), QVM_ERROR_FAILED_TO_PARSE_DICOM);
}

TEST(Initialize, ANewFrameDropsTheViewOfTheFormerOne) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{1, 2, 3, 4, 40, 30, 20, 10});
    object.SetValue(tag::kNumberOfFrames, "2");
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    dipp.UpdateZoom_ABS(3.0);
    dipp.UpdateVOILUT_ABS(1, 2);
    ASSERT_EQ(dipp.Initialize(&app, {8, 8}, 1), QVM_SUCCESS);
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 2.0);
    ExpectRange(dipp, 0, 40);
    ExpectNear(Shown(dipp), {255, 191, 127, 64});
}

TEST(Initialize, TakesACallersPixelsUnderAHeader) {
    CDcmApp app;
    CDcmObject object;
    FillImage(object, {}, Words{9, 9, 9, 9});
    object.SetValue(tag::kRescaleIntercept, "-1000");  // no modality stage here
    object.SetValue(tag::kRescaleSlope, "1");
    Words words{0, 100, 200, 4095};
    auto* pixels = reinterpret_cast<unsigned char*>(words.data());
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(nullptr, &object, pixels, kView, 200, 0, 12345), QVM_SUCCESS);
    words.assign(4, 0);                              // they were copied
    ExpectNear(Rendered(dipp), {0, 127, 255, 255});  // beyond the range: its nearest end
    object.RemoveValue(tag::kRescaleSlope);
    object.RemoveValue(tag::kRescaleIntercept);
    ASSERT_EQ(dipp.Initialize(&app, &object, kView, 0), QVM_SUCCESS);
    ExpectRange(dipp, 0, 9);  // the caller's values do not count in it
}

}  // namespace
}  // namespace quorvex::pipeline_test
