// Display shutters, and the mask of mask subtraction.
#include "presentation/presentation_reader.h"
#include "quorvex/Limits.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/presentation/record_text.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>

namespace quorvex {
namespace {

using namespace test;

constexpr unsigned int kShutter = 1;

CDcmObject Shuttered(const char* shape, int columns, int rows, const std::string& attributes = "") {
    auto image = With(attributes);
    image.SetValue(0x00181600, shape);
    image.SetValue(0x00181622, "4660");
    image.SetValue(0x00280011, columns);
    image.SetValue(0x00280010, rows);
    return image;
}

std::vector<std::uint8_t> ReadMask(CDcmObject object, std::size_t size, Record&& info = Record()) {
    CXGSPSObject().GetGSPSModule(kShutter, &object, &info);
    if (info.shutterMask == nullptr) return {};
    return {info.shutterMask, info.shutterMask + size};
}

std::ptrdiff_t Shut(const std::vector<std::uint8_t>& mask) {
    return std::ranges::count(mask, 255);
}

TEST(Shutters, PutTheirGeometryIntoTheRecord) {
    const std::pair<CDcmObject, const char*> cases[] = {
        {Shuttered("RECTANGULAR", 8, 8, "00181602=1; 00181604=7; 00181606=2"),
         "left 1; upper 2; right 7; value 4660"},
        {Shuttered("RECTANGULAR", 8, 8, "00181608=6"), "lower 6; value 4660"},
        {Shuttered("CIRCULAR", 8, 8, "00181610=3\\4"), "row 3; column 4; value 4660"},
        {Shuttered("CIRCULAR", 8, 8, "00181612=5"), "radius 5; value 4660"},
        {Shuttered("BITMAP", 8, 8), "value 4660"},
        {Shuttered("RECTANGULAR\\CIRCULAR", 8, 8), "value 4660"},
        {Shuttered("ROUND", 8, 8), "value 4660"},
        {With("00181622=4660"), ""},
    };
    for (const auto& [image, read] : cases) {
        CDcmObject object = image;
        Record info;
        CXGSPSObject().GetGSPSModule(kShutter, &object, &info);
        EXPECT_EQ(TextOf(info), read);
    }
}

TEST(Shutters, ShutAllWhereTheGeometryIsNotWhole) {
    EXPECT_EQ(Shut(ReadMask(Shuttered("RECTANGULAR", 6, 6, "00181602=1"), 36)), 36);
    EXPECT_EQ(Shut(ReadMask(Shuttered("CIRCULAR", 6, 6, "00181610=3\\3"), 36)), 36);
    EXPECT_EQ(Shut(ReadMask(Shuttered("CIRCULAR", 6, 6, "00181612=3"), 36)), 36);
    EXPECT_EQ(Shut(ReadMask(Shuttered("POLYGONAL", 6, 6), 36)), 36);
    EXPECT_TRUE(ReadMask(Shuttered("RECTANGULAR\\CIRCULAR", 6, 6), 36).empty()) << "two shapes";
    EXPECT_TRUE(ReadMask(Shuttered("ROUND", 6, 6), 36).empty());
    EXPECT_EQ(Shut(ReadMask(Shuttered("RECTANGULAR", 6, 6, "00181608=6"), 36)), 0)
        << "edges that are not there do not bound";
}

TEST(Shutters, OfRectanglesCountEdgesAsTheyStand) {
    const auto mask = ReadMask(
        Shuttered("RECTANGULAR", 512, 512, "00181602=1; 00181604=512; 00181606=1; 00181608=512"),
        512 * 512);
    EXPECT_EQ(Shut(mask), 512 + 511);
    EXPECT_EQ(mask.at(512 + 1), 0);
    EXPECT_EQ(mask.at(512), 255);
}

TEST(Shutters, OfCirclesAreRound) {
    const auto mask = ReadMask(Shuttered("CIRCULAR", 40, 40, "00181610=20\\15; 00181612=10"), 1600);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            const double distance = std::hypot(x - 14, y - 19);
            const int byte = mask.at(static_cast<std::size_t>(y * 40 + x));
            const int expected = distance < 7.5 ? 0 : distance > 9.5 ? 255 : byte;
            EXPECT_EQ(byte, expected) << x << "," << y;
        }
    }
}

TEST(Shutters, OfPolygonsDropTheOddValue) {
    CDcmObject image = Shuttered("POLYGONAL", 6, 6, "00181620=1\\2\\1\\4\\5\\4\\5\\2\\9");
    const auto mask = ReadMask(image, 36);
    EXPECT_EQ(std::ranges::count(mask, 0), 2 * 4);
    EXPECT_EQ(mask.at(6 + 2), 0);
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(info.shutterVertices, (std::vector<CPoint>{{2, 1}, {4, 1}, {4, 5}, {2, 5}}));
}

TEST(Shutters, OfBitmapsShutWhereABitIsSet) {
    CDcmObject image = Shuttered("BITMAP", 5, 3, "00181623=24578");
    EXPECT_EQ(ReadMask(image, 15), std::vector<std::uint8_t>(15, 0)) << "without its overlay";
    pipeline_test::SetBytes(image, 0x60023000,
                            {0x21, 0x40, 0xFF, 0xFF});  // longer than the picture
    EXPECT_EQ(ReadMask(image, 15),
              (std::vector<std::uint8_t>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(Shutters, OfStatesTakeTheirSizeFromTheRecord) {
    Record info;
    info.imageColumns = 3;
    info.imageRows = 2;
    EXPECT_EQ(Shut(ReadMask(With("00181600=POLYGONAL"), 6, std::move(info))), 6);
}

TEST(Shutters, OfAFewBytesAreNotOfGigabytes) {
    ForgetLimit();
    EXPECT_TRUE(ReadMask(Shuttered("RECTANGULAR", 65535, 65535), 0).empty());
    EXPECT_EQ(LatestLimit(), Limit::kLargestPicture);
    Record known;
    known.imageColumns = 65535;
    known.imageRows = 1200;
    EXPECT_EQ(ReadMask(Shuttered("RECTANGULAR", 65535, 1200), 1, std::move(known)).size(), 1U)
        << "an image that is there";
}

TEST(MaskSubtraction, ReadsItsFirstItem) {
    const auto image = With("00281090=SUB");
    const auto average = With<CDcmItem>(
        "00286102=1\\4\\6\\9\\11; 00286101=AVG_SUB; 00286110=2\\3; 00286112=5; 00286114=0.5\\-1.5; "
        "00286120=-7");
    const auto read = [](const CDcmObject& object, Record& info) {
        PresentationReader(object, info, {}, -1).GetMask();
    };
    Record none;
    read(image, none);
    EXPECT_TRUE(none.recommendedViewingMode.IsEmpty());

    Record info;
    read(With(image, 0x00286100, {average}), info);
    ASSERT_EQ(info.maskFrameRangeCount, 2);
    EXPECT_EQ(info.maskFrameRanges[1].first, 6U);
    EXPECT_EQ(info.maskFrameRanges[1].last, 9U);
    EXPECT_EQ(Entries(info.maskFrameNumbers, info.maskFrameCount), (std::vector<int>{2, 3}));
    EXPECT_EQ(info.contrastFrameAveraging, 5);
    EXPECT_EQ(info.maskSubPixelShiftRow, 0.5F);
    EXPECT_EQ(info.maskSubPixelShiftColumn, -1.5F);
    EXPECT_EQ(info.recommendedViewingMode, CString("SUB"));
    EXPECT_EQ(info.tidOffset, 0);

    auto byTime = average;
    byTime.SetValue(0x00286101, "TID");
    Record tid;
    read(With(image, 0x00286100, {byTime}), tid);
    EXPECT_EQ(tid.tidOffset, -7);
    EXPECT_EQ(tid.maskFrameNumbers, nullptr);
}

}  // namespace
}  // namespace quorvex
