#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/test_objects.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::FillImage;
using pipeline_test::ImageShape;
using pipeline_test::Rendered;

constexpr CSize kSize{12, 8};
constexpr std::size_t kPixels = 96;
constexpr int kHidden = 0x9A;

// What a rectangle from column 3 to 9 and row 2 to 6 leaves in sight.
bool IsHidden(std::size_t pixel) {
    const std::size_t x = pixel % 12;
    const std::size_t y = pixel / 12;
    return x < 3 || x >= 9 || y < 2 || y >= 6;
}

void AddShutter(CDcmObject& object) {
    object.SetValue(0x00181600, "RECTANGULAR");
    object.SetValue(0x00181602, 3);
    object.SetValue(0x00181604, 9);
    object.SetValue(0x00181606, 2);
    object.SetValue(0x00181608, 6);
    object.SetValue(0x00181622, static_cast<unsigned short>(0x9ABC));
}

template <class Sample>
CDcmObject Picture(const ImageShape& shape, const std::vector<Sample>& samples) {
    CDcmObject object;
    FillImage(object, shape, samples);
    object.SetValue(0x00281050, 128.0);
    object.SetValue(0x00281051, 256.0);
    AddShutter(object);
    return object;
}

struct KindCase {
    const char* what;
    CDcmObject image;  ///< whose pixels are never the hidden value
    CDcmObject mask;   ///< of the same kind, white where it is hidden
};

template <class Sample>
KindCase Kind(const char* what, const ImageShape& shape) {
    std::vector<Sample> image;
    std::vector<Sample> mask;
    for (std::size_t i = 0; i < kPixels * shape.samples; ++i) {
        image.push_back(static_cast<Sample>(i * 7 % 120));
        mask.push_back(static_cast<Sample>(IsHidden(i / shape.samples) ? 255 : 0));
    }
    return {what, Picture(shape, image), Picture(shape, mask)};
}

std::vector<KindCase> Kinds() {
    return {Kind<unsigned char>("grey bytes", {kSize, 1, 8, 8, 0, "MONOCHROME2"}),
            Kind<unsigned short>("grey words", {kSize, 1, 16, 12, 0, "MONOCHROME2"}),
            Kind<unsigned char>("colour", {kSize, 3, 8, 8, 0, "RGB"})};
}

void Show(CXDIPP& dipp, CDcmObject& object, int rotation, bool flip) {
    CDcmApp app;
    ASSERT_EQ(dipp.Initialize(&app, &object, kSize, 0), QVM_SUCCESS);
    dipp.UpdateZoom_ABS(1.0);
    dipp.UpdateRotate_ABS(rotation);
    if (flip) dipp.UpdateHFlip_Toggle();
}

// Where the mask lies in a turned picture is told by a picture of it that went the same way.
TEST(ShownShutter, LiesWhereThePictureOfItsMaskLies) {
    for (auto& kind : Kinds()) {
        for (int turn = 0; turn < 8; ++turn) {
            SCOPED_TRACE(std::string(kind.what) + " " + std::to_string(turn));
            CXDIPP image;
            CXDIPP mask;
            Show(image, kind.image, turn % 4 * 90, turn > 3);
            Show(mask, kind.mask, turn % 4 * 90, turn > 3);
            const auto hidden = Rendered(mask);
            auto expected = Rendered(image);
            for (std::size_t i = 0; i < expected.size(); ++i) {
                if (hidden[i] > 128) expected[i] = kHidden;
            }
            image.ShowShutter(1);
            EXPECT_EQ(Rendered(image), expected);
            image.Inverse();
            for (auto& value : expected) {
                if (value != kHidden) value = 255 - value;
            }
            EXPECT_EQ(Rendered(image), expected);
        }
    }
}

TEST(ShownShutter, IsShownOnlyWhileAskedFor) {
    auto kinds = Kinds();
    CXDIPP plain;
    CXDIPP asked;
    Show(plain, kinds[0].image, 0, false);
    Show(asked, kinds[0].image, 0, false);
    asked.ShowShutter(1);
    const auto shuttered = Rendered(asked);
    EXPECT_NE(shuttered, Rendered(plain));
    CXDIPP copy(asked);
    EXPECT_EQ(Rendered(copy), shuttered);
    asked.ShowShutter(0);
    EXPECT_EQ(Rendered(asked), Rendered(plain));
}

TEST(ShownShutter, HidesSupplementalColours) {
    auto kinds = Kinds();
    CXDIPP dipp;
    Show(dipp, kinds[0].image, 0, false);
    const CXDIPPInspector inspector{dipp};
    inspector.RenderMode() = kRenderSupplementalPalette;
    inspector.PaletteImage() = {std::make_unique<unsigned char[]>(kPixels * 3), kPixels * 3};
    std::fill_n(inspector.PaletteImage().data.get(), kPixels * 3, 77);
    dipp.ShowShutter(1);
    const auto shown = Rendered(dipp);
    ASSERT_EQ(shown.size(), kPixels * 3);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        ASSERT_EQ(shown[i], IsHidden(i / 3) ? kHidden : 77) << i;
    }
    EXPECT_EQ(inspector.PaletteImage().data[0], 77);  // the layer itself is as before
}

TEST(ShownShutter, OfAStateReplacesThatOfTheImage) {
    auto kinds = Kinds();
    CDcmApp app;
    const auto shownUnder = [&](CDcmObject& state) {
        CXDIPP dipp;
        Show(dipp, kinds[0].image, 0, false);
        dipp.ShowShutter(1);
        dipp.ApllyGSPSObject(&app, &state);
        return std::ranges::count(Rendered(dipp), kHidden);
    };
    CDcmObject bare;
    EXPECT_EQ(shownUnder(bare), 0);
    CDcmObject state;
    AddShutter(state);
    EXPECT_EQ(shownUnder(state), 12 * 8 - 6 * 4);
    state.SetValue(0x00280010, static_cast<unsigned short>(3));  // a mask smaller than the image
    state.SetValue(0x00280011, static_cast<unsigned short>(4));
    EXPECT_EQ(shownUnder(state), 0);
}

}  // namespace
}  // namespace quorvex
