#include "quorvex/CXDIPP.h"
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/screen.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <random>

namespace quorvex::pipeline_test {
namespace {

constexpr CSize kNoLimits{1 << 20, 1 << 20};

/// Shows an object by the standard rules, at one screen pixel for each of its own.
CXDIPP Standard(CDcmObject& object, CSize view = kNoLimits) {
    CXDIPP dipp;
    dipp.SetRules(Rules::kStandard);
    ShowObject(dipp, object, view);
    dipp.UpdateZoom_ABS(1.0);
    return dipp;
}

Values ShownBy(CDcmObject& object) {
    CXDIPP dipp = Standard(object);
    return Rendered(dipp);
}

constexpr ImageShape kBytes{.size = {4, 1}, .bitsAllocated = 8, .bitsStored = 8};
constexpr ImageShape kWords{.size = {4, 1}};
constexpr ImageShape kSigned{.size = {4, 1}, .bitsStored = 16, .pixelRepresentation = 1};

// By hand: values in modality units, PS3.3 C.11.2.1.2 or proportion.
TEST(StandardRules, GreyIsWhatTheStandardDefines) {
    struct Row {
        const char* what;
        ImageShape shape;
        Words samples;
        const char* attributes;
        Values shown;
    };
    const ImageShape fewBits{.size = {4, 1}, .bitsStored = 7};
    const ImageShape inverse{.size = {4, 1}, .photometric = "MONOCHROME1"};
    const Row rows[] = {
        {"the range of the frame", kWords, {100, 200, 300, 400}, "", {0, 85, 170, 255}},
        {"0 is not forced in", kWords, {1000, 1001, 1001, 1002}, "", {0, 128, 128, 255}},
        {"one value alone", kWords, {7, 7, 7, 7}, "", {0, 0, 0, 0}},
        {"up to 8 bits as stored", fewBits, {0, 1, 64, 127}, "", {0, 2, 129, 255}},
        {"padding is no value",
         kWords,
         {4000, 0, 100, 200},
         "PixelPaddingValue=4000",
         {255, 0, 128, 255}},
        {"a range of padding",
         kWords,
         {4000, 0, 3990, 200},
         "PixelPaddingValue=4000; PixelPaddingRangeLimit=3980",
         {255, 0, 255, 255}},
        {"a window with fractions",
         kWords,
         {0, 1, 2, 3},
         "WindowCenter=1.5; WindowWidth=2.5; VOILUTFunction=LINEAR_EXACT",
         {0, 77, 179, 255}},
        {"exponent form",
         kWords,
         {0, 1023, 1024, 4095},
         "WindowCenter=1.024E+03; WindowWidth=2.048E+03",
         {0, 127, 128, 255}},
        {"a small slope",
         kWords,
         {0, 1000, 2000, 3000},
         "RescaleSlope=0.0001; RescaleIntercept=0",
         {0, 85, 170, 255}},
        {"a negative slope",
         kWords,
         {0, 100, 200, 300},
         "RescaleSlope=-1; RescaleIntercept=0; WindowCenter=-149.5; WindowWidth=301",
         {255, 170, 85, 0}},
        {"signed words", kSigned, {0x8000, 0, 0xFFFF, 0x7FFF}, "", {0, 128, 127, 255}},
        {"the other polarity", inverse, {0, 100, 200, 300}, "", {255, 170, 85, 0}},
    };
    for (const Row& row : rows) {
        CDcmObject object = ImageOf(row.shape, row.samples, row.attributes);
        EXPECT_EQ(ShownBy(object), row.shown) << row.what;
    }
}

TEST(StandardRules, WindowsAndTablesOfTheFileAreChosen) {
    CDcmObject object = ImageOf(kWords, Words{0, 1, 2, 3},
                                "WindowCenter=1\\2; WindowWidth=1\\1; "
                                "WindowCenterWidthExplanation=LOW\\HIGH");
    CXDIPP dipp = Standard(object);
    ASSERT_EQ(dipp.GetVOIChoiceCount(), 2);
    EXPECT_EQ(dipp.GetVOIExplanation(1), CString("HIGH"));
    EXPECT_EQ(Rendered(dipp), (Values{0, 255, 255, 255}));
    dipp.SelectVOI(1);
    EXPECT_EQ(Rendered(dipp), (Values{0, 0, 255, 255}));
    dipp.UpdateVOILUT_ABS(1.5, 3.0, VoiFunction::kLinearExact);
    EXPECT_EQ(Rendered(dipp), (Values{0, 85, 170, 255}));
    double width = 0;
    double level = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 3.0);
    EXPECT_EQ(level, 1.5);
}

CDcmItem TableItem(Words descriptor, std::vector<unsigned char> data) {
    CDcmObject holder;
    for (std::size_t i = 0; i < descriptor.size(); ++i) {
        i == 0 ? holder.SetValue(tag::kLUTDescriptor, descriptor[i])
               : holder.SetNextValue(tag::kLUTDescriptor, descriptor[i]);
    }
    SetBytes(holder, tag::kLUTData, std::move(data));
    CDcmItem item;
    static_cast<CDcmObjectCommon&>(item) = holder;
    return item;
}

TEST(StandardRules, TablesOfBytesAreReadInEitherLayout) {
    const std::vector<unsigned char> layouts[] = {{0, 50, 100, 255}, {0, 0, 50, 0, 100, 0, 255, 0}};
    for (const auto& layout : layouts) {
        CDcmObject object = ImageOf(kWords, Words{10, 11, 12, 13});
        CDcmItem item = TableItem({4, 10, 8}, layout);
        object.SetValue(tag::kVOILUTSequence, &item);
        EXPECT_EQ(ShownBy(object), (Values{0, 50, 100, 255})) << layout.size();
    }
}

// A state says all: neither the image's rescale nor its polarity counts under it, and without a
// window it shows 0 to 4095.
TEST(StandardRules, AStateReplacesTheStagesOfTheImage) {
    struct Row {
        const char* photometric;
        const char* state;
        Values shown;
    };
    const Row rows[] = {
        {"MONOCHROME2", "PresentationLUTShape=IDENTITY", {0, 6, 12, 19}},
        {"MONOCHROME1", "PresentationLUTShape=IDENTITY", {0, 6, 12, 19}},
        {"MONOCHROME1", "PresentationLUTShape=INVERSE", {255, 249, 243, 236}},
        {"MONOCHROME2",
         "RescaleSlope=-1; RescaleIntercept=0; PresentationLUTShape=IDENTITY",
         {255, 249, 243, 236}},
    };
    for (const Row& row : rows) {
        const ImageShape shape{.size = {4, 1}, .photometric = row.photometric};
        CDcmObject image = ImageOf(shape, Words{0, 100, 200, 300},
                                   "RescaleSlope=2; RescaleIntercept=-5; WindowCenter=1; "
                                   "WindowWidth=1");
        CDcmObject state = test::With<CDcmObject>(row.state);
        CXDIPP dipp = Standard(image);
        CDcmApp app;
        EXPECT_EQ(dipp.ApllyGSPSObject(&app, &state), QVM_SUCCESS);
        dipp.UpdateZoom_ABS(1.0);
        EXPECT_EQ(Rendered(dipp), row.shown) << row.photometric << " " << row.state;
    }
}

/// The picture of an image of 3 x 2 pixels, each of its own value, turned and then mirrored.
Values Moved(int quarterTurns, bool isMirrored) {
    Values picture(6);
    std::iota(picture.begin(), picture.end(), 10);
    CSize size{3, 2};
    for (int turn = 0; turn < quarterTurns; ++turn) {
        Values turned(6);
        for (int y = 0; y < size.cy; ++y) {
            for (int x = 0; x < size.cx; ++x) {
                turned[static_cast<std::size_t>(x * size.cy + size.cy - 1 - y)] =
                    picture[static_cast<std::size_t>(y * size.cx + x)];
            }
        }
        picture = turned;
        size = {size.cy, size.cx};
    }
    for (int y = 0; isMirrored && y < size.cy; ++y) {
        std::reverse(picture.begin() + y * size.cx, picture.begin() + (y + 1) * size.cx);
    }
    return picture;
}

CDcmObject SixPixels() {
    const ImageShape shape{.size = {3, 2}, .bitsAllocated = 8, .bitsStored = 8};
    return ImageOf(shape, Bytes{10, 11, 12, 13, 14, 15});
}

TEST(StandardRules, AStateTurnsAheadOfItsFlip) {
    for (int turn = 0; turn < 4; ++turn) {
        for (const bool isFlipped : {false, true}) {
            CDcmObject image = SixPixels();
            CDcmObject state =
                test::With<CDcmObject>("PresentationLUTShape=IDENTITY; ImageHorizontalFlip=" +
                                       std::string(isFlipped ? "Y" : "N") +
                                       "; ImageRotation=" + std::to_string(90 * turn));
            CXDIPP dipp = Standard(image);
            CDcmApp app;
            dipp.ApllyGSPSObject(&app, &state);
            dipp.UpdateZoom_ABS(1.0);
            EXPECT_EQ(Rendered(dipp), Moved(turn, isFlipped)) << turn << isFlipped;
        }
    }
}

TEST(StandardRules, TheUserTurnsAndMirrorsWhatIsOnTheScreen) {
    CDcmObject image = SixPixels();
    for (int turn = 0; turn < 4; ++turn) {
        CXDIPP dipp = Standard(image);
        dipp.UpdateHFlip_Toggle();
        dipp.UpdateRotate_Offset(90 * turn);
        EXPECT_EQ(Rendered(dipp), Moved((4 - turn) % 4, true)) << turn;
        dipp.UpdateHFlip_Toggle();
        EXPECT_EQ(Rendered(dipp), Moved((4 - turn) % 4, false)) << turn;
        dipp.UpdateRotate_ABS(90 * turn);
        EXPECT_EQ(Rendered(dipp), Moved(turn, false)) << turn;
    }
}

TEST(StandardRules, PixelsKeepTheirShapeAndSidesTheirLength) {
    const ImageShape shape{.size = {5, 3}, .bitsAllocated = 8, .bitsStored = 8};
    const std::pair<const char*, CSize> rows[] = {
        {"", {5, 3}},
        {"PixelAspectRatio=2\\1; PixelSpacing=1\\1", {5, 6}},
        {"PixelSpacing=1\\2", {5, 2}},
        {"ImagerPixelSpacing=3\\1", {5, 9}},
        {"NominalScannedPixelSpacing=2\\1", {5, 6}},
    };
    for (const auto& [attributes, size] : rows) {
        CDcmObject image = ImageOf(shape, Bytes(15), attributes);
        CXDIPP dipp = Standard(image);
        Rendered(dipp);
        EXPECT_EQ(ResultSize(dipp), size) << attributes;
        dipp.UpdateRotate_Offset(90);
        Rendered(dipp);
        EXPECT_EQ(ResultSize(dipp), (CSize{size.cy, size.cx})) << attributes;
        EXPECT_EQ(dipp.GetDisplayedSize(), (CSize{size.cy, size.cx})) << attributes;
        dipp.UpdateViewSize({600, 500});
        Rendered(dipp);
        const CSize fitted = ResultSize(dipp);
        EXPECT_TRUE(fitted.cx == 600 || fitted.cy == 500) << attributes;
    }
}

TEST(StandardRules, OnlyWhatTheViewShowsIsRendered) {
    const ImageShape shape{.size = {40, 30}, .bitsAllocated = 8, .bitsStored = 8};
    CDcmObject image = ImageOf(shape, RandomBytes(1200, 4), "PixelAspectRatio=3\\2");
    for (int turn = 0; turn < 4; ++turn) {
        const auto draw = [&](CSize view, CPoint pan) {
            CXDIPP dipp = Standard(image, view);
            dipp.UpdateRotate_ABS(90 * turn);
            dipp.UpdateHFlip_Toggle();
            dipp.UpdateZoom_ABS(5.3);
            EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
            const CSize size = ResultSize(dipp);
            EXPECT_LE(size.cx, view.cx);
            EXPECT_LE(size.cy, view.cy);
            dipp.UpdatePan_ABS(pan);  // uncovers what was not rendered
            Screen screen(view);
            screen.Draw(dipp);
            return screen;
        };
        const CPoint pan{31, -17};
        const Screen small = draw({50, 40}, pan);
        const Screen large = draw({350, 340}, pan);
        for (int y = 0; y < 40; ++y) {
            for (int x = 0; x < 50; ++x) {
                ASSERT_EQ(small.At(x, y), large.At(x + 150, y + 150))
                    << turn << " " << x << "," << y;
            }
        }
    }
}

TEST(StandardRules, PalettesAndLayersHaveTheirColours) {
    CDcmObject palette = ImageOf(
        {.size = {4, 1}, .bitsAllocated = 8, .bitsStored = 8, .photometric = "PALETTE COLOR"},
        Bytes{0, 1, 2, 9});
    AddPalette(palette, {0, {0, 0xFFFF, 0x8000}}, {0, {0, 0xFFFF, 0}}, {0, {0, 0xFFFF, 0x0100}},
               16);
    EXPECT_EQ(ShownBy(palette), (Values{0, 0, 0, 255, 255, 255, 1, 0, 128, 1, 0, 128}));

    CDcmObject supplemented = ImageOf(kWords, Words{0, 100, 200, 300});
    AddPalette(supplemented, {200, {0xFFFF}}, {200, {0}}, {200, {0}}, 16);
    EXPECT_EQ(ShownBy(supplemented), (Values{0, 0, 0, 85, 85, 85, 0, 0, 255, 255, 255, 255}));

    // A plane of 6 x 1 that begins a column to the left of the image: every other bit is set.
    CDcmObject marked = ImageOf(kBytes, Bytes{9, 9, 9, 9});
    AddOverlay(marked, 0x6000, {.rows = 1, .columns = 6, .originColumn = 0, .data = {0b010101, 0}});
    CXDIPP dipp = Standard(marked);
    dipp.ShowOverlays(1);
    EXPECT_EQ(Rendered(dipp), (Values{9, 255, 9, 255}));
}

TEST(StandardRules, ShuttersHideWhatAnyShapeHides) {
    const ImageShape shape{.size = {5, 5}, .bitsAllocated = 8, .bitsStored = 8};
    const std::pair<const char*, Bytes> rows[] = {
        {"ShutterShape=RECTANGULAR; ShutterLeftVerticalEdge=1; ShutterRightVerticalEdge=5; "
         "ShutterUpperHorizontalEdge=1; ShutterLowerHorizontalEdge=5",
         {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
        {"ShutterShape=CIRCULAR; CenterOfCircularShutter=2\\3; RadiusOfCircularShutter=1",
         {0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"ShutterShape=POLYGONAL; VerticesOfThePolygonalShutter=1\\1\\1\\4\\4\\1",
         {1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"ShutterShape=RECTANGULAR\\CIRCULAR; ShutterLeftVerticalEdge=3; "
         "ShutterRightVerticalEdge=5; ShutterUpperHorizontalEdge=2; ShutterLowerHorizontalEdge=5; "
         "CenterOfCircularShutter=2\\3; RadiusOfCircularShutter=1",
         {0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& [attributes, isOpen] : rows) {
        CDcmObject image = ImageOf(shape, Repeated(25, 200),
                                   std::string(attributes) + "; ShutterPresentationValue=25700");
        CXDIPP dipp = Standard(image);
        dipp.ShowShutter(1);
        Values expected;
        for (const int open : isOpen) expected.push_back(open != 0 ? 200 : 100);
        EXPECT_EQ(Rendered(dipp), expected) << attributes;
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
