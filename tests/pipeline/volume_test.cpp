// Images of a loaded volume: palettes, colours over grey, overlays burnt in.
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/overlay_objects.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace pipeline_test;

constexpr int kPalette = 2;
constexpr int kSupplemental = 3;
constexpr int kOverlays = 5;
constexpr int kPlain = 0;

/// A grey or colour volume; its window shows a byte as it is.
struct TestVolume {
    std::vector<unsigned char> bytes;
    CLData data;

    TestVolume(CSize size, unsigned short bits, std::vector<unsigned char> content,
               unsigned short samples = 1)
        : bytes(std::move(content)) {
        data.pixels = bytes.data();
        data.width = size.cx;
        data.height = size.cy;
        data.samplesPerPixel = samples;
        data.bitsAllocated = bits;
        data.bitsStored = bits;
        data.photometricInterpretation = samples == 1 ? "MONOCHROME2" : "RGB";
        data.windowCenter = 128;
        data.windowWidth = 256;
        data.pixelSpacingX = 0.5;
        data.pixelSpacingY = 0.5;
        data.aspectRatioHorizontal = 1;
        data.aspectRatioVertical = 1;
    }
};

std::vector<unsigned char> Repeated(int count, unsigned char value) {
    return std::vector<unsigned char>(static_cast<std::size_t>(count), value);
}

/// The picture at a zoom of 1, top row first.
std::vector<int> Shown(CXDIPP& dipp) {
    dipp.UpdateZoom_ABS(1.0);
    return Rendered(dipp);
}

TEST(VolumeImage, ShowsPlainBytesAndWords) {
    TestVolume bytes({4, 2}, 8, {0, 10, 20, 30, 200, 210, 220, 230});
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&bytes.data, {8, 8}, 255, 0), QVM_SUCCESS);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(shown[i], bytes.bytes[i], 1) << i;

    TestVolume words({4, 1}, 16, {0, 0, 100, 0, 0xFF, 0, 0, 0x40});
    ASSERT_EQ(dipp.Initialize(&words.data, {8, 8}, 20000, 0), QVM_SUCCESS);
    const auto grey = Shown(dipp);
    EXPECT_NEAR(grey[1], 100, 1);
    EXPECT_EQ(grey[3], 255);
    words.data.photometricInterpretation = "MONOCHROME1";
    ASSERT_EQ(dipp.Initialize(&words.data, {8, 8}, 20000, 0), QVM_SUCCESS);
    EXPECT_EQ(Shown(dipp)[3], 0);
}

TEST(VolumeImage, FillsTheRecordAndKeepsRotationAndFlip) {
    TestVolume volume({8, 4}, 8, Repeated(32, 9));
    volume.data.pixelSpacingY = 0.75;
    volume.data.aspectRatioHorizontal = 0;
    CXDIPP dipp;
    dipp.UpdateRotate_ABS(90);
    dipp.UpdateHFlip_Toggle();
    ASSERT_EQ(dipp.Initialize(&volume.data, {64, 64}, 255, 0), QVM_SUCCESS);
    const CXDIPPInspector look{dipp};
    EXPECT_EQ(look.Rotation(), 90);
    EXPECT_EQ(look.HorizontalFlip(), 1);
    EXPECT_EQ(look.Record().windowCenter, 128);
    EXPECT_EQ(look.Record().imageColumns, 8);
    EXPECT_EQ(look.Record().pixelBitDepth, 8);
    EXPECT_EQ(look.AspectRatio(), 1.5);
    double x = 0;
    double y = 0;
    dipp.GetPixelSpace(x, y);
    EXPECT_EQ(x, 0.5);
    EXPECT_EQ(y, 0.75);
}

TEST(VolumeImage, RefusesWhatIsNoImageAndKeepsTheOneOnShow) {
    TestVolume good({4, 1}, 8, {0, 80, 160, 240});
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&good.data, {8, 8}, 255, 0), QVM_SUCCESS);
    const auto shown = Shown(dipp);
    const auto expectRefused = [&](CLData* data) {
        EXPECT_EQ(dipp.Initialize(data, {8, 8}, 255, 0), QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
        EXPECT_EQ(dipp.Initialize(nullptr, data, {8, 8}, 255, 0, kOverlays),
                  QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    };
    expectRefused(nullptr);
    for (auto change : {+[](CLData& d) { d.pixels = nullptr; }, +[](CLData& d) { d.width = 0; },
                        +[](CLData& d) { d.height = -4; }, +[](CLData& d) { d.bitsAllocated = 0; },
                        +[](CLData& d) { d.samplesPerPixel = 0; }}) {
        CLData bad = good.data;
        change(bad);
        expectRefused(&bad);
    }
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderPlain);
    EXPECT_EQ(Rendered(dipp), shown);
}

TEST(VolumeImage, ExpandsAPalette) {
    CDcmObject object;
    SetPicture(object, {4, 1}, 8);
    AddPalette(object, {0, {0, 256 * 255, 0, 256}}, {0, {0, 0, 256 * 255, 0}},
               {0, {0, 0, 0, 256 * 128}}, 16);
    TestVolume volume({4, 1}, 8, {0, 1, 2, 3});
    volume.data.photometricInterpretation = "PALETTE COLOR";
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 3, 0, kPalette), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderPalette);
    dipp.UpdateVOILUT_ABS(128, 255);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 12U);
    const int expected[] = {0, 0, 0, 0, 0, 254, 0, 254, 0, 127, 0, 0};  // blue, green, red
    for (std::size_t i = 0; i < 12; ++i) EXPECT_NEAR(shown[i], expected[i], 1) << i;

    object.RemoveValue(0x00281202);
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 3, 0, kPalette), QVM_SUCCESS);
    EXPECT_EQ(Shown(dipp).size(), 4U) << "indices as grey";

    TestVolume colours({4, 1}, 8, {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255});
    ASSERT_EQ(dipp.Initialize(nullptr, &colours.data, {8, 8}, 3, 0, kPalette), QVM_SUCCESS);
    EXPECT_EQ(Shown(dipp).size(), 12U);
}

TEST(VolumeImage, ShowsASupplementalPaletteOverGrey) {
    CDcmObject object;
    SetPicture(object, {4, 2}, 8);
    AddPalette(object, {200, {250, 0}}, {200, {0, 100}}, {200, {5, 0}}, 8);
    TestVolume volume({4, 2}, 8, {0, 50, 199, 202, 200, 201, 100, 255});
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 255, 0, kSupplemental), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderSupplementalPalette);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 24U);
    const int expected[8][3] = {{0, 0, 0},   {50, 50, 50}, {199, 199, 199}, {202, 202, 202},
                                {4, 0, 249}, {0, 99, 0},   {100, 100, 100}, {255, 255, 255}};
    for (std::size_t i = 0; i < 24; ++i) EXPECT_NEAR(shown[i], expected[i / 3][i % 3], 1) << i;

    // Without an object the layer stays; over another size it is not drawn.
    ASSERT_EQ(dipp.Initialize(nullptr, &volume.data, {8, 8}, 255, 0, kSupplemental), QVM_SUCCESS);
    EXPECT_EQ(Shown(dipp), shown);
    TestVolume other({4, 1}, 8, {9, 9, 200, 201});
    ASSERT_EQ(dipp.Initialize(nullptr, &other.data, {8, 8}, 255, 0, kSupplemental), QVM_SUCCESS);
    const auto grey = Shown(dipp);
    ASSERT_EQ(grey.size(), 12U);
    EXPECT_NEAR(grey[6], 200, 1);
    EXPECT_EQ(grey[6], grey[8]);
}

TEST(VolumeImage, ScalesWideEntriesOfASupplementalPalette) {
    CDcmObject object;
    SetPicture(object, {4, 1}, 16);
    AddPalette(object, {40000, {0x8000}}, {40000, {0x4000}}, {40000, {0xFF00}}, 16);
    TestVolume volume({4, 1}, 16,
                      {0, 0, 0x40, 0x9C, 0x41, 0x9C, 0, 0x10});  // 0, 40000, 40001, 4096
    volume.data.windowCenter = 4096;
    volume.data.windowWidth = 8192;
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 65535, 0, kSupplemental), QVM_SUCCESS);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 12U);
    EXPECT_EQ(std::vector<int>(shown.begin() + 3, shown.begin() + 9),
              (std::vector{254, 63, 127, 255, 255, 255}));
    EXPECT_NEAR(shown[9], 127, 2);
}

TEST(VolumeImage, BurnsOverlaysIn) {
    const CSize size{8, 4};
    CDcmObject object;
    SetPicture(object, size, 8);
    const TestOverlay overlay{4, 8, 1, 1, 1, 0, {0x01, 0x80, 0x3C, 0x07}};
    AddOverlay(object, 0x6000, overlay);
    TestVolume volume(size, 8, Repeated(32, 100));
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {16, 16}, 255, 0, kOverlays), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderOverlay);
    const auto shown = Shown(dipp);
    ASSERT_EQ(shown.size(), 32U);
    for (int i = 0; i < 32; ++i) {
        EXPECT_NEAR(shown[static_cast<std::size_t>(i)], overlay.Covers(i / 8, i % 8) ? 255 : 100, 1)
            << i;
    }
    ASSERT_EQ(dipp.Initialize(nullptr, &volume.data, {16, 16}, 255, 0, kOverlays), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderOverlay);
    EXPECT_EQ(std::ranges::count(Shown(dipp), 255), 0);
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {16, 16}, 255, 0, kPlain), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderPlain);
    EXPECT_EQ(std::ranges::count(Shown(dipp), 255), 0);
}

TEST(VolumeImage, OverlaysOfAColourImageHaveTheirColour) {
    CDcmObject object;
    SetPicture(object, {4, 1}, 8, 3);
    AddOverlay(object, 0x6000, {1, 4, 1, 1, 1, 0, {0x02, 0}});
    object.SetValue(0x60001202, static_cast<unsigned short>(0));
    object.SetValue(0x60001203, static_cast<unsigned short>(0));
    TestVolume volume({4, 1}, 8, Repeated(12, 0), 3);
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 255, 0, kOverlays), QVM_SUCCESS);
    EXPECT_EQ(Shown(dipp), (std::vector{0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0}));
}

TEST(VolumeImage, TakesSizesFromTheVolume) {
    CDcmObject object;
    SetPicture(object, {60000, 60000}, 16, 3);
    AddOverlay(object, 0x6000, {1, 4, 1, 1, 1, 0, {0x02, 0}});
    AddPalette(object, {0, {5}}, {0, {6}}, {0, {7}}, 8);
    TestVolume volume({4, 1}, 8, Repeated(4, 0));
    CXDIPP dipp;
    for (const int kind : {kPalette, kSupplemental, kOverlays}) {
        ASSERT_EQ(dipp.Initialize(&object, &volume.data, {8, 8}, 255, 0, kind), QVM_SUCCESS);
        EXPECT_EQ(Shown(dipp).size(), kind == kOverlays ? 4U : 12U) << kind;
    }
    EXPECT_EQ(Shown(dipp), (std::vector{0, 255, 0, 0}));
}

TEST(ShownOverlays, AreThoseOfTheHeaderAndGoAgain) {
    CDcmApp app;
    CDcmObject object;
    const CSize size{8, 2};
    std::vector<std::uint16_t> words(16, 100);
    words[3] = 100 | 0x8000;
    FillImage(object, {.size = size}, words);
    AddOverlay(object, 0x6000, {2, 8, 1, 1, 16, 15});
    AddOverlay(object, 0x6002, {1, 3, 2, 6, 1, 0, {0x05, 0}});
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, &object, {16, 16}, 0), QVM_SUCCESS);
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
    EXPECT_EQ(CXDIPPInspector{dipp}.RenderMode(), kRenderPlain);
}

}  // namespace
}  // namespace quorvex
