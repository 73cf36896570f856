#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <algorithm>
#include <string>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kSize{12, 8};
constexpr std::size_t kPixels = 96;
constexpr int kHidden = 0x9A;  // of 39612, 0x9ABC

// What a rectangle from column 3 to 9 and row 2 to 6 leaves in sight.
bool IsHidden(std::size_t pixel) {
    const std::size_t x = pixel % 12;
    const std::size_t y = pixel / 12;
    return x < 3 || x >= 9 || y < 2 || y >= 6;
}

constexpr const char* kShutter =
    "ShutterShape=RECTANGULAR; ShutterLeftVerticalEdge=3; ShutterRightVerticalEdge=9; "
    "ShutterUpperHorizontalEdge=2; ShutterLowerHorizontalEdge=6; ShutterPresentationValue=39612";

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
    const std::string all = std::string("WindowCenter=128; WindowWidth=256; ") + kShutter;
    return {what, ImageOf(shape, image, all), ImageOf(shape, mask, all)};
}

KindCase GreyBytes() {
    return Kind<unsigned char>("grey bytes", {kSize, 1, 8, 8});
}

void Show(CXDIPP& dipp, CDcmObject& object, int turn = 0) {
    ShowObject(dipp, object, kSize);
    dipp.UpdateZoom_ABS(1.0);
    dipp.UpdateRotate_ABS(turn % 4 * 90);
    if (turn > 3) dipp.UpdateHFlip_Toggle();
}

// A picture of the mask that was turned in the same way says where the mask lies.
TEST(ShownShutter, LiesWhereThePictureOfItsMaskLies) {
    KindCase kinds[] = {GreyBytes(), Kind<unsigned short>("grey words", {kSize}),
                        Kind<unsigned char>("colour", {kSize, 3, 8, 8, 0, "RGB"})};
    for (auto& kind : kinds) {
        for (int turn = 0; turn < 8; ++turn) {
            SCOPED_TRACE(std::string(kind.what) + " " + std::to_string(turn));
            CXDIPP image;
            CXDIPP mask;
            Show(image, kind.image, turn);
            Show(mask, kind.mask, turn);
            const auto hidden = Rendered(mask);
            const auto plain = Rendered(image);
            auto expected = plain;
            for (std::size_t i = 0; i < expected.size(); ++i)
                if (hidden[i] > 128) expected[i] = kHidden;
            image.ShowShutter(1);
            CXDIPP copy(image);
            EXPECT_EQ(Rendered(image), expected);
            EXPECT_EQ(Rendered(copy), expected);
            copy.ShowShutter(0);
            EXPECT_EQ(Rendered(copy), plain);
            image.Inverse();
            for (auto& value : expected)
                if (value != kHidden) value = 255 - value;
            EXPECT_EQ(Rendered(image), expected);
        }
    }
}

// A supplemental palette of a volume stays for an image with a shutter that comes after it.
TEST(ShownShutter, HidesSupplementalColours) {
    CDcmObject palette;
    const TestTable grey{0, std::vector<std::uint16_t>(256, 78)};
    AddPalette(palette, grey, grey, grey, 8);
    TestVolume volume(kSize, 8, Repeated(kPixels, 5));
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&palette, &volume.data, kSize, 255, 0, 3), QVM_SUCCESS);
    auto kind = GreyBytes();
    Show(dipp, kind.image);
    const Values coloured(kPixels * 3, 77);  // 78 x 255 / 256
    EXPECT_EQ(Rendered(dipp), coloured);
    dipp.ShowShutter(1);
    Values expected = coloured;
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (IsHidden(i / 3)) expected[i] = kHidden;
    EXPECT_EQ(Rendered(dipp), expected);
    dipp.ShowShutter(0);
    EXPECT_EQ(Rendered(dipp), coloured);
}

TEST(ShownShutter, OfAStateReplacesThatOfTheImage) {
    auto kind = GreyBytes();
    const auto hiddenUnder = [&](CDcmObject state) {
        CDcmApp app;
        CXDIPP dipp;
        Show(dipp, kind.image);
        dipp.ShowShutter(1);
        dipp.ApllyGSPSObject(&app, &state);
        return std::ranges::count(Rendered(dipp), kHidden);
    };
    EXPECT_EQ(hiddenUnder(CDcmObject()), 0);
    EXPECT_EQ(hiddenUnder(test::With(kShutter)), 12 * 8 - 6 * 4);
    EXPECT_EQ(hiddenUnder(test::With(test::With("Rows=3; Columns=4"), kShutter)), 0)
        << "a mask smaller than the image";
}

}  // namespace
}  // namespace quorvex::pipeline_test
