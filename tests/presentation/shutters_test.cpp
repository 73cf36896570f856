// Display shutters, and the mask of mask subtraction.
#include "presentation/presentation_reader.h"
#include "quorvex/Limits.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

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

struct Shutter : Record {
    explicit Shutter(CDcmObject object, int columns = 0, int rows = 0) {
        imageColumns = columns;
        imageRows = rows;
        CXGSPSObject().GetGSPSModule(kShutter, &object, this);
    }
    /// Empty where there is none.
    [[nodiscard]] std::vector<std::uint8_t> Mask(std::size_t size) const {
        if (shutterMask == nullptr) return {};
        return {shutterMask, shutterMask + size};
    }
};

std::ptrdiff_t Shut(const std::vector<std::uint8_t>& mask) {
    return std::ranges::count(mask, 255);
}

TEST(Shutters, OfWhichAPartIsMissingShutAllButBoundByNoEdgeThatIsNotThere) {
    constexpr int kNoMask = -1;
    constexpr struct {
        const char* shape;
        const char* attributes;
        const char* read;
        int shut;  // of 36 pixels
    } kCases[] = {
        {"RECTANGULAR", "00181602=1; 00181604=7; 00181606=2", "left 1; upper 2; right 7", 36},
        {"RECTANGULAR", "00181602=1", "left 1", 36},
        {"RECTANGULAR", "00181608=6", "lower 6", 0},
        {"CIRCULAR", "00181610=3\\4", "row 3; column 4", 36},
        {"CIRCULAR", "00181610=3; 00181612=5", "row 3; radius 5", 36},
        {"CIRCULAR", "00181612=5", "radius 5", 36},
        {"POLYGONAL", "", "", 36},
        {"BITMAP", "", "", 0},
        {"RECTANGULAR\\CIRCULAR", "", "", kNoMask},
        {"ROUND", "", "", kNoMask},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::string(c.shape) + " " + c.attributes);
        const Shutter shutter(Shuttered(c.shape, 6, 6, c.attributes));
        const std::string value = *c.read == 0 ? "value 4660" : "; value 4660";
        EXPECT_EQ(TextOf(shutter), c.read + value);
        const auto mask = shutter.Mask(36);
        EXPECT_EQ(mask.empty() ? kNoMask : Shut(mask), c.shut);
    }
}

TEST(Shutters, OfRectanglesCountEdgesAsTheyStand) {
    const auto mask = Shutter(Shuttered("RECTANGULAR", 512, 512,
                                        "00181602=1; 00181604=512; 00181606=1; 00181608=512"))
                          .Mask(512 * 512);
    EXPECT_EQ(Shut(mask), 512 + 511);
    EXPECT_EQ(mask.at(512 + 1), 0);
    EXPECT_EQ(mask.at(512), 255);
}

TEST(Shutters, OfCirclesAreRound) {
    const auto mask =
        Shutter(Shuttered("CIRCULAR", 40, 40, "00181610=20\\15; 00181612=10")).Mask(1600);
    for (int i = 0; i < 1600; ++i) {
        const double distance = std::hypot(i % 40 - 14, i / 40 - 19);
        const int byte = mask.at(static_cast<std::size_t>(i));
        EXPECT_EQ(byte, distance < 7.5 ? 0 : distance > 9.5 ? 255 : byte) << i;
    }
}

TEST(Shutters, OfPolygonsDropTheOddValue) {
    const Shutter polygon(Shuttered("POLYGONAL", 6, 6, "00181620=1\\2\\1\\4\\5\\4\\5\\2\\9"));
    EXPECT_EQ(std::ranges::count(polygon.Mask(36), 0), 2 * 4);
    EXPECT_EQ(polygon.Mask(36).at(6 + 2), 0);
    EXPECT_EQ(polygon.shutterVertices, (std::vector<CPoint>{{2, 1}, {4, 1}, {4, 5}, {2, 5}}));
}

TEST(Shutters, OfBitmapsShutWhereABitIsSet) {
    CDcmObject image = Shuttered("BITMAP", 5, 3, "00181623=24578");
    EXPECT_EQ(Shutter(image).Mask(15), std::vector<std::uint8_t>(15, 0)) << "without its overlay";
    pipeline_test::SetBytes(image, 0x60023000, {0x21, 0x40, 0xFF, 0xFF});  // longer than the image
    EXPECT_EQ(Shutter(image).Mask(15),
              (std::vector<std::uint8_t>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(Shutters, TakeTheirSizeFromTheRecordAndAreNotOfGigabytesForAFewBytes) {
    EXPECT_EQ(Shut(Shutter(With("ShutterShape=POLYGONAL"), 3, 2).Mask(6)), 6) << "a state's";
    ForgetLimit();
    EXPECT_TRUE(Shutter(Shuttered("RECTANGULAR", 65535, 65535)).Mask(0).empty());
    EXPECT_EQ(LatestLimit(), Limit::kLargestPicture);
    EXPECT_EQ(Shutter(Shuttered("RECTANGULAR", 65535, 1200), 65535, 1200).Mask(1).size(), 1U)
        << "an image that is there";
    CDcmObject state = Shuttered("RECTANGULAR", 65535, 65535, "00181602=7");
    state.SetValue(tag::kImageHorizontalFlip, "Y");
    Record read;
    EXPECT_EQ(CXGSPSObject().GSPSApplier(&state, &read, CString("1.2"), -1), 1);
    EXPECT_EQ(std::pair(read.shutterLeft, read.imageHorizontalFlip), std::pair(7, 1))
        << "all but the mask is read";
}

TEST(MaskSubtraction, ReadsItsFirstItem) {
    const auto image = With("00281090=SUB");
    const auto average = With<CDcmItem>(
        "00286102=1\\4\\6\\9\\11; 00286101=AVG_SUB; 00286110=2\\3; 00286112=5; 00286114=0.5\\-1.5; "
        "00286120=-7");
    struct Mask : Record {
        explicit Mask(const CDcmObject& object) {
            PresentationReader(object, *this, {}, -1).GetMask();
        }
    };
    EXPECT_TRUE(Mask(image).recommendedViewingMode.IsEmpty());

    const Mask mask(With(image, 0x00286100, {average}));
    ASSERT_EQ(mask.maskFrameRangeCount, 2);
    EXPECT_EQ(mask.maskFrameRanges[1].first, 6U);
    EXPECT_EQ(mask.maskFrameRanges[1].last, 9U);
    EXPECT_EQ(Entries(mask.maskFrameNumbers, mask.maskFrameCount), (std::vector<int>{2, 3}));
    EXPECT_EQ(mask.contrastFrameAveraging, 5);
    EXPECT_EQ(mask.maskSubPixelShiftRow, 0.5F);
    EXPECT_EQ(mask.maskSubPixelShiftColumn, -1.5F);
    EXPECT_EQ(mask.recommendedViewingMode, CString("SUB"));
    EXPECT_EQ(mask.tidOffset, 0);

    const Mask byTime(With(image, 0x00286100, {With(average, "00286101=TID")}));
    EXPECT_EQ(byTime.tidOffset, -7);
    EXPECT_EQ(byTime.maskFrameNumbers, nullptr);
}

}  // namespace
}  // namespace quorvex
