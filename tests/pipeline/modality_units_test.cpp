// Windows and VOI LUTs count in modality units, whatever the pixels are kept as.
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace quorvex::pipeline_test {
namespace {

using test::With;

constexpr CSize kRow{4, 1};

struct ExactWindow {
    double level;
    double width;
    friend bool operator==(const ExactWindow&, const ExactWindow&) = default;
};

ExactWindow ExactWindowOf(const CXDIPP& dipp) {
    ExactWindow window{};
    dipp.GetWindowingFactor(window.width, window.level);
    return window;
}

/// Four stored values of a rescaled image, and what a window in modality units makes of them.
struct WindowCase {
    const char* what;
    unsigned short bits;
    bool isSigned;
    const char* rescale;
    std::vector<std::int64_t> stored;
    ExactWindow window;
    Values shown;
};

const WindowCase kWindows[] = {
    {"slope 0.005",
     16,
     false,
     "RescaleSlope=0.005; RescaleIntercept=0",
     {0, 2000, 4000, 6000},
     {10, 20},
     {0, 127, 255, 255}},
    {"slope 0.0001",
     16,
     false,
     "RescaleSlope=0.0001; RescaleIntercept=-1",
     {10'000, 20'000, 30'000, 40'000},
     {2, 4},
     {0, 64, 127, 191}},
    {"61 modality values",
     16,
     false,
     "RescaleSlope=0.01; RescaleIntercept=0",
     {0, 150, 300, 6000},
     {3, 6},
     {0, 64, 127, 255}},
    {"falling",
     16,
     false,
     "RescaleSlope=-0.005; RescaleIntercept=20",
     {0, 2000, 4000, 65535},
     {10, 20},
     {255, 127, 0, 0}},
    {"falling, signed",
     16,
     true,
     "RescaleSlope=-0.005; RescaleIntercept=0",
     {-4000, -2000, 0, 32767},
     {10, 20},
     {255, 127, 0, 0}},
    {"bytes",
     8,
     false,
     "RescaleSlope=0.02; RescaleIntercept=0",
     {0, 50, 100, 255},
     {2, 4},
     {0, 64, 127, 255}},
    {"a window far wider than the values",
     16,
     false,
     "RescaleSlope=1e-10; RescaleIntercept=0",
     {0, 1, 2, 65535},
     {40, 400},
     {102, 102, 102, 102}},
    {"slope 2 over all of 16 signed bits",
     16,
     true,
     "RescaleSlope=2; RescaleIntercept=0",
     {-32768, -10, 0, 32767},
     {0, 80},
     {0, 64, 127, 255}},
    {"slope 9.5",
     16,
     false,
     "RescaleSlope=9.5; RescaleIntercept=0",
     {0, 1000, 2000, 65535},
     {9500, 19'000},
     {0, 127, 255, 255}},
    {"32 bits",
     32,
     false,
     "RescaleSlope=1; RescaleIntercept=0",
     {0, 500'000'000, 1'000'000'000, 4'000'000'000},
     {500'000'000, 1'000'000'000},
     {0, 127, 255, 255}},
    {"32 bits, far narrower than what 16 can tell apart",
     32,
     false,
     "RescaleSlope=1; RescaleIntercept=0",
     {0, 1'000'000, 3'000'000, 4'000'000'000},
     {2'000'000, 10},
     {0, 0, 255, 255}},
    {"32 bits, slope 1e-9",
     32,
     false,
     "RescaleSlope=1e-9; RescaleIntercept=0",
     {0, 1'000'000'000, 2'000'000'000, 4'000'000'000},
     {2, 4},
     {0, 64, 127, 255}},
    {"32 signed bits, falling",
     32,
     true,
     "RescaleSlope=-1e-9; RescaleIntercept=0",
     {-2'000'000'000, -1'000'000'000, 0, 2'000'000'000},
     {1, 2},
     {255, 127, 0, 0}},
};

template <class Sample>
CDcmObject ImageAs(const WindowCase& c, const std::string& attributes) {
    std::vector<Sample> samples(c.stored.size());
    std::ranges::transform(c.stored, samples.begin(),
                           [](std::int64_t value) { return static_cast<Sample>(value); });
    const ImageShape shape{.size = kRow,
                           .bitsAllocated = c.bits,
                           .bitsStored = c.bits,
                           .pixelRepresentation = c.isSigned ? std::uint16_t{1} : std::uint16_t{0}};
    return ImageOf(shape, samples, attributes);
}

CDcmObject ImageOfCase(const WindowCase& c, const std::string& window = "") {
    const std::string attributes = c.rescale + window;
    if (c.bits == 8) return ImageAs<std::uint8_t>(c, attributes);
    return c.bits == 16 ? ImageAs<std::uint16_t>(c, attributes)
                        : ImageAs<std::uint32_t>(c, attributes);
}

std::string TextOf(const ExactWindow& window) {
    return "WindowCenter=" + std::to_string(std::lround(window.level)) +
           "; WindowWidth=" + std::to_string(std::lround(window.width));
}

CDcmObject StateWith(CDcmItem voi) {
    CDcmObject state;
    test::PutItems(state, tag::kSoftcopyVOILUTSequence, {std::move(voi)});
    return state;
}

TEST(ModalityUnits, AWindowMeansTheSameOnEveryRoad) {
    for (const auto& c : kWindows) {
        const auto expect = [&](CXDIPP& dipp, const char* road) {
            SCOPED_TRACE(std::string(c.what) + ", " + road);
            EXPECT_EQ(ExactWindowOf(dipp), c.window);
            EXPECT_EQ(WindowOf(dipp),
                      (CSize{static_cast<int>(c.window.width), static_cast<int>(c.window.level)}));
            ExpectNear(Shown(dipp), c.shown);
        };
        CDcmApp app;
        CXDIPP dipp;
        CDcmObject image = ImageOfCase(c);
        ShowObject(dipp, image, kRow);
        dipp.UpdateVOILUT_ABS(static_cast<int>(c.window.level), static_cast<int>(c.window.width));
        expect(dipp, "whole numbers");
        dipp.UpdateVOILUT_ABS(1, 1);
        dipp.UpdateVOILUT_ABS(c.window.level, c.window.width);
        expect(dipp, "doubles");
        CXDIPP copy = dipp;
        expect(copy, "a copy");
        ShowObject(dipp, image, kRow);
        CDcmObject state = StateWith(With<CDcmItem>(TextOf(c.window)));
        dipp.ApllyGSPSObject(&app, &state);
        expect(dipp, "a state");
        CDcmObject windowed = ImageOfCase(c, "; " + TextOf(c.window));
        ShowObject(dipp, windowed, kRow);
        expect(dipp, "the image");
    }
}

TEST(ModalityUnits, StepsAndFractionsOfASmallSlope) {
    CDcmObject image = ImageOf({.bitsStored = 16}, Words{0, 2000, 4000, 6000},
                               "RescaleSlope=0.005; RescaleIntercept=0");
    CXDIPP dipp;
    ShowObject(dipp, image, kRow);
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{15, 30})) << "over all values";
    ExpectNear(Shown(dipp), Values{0, 85, 170, 255});
    dipp.UpdateVOILUT_ABS(10, 20);
    dipp.UpdateVOILUT_Offset(-1, 2);  // 16 bits: 3 a step
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{13, 14}));
    dipp.UpdateVOILUT_Offset(0, 100);
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{13, 2}));
    dipp.UpdateVOILUT_ABS(10.5, 1.0);
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{10.5, 1}));
    EXPECT_EQ(WindowOf(dipp), (CSize{1, 11}));
    EXPECT_EQ(Shown(dipp), (Values{0, 0, 255, 255}));
    dipp.UpdatePresentationLUT_Toggle();
    EXPECT_EQ(Shown(dipp), (Values{255, 255, 0, 0}));
}

// Grey levels of a ramp over 0 to 60 in steps of a small slope: no fewer than a screen can show.
TEST(ModalityUnits, SmallSlopesKeepTheirDetail) {
    for (const char* slope : {"0.0001", "0.005", "0.01", "0.1", "-0.01"}) {
        Words ramp(512);
        const double step = std::min(60.0 / std::abs(std::stod(slope)), 65535.0) / 512;
        for (std::size_t i = 0; i < ramp.size(); ++i)
            ramp[i] = static_cast<std::uint16_t>(step * static_cast<double>(i));
        CDcmObject image = ImageOf({.size = {512, 1}, .bitsStored = 16}, ramp,
                                   std::string("RescaleIntercept=0; RescaleSlope=") + slope);
        CXDIPP dipp;
        ShowObject(dipp, image, {512, 1});
        const Values shown = Shown(dipp);
        EXPECT_GT((std::set<int>(shown.begin(), shown.end()).size()), 250U) << slope;
    }
}

TEST(ModalityUnits, AWindowKeepsItsMeaningFromFrameToFrame) {
    // Values 0 to 6 and 0 to 300, with one window over all that was met at the second.
    CDcmObject object = ImageOf({.bitsStored = 16}, Words{0, 400, 800, 1200, 0, 800, 20000, 60000},
                                "NumberOfFrames=2; RescaleSlope=0.005; RescaleIntercept=0");
    CDcmApp app;
    CXDIPP dipp;
    ShowObject(dipp, object, kRow, 0);
    const ExactWindow first = ExactWindowOf(dipp);
    EXPECT_EQ(first, (ExactWindow{3, 6}));
    const Values before = Shown(dipp);
    ASSERT_EQ(dipp.Initialize(&app, kRow, 1), QVM_SUCCESS);
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{150, 300}));
    dipp.UpdateVOILUT_ABS(first.level, first.width);
    EXPECT_EQ(Shown(dipp), (Values{before[0], before[2], 255, 255}));
    ASSERT_EQ(dipp.Initialize(&app, kRow, 0), QVM_SUCCESS);
    EXPECT_EQ(ExactWindowOf(dipp), (ExactWindow{150, 300}));
    // Another object starts over.
    CDcmObject other = ImageOf({.bitsStored = 16}, Words{0, 100, 200, 300},
                               "RescaleSlope=0.005; RescaleIntercept=0");
    ShowObject(dipp, other, kRow);
    ExpectNear(Shown(dipp), Values{0, 85, 170, 255});
}

/// 1000 entries of 16 bits from -500 on: 0, 65, 130 ...
CDcmItem WideLut() {
    std::vector<int> entries(1000);
    for (std::size_t i = 0; i < entries.size(); ++i) entries[i] = static_cast<int>(i) * 65;
    return test::LutItem(1000, -500, 16, entries);
}

TEST(ModalityUnits, ATableMeansTheSameOnEveryRoad) {
    const WindowCase cases[] = {
        {"slope 2 over all of 16 signed bits",
         16,
         true,
         "RescaleSlope=2; RescaleIntercept=0",
         {-32768, -125, 0, 32767},
         {},
         {0, 63, 126, 253}},
        {"slope 0.005",
         16,
         true,
         "RescaleSlope=0.005; RescaleIntercept=0",
         {-32768, 0, 20'000, 32767},
         {},
         {85, 126, 152, 168}},
        {"slope 0.005, falling",
         16,
         true,
         "RescaleSlope=-0.005; RescaleIntercept=0",
         {-32768, 0, 20'000, 32767},
         {},
         {168, 126, 101, 85}},
        {"32 bits",
         32,
         true,
         "RescaleSlope=1; RescaleIntercept=0",
         {-2'000'000'000, -1'000'000, 1'000'000, 2'000'000'000},
         {},
         {0, 0, 253, 253}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CDcmApp app;
        CXDIPP dipp;
        CDcmObject image = ImageOfCase(c);
        ShowObject(dipp, image, kRow);
        CDcmItem voi;
        test::PutItems(voi, tag::kVOILUTSequence, {WideLut()});
        CDcmObject state = StateWith(voi);
        dipp.ApllyGSPSObject(&app, &state);
        const Values shown = Shown(dipp);
        ExpectNear(shown, c.shown);
        test::PutItems(image, tag::kVOILUTSequence, {WideLut()});
        ShowObject(dipp, image, kRow);
        EXPECT_EQ(Shown(dipp), shown);
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
