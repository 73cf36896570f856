#include "foundation/raster/scaling/area_averager.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace quorvex {
namespace {

constexpr ValueLimits kNoClamp{-65536.0F, 65536.0F};

/// Random values of a kind, of which all bits occur.
struct TestValues {
    ValueKind kind;
    CSize size;
    std::vector<unsigned char> bytes;

    TestValues(ValueKind valueKind, CSize imageSize)
        : kind(valueKind),
          size(imageSize),
          bytes(static_cast<std::size_t>(size.cx * size.cy) * BytesOf(kind)) {
        std::mt19937 random(static_cast<unsigned>(size.cx));
        for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
    }
    [[nodiscard]] ValueImage Image() const {
        return {bytes.data(), kind, static_cast<std::size_t>(size.cx)};
    }
    [[nodiscard]] double At(int x, int y) const {
        const auto place = static_cast<std::size_t>(y * size.cx + x);
        if (kind == ValueKind::kUnsignedByte) return bytes[place];
        if (kind == ValueKind::kSignedByte) return static_cast<std::int8_t>(bytes[place]);
        std::uint16_t word = 0;
        std::memcpy(&word, bytes.data() + 2 * place, sizeof word);
        return kind == ValueKind::kSignedWord ? static_cast<std::int16_t>(word) : word;
    }
};

/// How much of source pixel `s` lies in pixel `d`, as a share of that.
double Share(int s, int d, int source, int shrunk) {
    const double factor = static_cast<double>(source) / shrunk;
    const double begin = std::max<double>(s, d * factor);
    const double end = std::min<double>(s + 1, (d + 1) * factor);
    return std::max(end - begin, 0.0) / factor;
}

/// What a pixel should be, and the limits of what weighs in it.
struct Expected {
    double average = 0.0;
    double low = 1e9;
    double high = -1e9;
};

Expected ExpectedAt(const TestValues& values, CSize to, ValueLimits clamp, int x, int y) {
    Expected expected;
    constexpr double kNothing = 1e-9;
    for (int row = 0; row < values.size.cy; ++row) {
        const double ofRow = Share(row, y, values.size.cy, to.cy);
        if (ofRow < kNothing) continue;
        for (int column = 0; column < values.size.cx; ++column) {
            const double ofColumn = Share(column, x, values.size.cx, to.cx);
            if (ofColumn < kNothing) continue;
            const double value = values.At(column, row);
            expected.low = std::min(expected.low, value);
            expected.high = std::max(expected.high, value);
            expected.average += ofRow * ofColumn * std::clamp<double>(value, clamp.low, clamp.high);
        }
    }
    return expected;
}

struct Shrinking {
    CSize from;
    CSize to;
};
constexpr Shrinking kShrinkings[] = {{{67, 23}, {23, 8}}, {{100, 9}, {99, 9}},  {{40, 12}, {40, 5}},
                                     {{300, 5}, {5, 2}},  {{97, 41}, {33, 41}}, {{5, 3}, {1, 1}}};
constexpr ValueKind kKinds[] = {ValueKind::kUnsignedByte, ValueKind::kSignedByte,
                                ValueKind::kUnsignedWord, ValueKind::kSignedWord};

std::vector<float> RowOf(AreaAverager& averager, const TestValues& values, ValueLimits clamp,
                         int y) {
    std::vector<float> row(static_cast<std::size_t>(averager.Size().cx));
    averager.Average(values.Image(), clamp, y, y, 0, row);
    return row;
}

TEST(AreaAverager, ClampsAndAveragesAsDefined) {
    for (const auto& [from, to] : kShrinkings) {
        for (const ValueKind kind : kKinds) {
            const TestValues values(kind, from);
            AreaAverager averager(from, to);
            const float unit = BytesOf(kind) == 1 ? 1.0F : 256.0F;
            for (const ValueLimits clamp : {kNoClamp, {-20.25F * unit, 60.5F * unit}}) {
                for (int y = 0; y < to.cy; ++y) {
                    const auto row = RowOf(averager, values, clamp, y);
                    for (int x = 0; x < to.cx; ++x) {
                        const double expected = ExpectedAt(values, to, clamp, x, y).average;
                        ASSERT_NEAR(row[static_cast<std::size_t>(x)], expected, 3e-4F * unit)
                            << from.cx << " to " << to.cx << " at " << x << ' ' << y;
                    }
                }
            }
        }
    }
}

TEST(AreaAverager, AnAverageIsTheSameToTheBitWhateverElseIsAsked) {
    for (const auto& [from, to] : kShrinkings) {
        const TestValues values(ValueKind::kSignedWord, from);
        AreaAverager averager(from, to);
        const int y = to.cy / 2;
        const auto whole = RowOf(averager, values, kNoClamp, y);
        EXPECT_EQ(RowOf(averager, values, {-32768.0F, 32767.0F}, y), whole);
        for (std::size_t first = 0; first < whole.size(); first += kColumnGroup) {
            const std::size_t count = std::min(kColumnGroup, whole.size() - first);
            std::vector<float> group(count);
            averager.Average(values.Image(), kNoClamp, y, y, first, group);
            EXPECT_TRUE(std::equal(group.begin(), group.end(),
                                   whole.begin() + static_cast<std::ptrdiff_t>(first)))
                << from.cx << " to " << to.cx << " at " << first;
        }
    }
}

TEST(AreaAverager, LimitsAreThoseOfWhatWeighs) {
    for (const auto& [from, to] : kShrinkings) {
        for (const ValueKind kind : kKinds) {
            const TestValues values(kind, from);
            const AreaAverager averager(from, to);
            const auto width = static_cast<std::size_t>(to.cx);
            std::vector<ValueLimits> groups((width + kColumnGroup - 1) / kColumnGroup);
            averager.FindLimits(values.Image(), to.cy - 1, groups);
            for (std::size_t i = 0; i < groups.size(); ++i) {
                Expected all;
                for (std::size_t x = i * kColumnGroup; x < std::min((i + 1) * kColumnGroup, width);
                     ++x) {
                    const Expected one =
                        ExpectedAt(values, to, kNoClamp, static_cast<int>(x), to.cy - 1);
                    all.low = std::min(all.low, one.low);
                    all.high = std::max(all.high, one.high);
                }
                EXPECT_EQ(groups[i].low, all.low) << from.cx << " to " << to.cx << " group " << i;
                EXPECT_EQ(groups[i].high, all.high) << from.cx << " to " << to.cx;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex
