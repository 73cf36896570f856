// The window: level, width, inversion, and the table they give.
#include "quorvex/CXGSPSInfo.h"
#include "tests/support/windowing_values.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>

namespace quorvex {
namespace {

using enum CXWindowing::Selector;
using Bytes = std::vector<std::uint8_t>;

struct WindowCase {
    int minimum = 0;
    int maximum = 255;
    int level = 128;
    int width = 256;
    double slope = 1.0;
    double intercept = 0.0;
    int shape = 0;
    bool isInverted = false;
};

void Apply(CXWindowing& windowing, const WindowCase& setup) {
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    info.presentationShape = setup.shape;
    windowing.SetRescale(setup.slope, setup.intercept);
    ASSERT_EQ(windowing.PrepareGSPSProcessing2(&info, setup.minimum, setup.maximum), 0);
    SetWindow(windowing, setup.width, setup.level);
    if (setup.isInverted) windowing.SetValue(kInversion, nullptr, nullptr);
}

Bytes Table(const WindowCase& setup) {
    CXWindowing windowing;
    Apply(windowing, setup);
    return DisplayTableOf(windowing);
}

// Entry by entry in doubles, each with its own division.
Bytes PlainTable(const WindowCase& s) {
    const double r = 1.0 / s.slope;
    const double level = std::trunc((s.level - s.intercept) * r);
    const double width = std::trunc(s.width * r) + 0.0;  // an integer has no negative zero
    const double lower = level - std::trunc(0.5 * (width + 1.0));
    const double upper = level - std::trunc(-0.5 * (width + 1.0));
    const double lowClip = std::min(std::max<double>(s.minimum, lower), double(s.maximum));
    const double highClip = std::max(std::min(upper, double(s.maximum)), double(s.minimum));
    const bool odd = (s.shape + (s.isInverted ? 1 : 0)) % 2 != 0;
    const auto f = [&](double x) { return 255.0 * (x - lower) / width; };
    const auto flat = [&](double edge) {
        const double value = odd ? 255.0 - f(edge) : f(edge);
        return value > 0.0 ? std::trunc(std::min(value, 255.0)) : 0.0;
    };
    Bytes table;
    for (double x = s.minimum; x <= s.maximum; x += 1.0) {
        double value = odd ? 255.0 - std::trunc(f(x)) : std::trunc(f(x));
        if (x < lowClip) value = flat(lowClip);
        if (x >= highClip) value = flat(highClip);
        table.push_back(static_cast<std::uint8_t>(value));
    }
    return table;
}

TEST(Window, RunsEqualOneDivisionForEachEntry) {
    std::mt19937 random(11);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    constexpr double kSlopes[] = {1.0, 0.5, 2.0, -1.0, 0.001, 3.7, 1e6};
    for (int round = 0; round < 1500; ++round) {
        WindowCase setup;
        setup.minimum = pick(-2000, 1000);
        setup.maximum = setup.minimum + pick(0, round % 10 == 0 ? 131071 : 3000);
        setup.level = pick(-3000, 4000);
        setup.width = pick(0, 3) == 0 ? pick(-20, 20) : pick(1, 1 << pick(1, 18));
        setup.slope = kSlopes[pick(0, 6)];
        setup.intercept = pick(0, 2) == 0 ? pick(-1024, 1024) : 0;
        setup.shape = pick(0, 2);
        setup.isInverted = pick(0, 1) != 0;
        ASSERT_EQ(Table(setup), PlainTable(setup))
            << "domain " << setup.minimum << ".." << setup.maximum << " window " << setup.width
            << "," << setup.level << " rescale " << setup.slope << "," << setup.intercept
            << " shape " << setup.shape << " inverted " << setup.isInverted;
    }
}

TEST(Window, GivesTheBytesWorkedOutByHand) {
    constexpr struct {
        const char* what;
        WindowCase setup;
        std::size_t index;
        int byte;
    } kCases[] = {
        {"12 bits, last of the ramp", {0, 4095, 500, 1000}, 999, 254},
        {"12 bits, first above the ramp", {0, 4095, 500, 1000}, 1000, 255},
        {"8 bits, low end", {}, 1, 0},
        {"8 bits, last of the ramp", {}, 254, 253},
        {"8 bits, the clipped edge", {}, 255, 254},
        {"8 bits inverse, black", {.shape = 1}, 0, 255},
        {"8 bits inverse, the clipped edge", {.shape = 1}, 255, 0},
        {"window above the domain", {0, 255, 5000, 10}, 255, 0},
        {"window below the domain", {0, 255, -5000, 10}, 0, 255},
        {"width 0, level inside", {0, 255, 100, 0}, 200, 0},
        {"width 0, level inside, inverse", {0, 255, 100, 0, 1.0, 0.0, 1}, 200, 0},
        {"width 0, level below", {0, 255, -1, 0}, 0, 255},
        {"width 0, level below, inverse", {0, 255, -1, 0, 1.0, 0.0, 1}, 0, 0},
        {"width 0, level above", {0, 255, 300, 0}, 255, 0},
        {"width 0, level above, inverse", {0, 255, 300, 0, 1.0, 0.0, 1}, 255, 255},
        {"width below the slope", {0, 255, 100, 1, 2.0}, 200, 0},
        {"signed domain", {-1024, 3071, 40, 400}, -160 + 1024, 0},
        {"rescaled level", {0, 4095, 40, 400, 1.0, -1024.0}, 1064, 127},
        {"shape 2 counts as not inverse", {.shape = 2}, 254, 253},
        {"shape 1, inverted by the user", {.shape = 1, .isInverted = true}, 254, 253},
    };
    for (const auto& c : kCases) EXPECT_EQ(Table(c.setup).at(c.index), c.byte) << c.what;
}

TEST(Window, StepsCountByBitDepthAndStopAtWidthTwo) {
    constexpr int kBitsAndStep[][2] = {{8, 1}, {12, 2}, {16, 3}, {10, 1}};
    for (const auto [bits, step] : kBitsAndStep) {
        CXWindowing windowing;
        CXGSPSInfo info;
        info.pixelBitDepth = bits;
        windowing.PrepareGSPSProcessing2(&info, 0, 1000);
        int delta = 10;
        EXPECT_EQ(windowing.SetValue(kWindowLevel, &delta, nullptr), 0);
        EXPECT_EQ(windowing.SetValue(kWindowWidth, &delta, nullptr), 0);
        EXPECT_EQ(WindowOf(windowing), (Window{500 + 10 * step, 1000 + 10 * step})) << bits;
        EXPECT_EQ(windowing.ChangeWLByOffset(10), 0);
        EXPECT_EQ(windowing.ChangeWWByOffset(10), 0);
        EXPECT_EQ(WindowOf(windowing), (Window{500, 1000})) << bits;
        EXPECT_EQ(windowing.ChangeWWByOffset(5000), 0);
        EXPECT_EQ(WindowOf(windowing), (Window{500, 2})) << bits;
        EXPECT_EQ(windowing.ChangeWWByOffset(1), 4) << bits;
    }
}

TEST(Window, NoChangeIsAnsweredWithFour) {
    CXWindowing windowing;
    int zero = 0;
    int value = 7;
    EXPECT_EQ(windowing.SetValue(kWindowLevel, &zero, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(kWindowWidth, &zero, nullptr), 4);
    EXPECT_EQ(windowing.ChangeWLByOffset(0), 4);
    EXPECT_EQ(windowing.SetValue(kModalityTableFirst, &value, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(kInversion + 1, &value, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(kWindow, nullptr, nullptr), 4);
    EXPECT_EQ(windowing.GetValue(kWindow, &value, nullptr), 4);
    EXPECT_EQ(value, 7);
    // Any step raises a width below 2 that was set as it is.
    SetWindow(windowing, -5, 0);
    EXPECT_EQ(windowing.SetValue(kWindowWidth, &zero, nullptr), 0);
    EXPECT_EQ(ValueOf(windowing, kWindowWidth), 2);
}

TEST(Window, HasNoTableBeforeTheFirstRebuild) {
    CXWindowing windowing;
    Bytes room(4096, 99);
    EXPECT_EQ(ValueOf(windowing, kDisplayTableCount), 4096);
    EXPECT_EQ(windowing.GetValue(kDisplayTable, room.data(), nullptr), 0);
    EXPECT_EQ(windowing.GetValue(kModalityTable, room.data(), nullptr), 0);
    EXPECT_EQ(room, Bytes(4096, 99));
    SetWindow(windowing, 1000, 500);
    EXPECT_EQ(DisplayTableOf(windowing).at(999), 254);
}

TEST(Window, ReportsTheDomainLessThePostIntercept) {
    CXWindowing windowing;
    Apply(windowing, {-1024, 3071});
    windowing.SetPostIntercept(-0.75);
    int size = 0;
    int start = 0;
    EXPECT_EQ(windowing.GetValue(kDisplayTableCount, &size, &start), 0);
    EXPECT_EQ(std::pair(size, start), std::pair(4096, -1023));
    EXPECT_EQ(ValueOf(windowing, kDisplayTableFirst), -1024);
}

TEST(Window, OverflowStopsAtTheEndsOfInt) {
    CXWindowing windowing;
    Apply(windowing, {});
    int most = INT_MAX;
    EXPECT_EQ(windowing.SetValue(kWindowLevel, &most, nullptr), 0);
    EXPECT_EQ(windowing.SetValue(kWindowLevel, &most, nullptr), 4);
    EXPECT_EQ(windowing.ChangeWWByOffset(INT_MIN), 0);
    EXPECT_EQ(WindowOf(windowing), (Window{INT_MAX, INT_MAX}));
    for (const int level : {INT_MIN, INT_MAX}) {
        for (const int width : {INT_MIN, -1, 0, 1, INT_MAX}) {
            for (const double slope : {1.0, 1e-300, -1e-300, 0.0, std::nan(""), HUGE_VAL})
                EXPECT_EQ(Table({-300, 300, level, width, slope, 1e300}).size(), 601U);
        }
    }
}

TEST(Window, UnusableDomainsHaveNoTable) {
    constexpr int kRanges[][2] = {{1, 0}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, {0, INT_MAX}};
    for (const auto [minimum, maximum] : kRanges)
        EXPECT_TRUE(Table({minimum, maximum}).empty()) << minimum << ".." << maximum;
    EXPECT_EQ(Table({INT_MAX - 3, INT_MAX}).size(), 4U);
}

TEST(Window, CopiesAreDeep) {
    CXWindowing first;
    Apply(first, {0, 4095, 1000, 300});
    CXWindowing second(first);
    const Bytes table = DisplayTableOf(first);
    SetWindow(first, 20, 10);
    EXPECT_EQ(DisplayTableOf(second), table);
    second = first;
    EXPECT_EQ(DisplayTableOf(second), DisplayTableOf(first));
}

}  // namespace
}  // namespace quorvex
