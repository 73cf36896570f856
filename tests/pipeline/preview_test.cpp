// Images that are decoded no finer than the view needs.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "tests/maker/maker_objects.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/answers.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorvex::pipeline_test {
namespace {

using test::Bytes;
using test::With;

constexpr const char* kWindow = "00281050=2000; 00281051=4000";

/// A ramp from left to right, 3 more from row to row.
CDcmObject Ramp(QUORVEX_XFERSYNTAX form, const std::string& attributes, const ImageShape& shape) {
    std::vector<std::uint16_t> samples;
    for (int y = 0; y < shape.size.cy; ++y)
        for (int x = 0; x < shape.size.cx; ++x)
            samples.push_back(static_cast<std::uint16_t>(5 * x + 3 * y));
    auto object = ImageOf(shape, samples, "00080016=1.2.840.10008.5.1.4.1.1.7; " + attributes);
    EXPECT_EQ(test::ConvertTo(static_cast<std::int32_t>(form), object).Code(), QVM_SUCCESS);
    return object;
}

CDcmObject Ramp(const std::string& attributes = kWindow,
                const ImageShape& shape = {.size = {401, 300}}) {
    return Ramp(kXferJpeg2000Lossless, attributes, shape);
}

/// What came, and the mean of its samples.
struct Reduced {
    int code = -1;
    CSize size;
    unsigned long bytes = 0;
    double mean = 0.0;
};

Reduced ReducedOf(CDcmObject& object, CSize least) {
    CDcmApp app;
    CxDcmParser parser;
    EXPECT_EQ(parser.Initialize(&app, &object, nullptr, 0, 0), QVM_SUCCESS);
    Reduced reduced;
    unsigned char* data = nullptr;
    reduced.code = parser.GetAReducedFrame(0, least, data, reduced.bytes, reduced.size);
    const std::unique_ptr<unsigned char[]> owner(data);
    for (unsigned long i = 0; data != nullptr && i + 1 < reduced.bytes; i += 2)
        reduced.mean += data[i] + 256.0 * data[i + 1];
    reduced.mean /= static_cast<double>(reduced.bytes) / 2;
    return reduced;
}

TEST(ReducedFrames, AreTheLowestResolutionThatIsEnough) {
    const struct {
        CSize least;
        CSize came;
    } kRows[] = {{{401, 300}, {401, 300}}, {{400, 300}, {401, 300}}, {{201, 150}, {201, 150}},
                 {{202, 10}, {401, 300}},  {{100, 75}, {101, 75}},   {{101, 76}, {201, 150}},
                 {{1, 1}, {13, 10}},       {{0, -5}, {13, 10}}};
    CDcmObject coded = Ramp();
    for (const auto& row : kRows) {
        const Reduced reduced = ReducedOf(coded, row.least);
        EXPECT_EQ(reduced.code, QVM_SUCCESS);
        EXPECT_EQ(reduced.size, row.came) << row.least.cx;
        EXPECT_EQ(reduced.bytes, static_cast<unsigned long>(2 * row.came.cx * row.came.cy));
        EXPECT_NEAR(reduced.mean, 5 * 200.0 + 3 * 149.5, 90) << row.least.cx;
    }
    CDcmObject plain = Ramp(kXferJpegLossless, kWindow, {.size = {401, 300}});
    EXPECT_EQ(ReducedOf(plain, {10, 10}).size, (CSize{401, 300}));
    coded.SetValue(tag::kBitsStored, 10);  // fewer than the values have
    EXPECT_EQ(ReducedOf(coded, {10, 10}).size, (CSize{401, 300}));
    coded.SetValue(tag::kRows, 299);
    EXPECT_EQ(ReducedOf(coded, {10, 10}).code, QVM_ERROR_FAILED_TO_DECOMPRESS);
}

/// The picture in a view, and the columns of the image that it was made of.
struct Seen {
    CSize size;
    int columns = 0;
    Bytes pixels;
};

Seen SeenOf(CXDIPP& image) {
    Seen seen;
    int channels = 0;
    EXPECT_EQ(image.Render(), QVM_SUCCESS);
    EXPECT_EQ(image.GetResultImageInfo(seen.size, channels), QVM_SUCCESS);
    seen.pixels.resize(static_cast<std::size_t>(seen.size.cx * seen.size.cy * channels));
    unsigned char* to = seen.pixels.data();
    image.GetResultImage(to, static_cast<int>(seen.pixels.size()));
    seen.columns = image.GetDisplayedSize().cx;
    return seen;
}

Seen SeenOf(CDcmObject& object, bool isPreview, CDcmObject* state = nullptr) {
    CDcmApp app;
    CXDIPP image;
    image.SetRules(Rules::kStandard);
    image.SetPreview(isPreview);
    EXPECT_EQ(image.Initialize(&app, &object, {100, 100}, 0), QVM_SUCCESS);
    const auto applied = state != nullptr ? image.ApllyGSPSObject(&app, state) : QVM_SUCCESS;
    EXPECT_EQ(applied, QVM_SUCCESS);
    return SeenOf(image);
}

TEST(Preview, LooksLikeTheWholeImage) {
    for (const char* aspect : {"", "; 00280034=1\\2", "; 00280034=3\\1"}) {
        CDcmObject object = Ramp(std::string(kWindow) + aspect);
        const Seen whole = SeenOf(object, false);
        const Seen preview = SeenOf(object, true);
        EXPECT_EQ(whole.columns, 401);
        EXPECT_LT(preview.columns, 401) << aspect;
        ASSERT_EQ(preview.size, whole.size) << aspect;
        for (std::size_t i = 0; i < whole.pixels.size(); ++i)
            ASSERT_NEAR(preview.pixels[i], whole.pixels[i], 4) << aspect << i;
    }
}

TEST(Preview, ComesInWholeWhereThePictureGoesByAllItsValues) {
    const ImageShape shape{.size = {401, 300}};
    const struct {
        const char* what;
        CDcmObject object;
    } kRows[] = {
        {"no window", Ramp("")},
        {"JPEG", Ramp(kXferJpegLossless, kWindow, shape)},
        {"bits below the stored ones", With(Ramp(), "00280102=15")},
    };
    for (const auto& row : kRows) {
        CDcmObject object = row.object;
        const Seen whole = SeenOf(object, false);
        const Seen preview = SeenOf(object, true);
        EXPECT_EQ(preview.columns, 401) << row.what;
        EXPECT_EQ(preview.pixels, whole.pixels) << row.what;
    }
}

TEST(Preview, TakesAStateOverTheWholeImage) {
    CDcmObject object = Ramp();
    CDcmObject state =
        With<CDcmObject>("00080016=1.2.840.10008.5.1.4.1.1.11.1; 00700042=90; 00700041=N");
    const Seen whole = SeenOf(object, false, &state);
    const Seen preview = SeenOf(object, true, &state);
    EXPECT_EQ(preview.columns, whole.columns);
    EXPECT_EQ(preview.pixels, whole.pixels);
}

}  // namespace
}  // namespace quorvex::pipeline_test
