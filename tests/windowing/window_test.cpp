// The window: level, width, inversion, and the table they give.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

namespace quorvex {
namespace {

int Get(CXWindowing& windowing, unsigned int selector) {
    int value = -12345;
    EXPECT_EQ(windowing.GetValue(selector, &value, nullptr), 0);
    return value;
}

std::vector<std::uint8_t> Table(CXWindowing& windowing) {
    std::vector<std::uint8_t> table(static_cast<std::size_t>(Get(windowing, 2)));
    windowing.GetValue(0, table.data(), nullptr);
    return table;
}

void SetWindow(CXWindowing& windowing, int width, int level) {
    int window[2] = {width, level};
    ASSERT_EQ(windowing.SetValue(8, window, nullptr), 0);
}

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
    if (setup.isInverted) windowing.SetValue(9, nullptr, nullptr);
}

std::vector<std::uint8_t> TableOf(const WindowCase& setup) {
    CXWindowing windowing;
    Apply(windowing, setup);
    return Table(windowing);
}

// Entry by entry in doubles, each with its own division.
std::vector<std::uint8_t> PlainTable(const WindowCase& s) {
    const double r = 1.0 / s.slope;
    const double level = std::trunc((s.level - s.intercept) * r);
    const double width = std::trunc(s.width * r) + 0.0;  // a whole number has no negative zero
    const double lower = level - std::trunc(0.5 * (width + 1.0));
    const double upper = level - std::trunc(-0.5 * (width + 1.0));
    const double lowClip = std::min(std::max<double>(s.minimum, lower), double(s.maximum));
    const double highClip = std::max(std::min(upper, double(s.maximum)), double(s.minimum));
    const auto f = [&](double x) { return 255.0 * (x - lower) / width; };
    const auto clamp = [](double v) { return v > 0.0 ? std::min(v, 255.0) : 0.0; };
    const bool odd = (s.shape + (s.isInverted ? 1 : 0)) % 2 != 0;
    std::vector<std::uint8_t> table;
    for (double x = s.minimum; x <= s.maximum; x += 1.0) {
        double value = 0.0;
        if (x >= highClip) {
            value = std::trunc(clamp(odd ? 255.0 - f(highClip) : f(highClip)));
        } else if (x < lowClip) {
            value = std::trunc(clamp(odd ? 255.0 - f(lowClip) : f(lowClip)));
        } else {
            value = odd ? 255.0 - std::trunc(f(x)) : std::trunc(f(x));
        }
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
        ASSERT_EQ(TableOf(setup), PlainTable(setup))
            << "domain " << setup.minimum << ".." << setup.maximum << " window " << setup.width
            << "," << setup.level << " rescale " << setup.slope << "," << setup.intercept
            << " shape " << setup.shape << " inverted " << setup.isInverted;
    }
}

TEST(Window, GivesTheBytesWorkedOutByHand) {
    struct Case {
        const char* what;
        WindowCase setup;
        int x;
        int byte;
    };
    const Case cases[] = {
        {"12 bits, last of the ramp", {0, 4095, 500, 1000}, 999, 254},
        {"12 bits, first above the ramp", {0, 4095, 500, 1000}, 1000, 255},
        {"8 bits, low end", {}, 1, 0},
        {"8 bits, last of the ramp", {}, 254, 253},
        {"8 bits, the clipped edge", {}, 255, 254},
        {"8 bits inverse, black", {0, 255, 128, 256, 1.0, 0.0, 1}, 0, 255},
        {"8 bits inverse, the clipped edge", {0, 255, 128, 256, 1.0, 0.0, 1}, 255, 0},
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
        {"shape 2 counts as not inverse", {0, 255, 128, 256, 1.0, 0.0, 2}, 254, 253},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TableOf(c.setup).at(static_cast<std::size_t>(c.x)), c.byte) << c.what;
    }
}

TEST(Window, InverseShapeAndUserInversionCancel) {
    WindowCase plain{0, 4095, 1000, 333};
    WindowCase twice = plain;
    twice.shape = 1;
    twice.isInverted = true;
    EXPECT_EQ(TableOf(twice), TableOf(plain));
}

TEST(Window, StepsCountByBitDepthAndStopAtWidthTwo) {
    struct Case {
        int bits;
        int factor;
    };
    for (const Case c : {Case{8, 1}, Case{12, 2}, Case{16, 3}, Case{10, 1}}) {
        CXWindowing windowing;
        CXGSPSInfo info;
        info.pixelBitDepth = c.bits;
        windowing.PrepareGSPSProcessing2(&info, 0, 1000);
        int delta = 10;
        EXPECT_EQ(windowing.SetValue(6, &delta, nullptr), 0);
        EXPECT_EQ(windowing.SetValue(7, &delta, nullptr), 0);
        EXPECT_EQ(Get(windowing, 6), 500 + 10 * c.factor) << c.bits;
        EXPECT_EQ(Get(windowing, 7), 1000 + 10 * c.factor) << c.bits;
        EXPECT_EQ(windowing.ChangeWLByOffset(10), 0);
        EXPECT_EQ(windowing.ChangeWWByOffset(10), 0);
        EXPECT_EQ(Get(windowing, 6), 500) << c.bits;
        EXPECT_EQ(Get(windowing, 7), 1000) << c.bits;
        EXPECT_EQ(windowing.ChangeWWByOffset(5000), 0);
        EXPECT_EQ(Get(windowing, 7), 2) << c.bits;
        EXPECT_EQ(windowing.ChangeWWByOffset(1), 4) << c.bits;
    }
}

TEST(Window, NoChangeIsAnsweredWithFour) {
    CXWindowing windowing;
    int zero = 0;
    int value = 7;
    EXPECT_EQ(windowing.SetValue(6, &zero, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(7, &zero, nullptr), 4);
    EXPECT_EQ(windowing.ChangeWLByOffset(0), 4);
    EXPECT_EQ(windowing.SetValue(5, &value, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(10, &value, nullptr), 4);
    EXPECT_EQ(windowing.SetValue(8, nullptr, nullptr), 4);
    EXPECT_EQ(windowing.GetValue(8, &value, nullptr), 4);
    EXPECT_EQ(windowing.GetValue(0, nullptr, nullptr), 4);
    EXPECT_EQ(value, 7);
    // A width below 2 that was set as it stands is lifted by any step.
    SetWindow(windowing, -5, 0);
    EXPECT_EQ(windowing.SetValue(7, &zero, nullptr), 0);
    EXPECT_EQ(Get(windowing, 7), 2);
}

TEST(Window, HasNoTableBeforeTheFirstRebuild) {
    CXWindowing windowing;
    std::vector<std::uint8_t> room(4096, 99);
    EXPECT_EQ(Get(windowing, 2), 4096);
    EXPECT_EQ(windowing.GetValue(0, room.data(), nullptr), 0);
    EXPECT_EQ(windowing.GetValue(1, room.data(), nullptr), 0);
    EXPECT_EQ(std::ranges::count(room, 99), 4096);
    SetWindow(windowing, 1000, 500);
    EXPECT_EQ(Table(windowing).at(999), 254);
}

TEST(Window, ReportsTheDomainLessThePostIntercept) {
    CXWindowing windowing;
    Apply(windowing, {-1024, 3071});
    int size = 0;
    int start = 0;
    windowing.SetPostIntercept(-0.75);
    EXPECT_EQ(windowing.GetValue(2, &size, &start), 0);
    EXPECT_EQ(size, 4096);
    EXPECT_EQ(start, -1023);
    EXPECT_EQ(Get(windowing, 4), -1024);
}

TEST(Window, OverflowStopsAtTheEndsOfInt) {
    CXWindowing windowing;
    Apply(windowing, {});
    int most = INT_MAX;
    EXPECT_EQ(windowing.SetValue(6, &most, nullptr), 0);
    EXPECT_EQ(Get(windowing, 6), INT_MAX);
    EXPECT_EQ(windowing.SetValue(6, &most, nullptr), 4);
    EXPECT_EQ(windowing.ChangeWWByOffset(INT_MIN), 0);
    EXPECT_EQ(Get(windowing, 7), INT_MAX);
    for (const int level : {INT_MIN, INT_MAX}) {
        for (const int width : {INT_MIN, -1, 0, 1, INT_MAX}) {
            for (const double slope : {1.0, 1e-300, -1e-300, 0.0, std::nan(""), HUGE_VAL}) {
                const WindowCase setup{-300, 300, level, width, slope, 1e300};
                EXPECT_EQ(TableOf(setup).size(), 601U);
            }
        }
    }
}

TEST(Window, UnusableDomainsHaveNoTable) {
    constexpr int kRanges[][2] = {{1, 0}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, {0, INT_MAX}};
    for (const auto& range : kRanges) {
        CXWindowing windowing;
        Apply(windowing, {range[0], range[1]});
        EXPECT_EQ(Get(windowing, 2), 0) << range[0] << ".." << range[1];
    }
    EXPECT_EQ(TableOf({INT_MAX - 3, INT_MAX}).size(), 4U);
}

TEST(Window, CopiesAreDeep) {
    CXWindowing first;
    Apply(first, {0, 4095, 1000, 300});
    CXWindowing second(first);
    const auto table = Table(first);
    SetWindow(first, 20, 10);
    EXPECT_EQ(Table(second), table);
    second = first;
    EXPECT_EQ(Table(second), Table(first));
}

TEST(Window, ACopyOfTheTableIsNeverHalfOld) {
    CXWindowing windowing;
    Apply(windowing, {0, 65535, -10, 1});
    std::thread changes([&] {
        for (int i = 0; i < 500; ++i) SetWindow(windowing, 1, i % 2 == 0 ? 70000 : -10);
    });
    for (int i = 0; i < 200; ++i) {
        const auto table = Table(windowing);
        EXPECT_EQ(table.front(), table.back());
    }
    changes.join();
}

}  // namespace
}  // namespace quorvex
