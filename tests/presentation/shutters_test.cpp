// Display shutters, and the mask of mask subtraction.
#include "presentation/presentation_reader.h"
#include "quorvex/Limits.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

CDcmObject ShutteredImage(const char* shape, int columns, int rows) {
    CDcmObject image;
    image.SetValue(0x00181600, shape);
    image.SetValue(0x00181622, static_cast<unsigned short>(0x1234));
    image.SetValue(0x00280011, static_cast<unsigned short>(columns));
    image.SetValue(0x00280010, static_cast<unsigned short>(rows));
    return image;
}

std::vector<std::uint8_t> Mask(const CXGSPSInfo& info, std::size_t size) {
    if (info.shutterMask == nullptr) return {};
    return {info.shutterMask, info.shutterMask + size};
}

TEST(Shutters, RectangleEdgesCountAsTheyStand) {
    CDcmObject image = ShutteredImage("RECTANGULAR", 512, 512);
    image.SetValue(0x00181602, 1);
    image.SetValue(0x00181604, 512);
    image.SetValue(0x00181606, 1);
    {
        Record info;
        ReadImage(image, info);  // no lower edge: all shut, the other edges known
        EXPECT_EQ(std::ranges::count(Mask(info, 512 * 512), 255), 512 * 512);
        EXPECT_EQ(info.shutterRight, 512);
    }
    image.SetValue(0x00181608, 512);
    Record info;
    ReadImage(image, info);
    const auto mask = Mask(info, 512 * 512);
    EXPECT_EQ(std::ranges::count(mask, 255), 512 + 511);
    EXPECT_EQ(mask.at(512 + 1), 0);
    EXPECT_EQ(mask.at(512), 255);
    EXPECT_EQ(info.shutterPresentationValue, 0x1234);
}

TEST(Shutters, AFewBytesMakeNoMaskOfGigabytes) {
    CDcmObject state = ShutteredImage("RECTANGULAR", 65535, 65535);
    Record info;
    ForgetLimit();
    ReadImage(state, info);
    EXPECT_EQ(info.shutterMask, nullptr);
    EXPECT_EQ(LatestLimit(), Limit::kLargestPicture);
    CDcmObject large = ShutteredImage("RECTANGULAR", 65535, 1200);
    Record known;
    known.imageColumns = 65535;
    known.imageRows = 1200;
    ReadImage(large, known);
    EXPECT_NE(known.shutterMask, nullptr) << "an image that is there";
}

TEST(Shutters, WithoutAShapeOrWithTwoThereIsNone) {
    CDcmObject image = ShutteredImage("RECTANGULAR", 4, 4);
    image.SetNextValue(0x00181600, "CIRCULAR");
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(info.shutterMask, nullptr);
    EXPECT_EQ(info.shutterPresentationValue, 0x1234);
    image.RemoveValue(0x00181600);
    ReadImage(image, info);
    EXPECT_EQ(info.shutterPresentationValue, 0);
}

TEST(Shutters, CircleIsRoundItsCentre) {
    CDcmObject image = ShutteredImage("CIRCULAR", 40, 40);
    Put(image, 0x00181610, {20, 15});
    {
        Record info;
        ReadImage(image, info);
        EXPECT_EQ(std::ranges::count(Mask(info, 1600), 255), 1600);
        EXPECT_EQ(info.shutterCenterRow, 20);
    }
    image.SetValue(0x00181612, 10);
    Record info;
    ReadImage(image, info);
    const auto mask = Mask(info, 1600);
    EXPECT_EQ(info.shutterCenterColumn, 15);
    EXPECT_EQ(info.shutterRadius, 10);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            const double distance = std::hypot(x - 14, y - 19);
            const int byte = mask.at(static_cast<std::size_t>(y * 40 + x));
            const int expected = distance < 7.5 ? 0 : distance > 9.5 ? 255 : byte;
            EXPECT_EQ(byte, expected) << x << "," << y;
        }
    }
}

TEST(Shutters, PolygonDropsTheOddValue) {
    CDcmObject image = ShutteredImage("POLYGONAL", 6, 6);
    {
        Record info;
        ReadImage(image, info);
        EXPECT_EQ(std::ranges::count(Mask(info, 36), 255), 36);
    }
    Put(image, 0x00181620, {1, 2, 1, 4, 5, 4, 5, 2, 9});
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(info.shutterVertices, (std::vector<CPoint>{{2, 1}, {4, 1}, {4, 5}, {2, 5}}));
    const auto mask = Mask(info, 36);
    EXPECT_EQ(std::ranges::count(mask, 0), 2 * 4);
    EXPECT_EQ(mask.at(6 + 2), 0);
}

TEST(Shutters, ABitmapWithoutItsOverlayShowsAll) {
    CDcmObject image = ShutteredImage("BITMAP", 5, 3);
    image.SetValue(0x00181623, static_cast<unsigned short>(0x6002));
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(std::ranges::count(Mask(info, 15), 0), 15);
}

TEST(Shutters, AStateTakesItsSizeFromTheRecord) {
    CDcmObject state;
    state.SetValue(0x00181600, "POLYGONAL");
    Record info;
    info.imageColumns = 3;
    info.imageRows = 2;
    ReadState(state, info);
    EXPECT_EQ(std::ranges::count(Mask(info, 6), 255), 6);
}

TEST(MaskSubtraction, ReadsItsFirstItem) {
    CDcmItem item;
    Put(item, 0x00286102,
        {static_cast<unsigned short>(1), static_cast<unsigned short>(4),
         static_cast<unsigned short>(6), static_cast<unsigned short>(9),
         static_cast<unsigned short>(11)});
    item.SetValue(0x00286101, "AVG_SUB");
    Put(item, 0x00286110, {static_cast<unsigned short>(2), static_cast<unsigned short>(3)});
    item.SetValue(0x00286112, static_cast<unsigned short>(5));
    Put(item, 0x00286114, {0.5, -1.5});
    CDcmObject image;
    image.SetValue(0x00281090, "SUB");
    Record none;
    PresentationReader(image, none, {}, -1).GetMask();
    EXPECT_TRUE(none.recommendedViewingMode.IsEmpty());

    PutItems(image, 0x00286100, {item});
    Record info;
    PresentationReader(image, info, {}, -1).GetMask();
    ASSERT_EQ(info.maskFrameRangeCount, 2);
    EXPECT_EQ(info.maskFrameRanges[1].first, 6U);
    EXPECT_EQ(info.maskFrameRanges[1].last, 9U);
    EXPECT_EQ(Entries(info.maskFrameNumbers, info.maskFrameCount), (std::vector<int>{2, 3}));
    EXPECT_EQ(info.contrastFrameAveraging, 5);
    EXPECT_EQ(info.maskSubPixelShiftRow, 0.5F);
    EXPECT_EQ(info.maskSubPixelShiftColumn, -1.5F);
    EXPECT_EQ(info.recommendedViewingMode, CString("SUB"));
}

}  // namespace
}  // namespace quorvex
