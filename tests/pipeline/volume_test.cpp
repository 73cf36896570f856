// Images of a loaded volume: palettes, colours over grey, overlays burnt in.
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <algorithm>

namespace quorvex::pipeline_test {
namespace {

constexpr int kPlain = 0;
constexpr int kPalette = 2;
constexpr int kSupplemental = 3;
constexpr int kOverlays = 5;
constexpr CSize kView{8, 8};
const TestOverlay kSecondPixel{1, 4, 1, 1, 1, 0, {0x02, 0}};

/// The picture of a volume at a zoom of 1.
Values Show(CXDIPP& dipp, CDcmObject* object, TestVolume& volume, int kind, int maxValue = 255) {
    EXPECT_EQ(dipp.Initialize(object, &volume.data, kView, maxValue, 0, kind), QVM_SUCCESS);
    return Shown(dipp);
}
Values Show(CXDIPP& dipp, TestVolume& volume, int maxValue = 255) {
    EXPECT_EQ(dipp.Initialize(&volume.data, kView, maxValue, 0), QVM_SUCCESS);
    return Shown(dipp);
}

TEST(VolumeImage, ShowsPlainBytesAndWords) {
    TestVolume bytes({4, 2}, 8, {0, 10, 20, 30, 200, 210, 220, 230});
    CXDIPP dipp;
    ExpectNear(Show(dipp, bytes), bytes.bytes);
    TestVolume words({4, 1}, 16, {0, 0, 100, 0, 0xFF, 0, 0, 0x40});
    ExpectNear(Show(dipp, words, 20000), Values{0, 100, 255, 255});
    words.data.photometricInterpretation = "MONOCHROME1";
    ExpectNear(Show(dipp, words, 20000), Values{255, 155, 0, 0});
}

TEST(VolumeImage, BringsItsWindowAndSpacingAndKeepsRotationAndFlip) {
    Bytes content(8 * 4);
    content[0] = 255;  // upper left
    TestVolume volume({8, 4}, 8, content);
    volume.data.pixelSpacingY = 0.75;
    volume.data.aspectRatioHorizontal = 0;
    CXDIPP dipp;
    dipp.UpdateRotate_ABS(90);
    dipp.UpdateHFlip_Toggle();
    ASSERT_EQ(dipp.Initialize(&volume.data, {128, 48}, 255, 0), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp), (CSize{256, 128}));
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 8.0) << "48 pixels for 4 rows, 1.5 as high as wide";
    double x = 0;
    double y = 0;
    dipp.GetPixelSpace(x, y);
    EXPECT_EQ(x, 0.5);
    EXPECT_EQ(y, 0.75);
    volume.data.windowWidth = 0;
    Show(dipp, volume, 100);
    EXPECT_EQ(WindowOf(dipp), (CSize{256, 128})) << "that of 8-bit images";
    Show(dipp, nullptr, volume, kPlain, 100);
    EXPECT_EQ(WindowOf(dipp), (CSize{100, 50})) << "the full range";
    volume.data.pixelSpacingY = 0.5;
    const Values shown = Show(dipp, volume);
    EXPECT_EQ(ResultSize(dipp), (CSize{4, 8}));
    EXPECT_EQ(std::ranges::max_element(shown) - shown.begin(), 31) << "flipped, then turned";
}

TEST(VolumeImage, RefusesWhatIsNoImageAndKeepsTheOneOnShow) {
    TestVolume good({4, 1}, 8, {0, 80, 160, 240});
    CXDIPP dipp;
    const auto shown = Show(dipp, good);
    std::vector<CLData> bad(5, good.data);
    bad[0].pixels = nullptr;
    bad[1].width = 0;
    bad[2].height = -4;
    bad[3].bitsAllocated = 0;
    bad[4].samplesPerPixel = 0;
    for (int i = -1; i < 5; ++i) {
        CLData* const data = i < 0 ? nullptr : &bad[static_cast<std::size_t>(i)];
        EXPECT_EQ(dipp.Initialize(data, kView, 255, 0), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA) << i;
        EXPECT_EQ(dipp.Initialize(nullptr, data, kView, 255, 0, kSupplemental),
                  QVM_ERROR_FAILED_TO_GET_PIXEL_DATA)
            << i;
        EXPECT_EQ(Rendered(dipp), shown) << i;  // a supplemental image would be in colour
    }
}

TEST(VolumeImage, ExpandsAPalette) {
    CDcmObject object = Picture({4, 1}, 8);
    AddPalette(object, {0, {0, 256 * 255, 0, 256}}, {0, {0, 0, 256 * 255, 0}},
               {0, {0, 0, 0, 256 * 128}}, 16);
    TestVolume volume({4, 1}, 8, {0, 1, 2, 3});
    volume.data.photometricInterpretation = "PALETTE COLOR";
    CXDIPP dipp;
    Show(dipp, &object, volume, kPalette, 3);
    dipp.UpdateVOILUT_ABS(128, 255);
    ExpectNear(Rendered(dipp),
               Values{0, 0, 0, 0, 0, 254, 0, 254, 0, 127, 0, 0});  // blue, green, red

    object.RemoveValue(tag::kGreenPaletteColorLookupTableData);
    EXPECT_EQ(Show(dipp, &object, volume, kPalette, 3).size(), 4U) << "indices as grey";
    TestVolume colours({4, 1}, 8, {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255});
    EXPECT_EQ(Show(dipp, nullptr, colours, kPalette, 3).size(), 12U);
}

TEST(VolumeImage, ShowsASupplementalPaletteOverGrey) {
    CDcmObject object = Picture({4, 2}, 8);
    AddPalette(object, {200, {250, 0, 0}}, {200, {0, 100, 0}}, {200, {5, 0, 0}}, 8);
    TestVolume volume({4, 2}, 8, {0, 50, 199, 202, 200, 201, 203, 255});
    CXDIPP dipp;
    const auto shown = Show(dipp, &object, volume, kSupplemental);
    // The black of a palette is a colour, too: it is not the grey below.
    ExpectNear(shown, Values{0, 0, 0,   50, 50, 50, 199, 199, 199, 1,   1,   1,  //
                             4, 0, 249, 0,  99, 0,  203, 203, 203, 255, 255, 255});

    // Without an object the layer stays; over another size it is not drawn.
    EXPECT_EQ(Show(dipp, nullptr, volume, kSupplemental), shown);
    TestVolume other({4, 1}, 8, {9, 9, 200, 201});
    const auto grey = Show(dipp, nullptr, other, kSupplemental);
    ASSERT_EQ(grey.size(), 12U);
    EXPECT_NEAR(grey[6], 200, 1);
    EXPECT_EQ(grey[6], grey[8]);
}

TEST(VolumeImage, ScalesWideEntriesOfASupplementalPalette) {
    CDcmObject object = Picture({4, 1}, 16);
    AddPalette(object, {40000, {0x8000}}, {40000, {0x4000}}, {40000, {0xFF00}}, 16);
    TestVolume volume({4, 1}, 16,
                      {0, 0, 0x40, 0x9C, 0x41, 0x9C, 0, 0x10});  // 0, 40000, 40001, 4096
    volume.data.windowCenter = 4096;
    volume.data.windowWidth = 8192;
    CXDIPP dipp;
    const auto shown = Show(dipp, &object, volume, kSupplemental, 65535);
    ASSERT_EQ(shown.size(), 12U);
    EXPECT_EQ(Values(shown.begin() + 3, shown.begin() + 9), (Values{254, 63, 127, 255, 255, 255}));
    EXPECT_NEAR(shown[9], 127, 2);
}

TEST(VolumeImage, ColoursNegativeValuesInATableThatEndsAbove0) {
    CDcmObject object = test::With(Picture({4, 1}, 16), "PixelRepresentation=1");
    AddPalette(object, {-100, Words(200, 0x8000)}, {-100, Words(200, 0x4000)},
               {-100, Words(200, 0xFF00)}, 16);
    TestVolume volume({4, 1}, 16, {0xC4, 0xFF, 99, 0, 100, 0, 0x9B, 0xFF});  // -60, 99, 100, -101
    volume.data.pixelRepresentation = 1;
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, kView, 255, -128, kSupplemental), QVM_SUCCESS);
    ExpectNear(Shown(dipp), Values{254, 63, 127, 254, 63, 127, 100, 100, 100, 0, 0, 0});
}

TEST(VolumeImage, BurnsOverlaysIn) {
    const CSize size{8, 4};
    const TestOverlay overlay{4, 8, 1, 1, 1, 0, {0x01, 0x80, 0x3C, 0x07}};
    CDcmObject object = Picture(size, 8, {overlay});
    TestVolume volume(size, 8, Repeated(32, 100));
    Values burnt;
    for (int i = 0; i < 32; ++i) burnt.push_back(overlay.Covers(i / 8, i % 8) ? 255 : 100);
    CXDIPP dipp;
    ExpectNear(Show(dipp, &object, volume, kOverlays), burnt);
    ExpectNear(Show(dipp, volume), burnt);  // the layer stays ...
    TestVolume other({12, 4}, 8, Repeated(48, 100));
    EXPECT_EQ(std::ranges::count(Show(dipp, other), 255), 0);  // ... but not over another size
    EXPECT_EQ(std::ranges::count(Show(dipp, nullptr, volume, kOverlays), 255), 0);
    EXPECT_EQ(std::ranges::count(Show(dipp, &object, volume, kPlain), 255), 0);
}

TEST(VolumeImage, OverlaysOfAColourImageHaveTheirColour) {
    CDcmObject object =
        test::With(Picture({4, 1}, 8, {kSecondPixel}, 3), "OverlaysGreen=0; OverlaysBlue=0");
    TestVolume volume({4, 1}, 8, Repeated(12, 0), 3);
    CXDIPP dipp;
    EXPECT_EQ(Show(dipp, &object, volume, kOverlays),
              (Values{0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0}));
}

TEST(VolumeImage, TakesSizesFromTheVolume) {
    CDcmObject object = Picture({60000, 60000}, 16, {kSecondPixel}, 3);
    AddPalette(object, {0, {5}}, {0, {6}}, {0, {7}}, 8);
    TestVolume volume({4, 1}, 8, Repeated(4, 0));
    CXDIPP dipp;
    for (const int kind : {kPalette, kSupplemental})
        EXPECT_EQ(Show(dipp, &object, volume, kind).size(), 12U) << kind;
    EXPECT_EQ(Show(dipp, &object, volume, kOverlays), (Values{0, 255, 0, 0}));
}

TEST(ShownOverlays, AreThoseOfTheHeaderAndGoAgain) {
    Words words(16, 100);
    words[3] = 100 | 0x8000;
    CDcmObject object = ImageOf({{8, 2}}, words);
    AddOverlay(object, 0x6000, {2, 8, 1, 1, 16, 15});
    AddOverlay(object, 0x6002, {1, 3, 2, 6, 1, 0, {0x05, 0}});
    CXDIPP dipp;
    ShowObject(dipp, object, {16, 16});
    dipp.UpdateVOILUT_ABS(100, 200);
    const auto without = Shown(dipp);
    EXPECT_EQ(std::ranges::count(without, 255), 0);
    dipp.ShowOverlays(1);
    CXDIPP copy(dipp);
    auto expected = without;
    for (const std::size_t marked : {3U, 13U, 15U}) expected[marked] = 255;
    EXPECT_EQ(Shown(dipp), expected);
    EXPECT_EQ(Shown(copy), expected);
    dipp.ShowOverlays(0);
    EXPECT_EQ(Shown(dipp), without);
}

}  // namespace
}  // namespace quorvex::pipeline_test
