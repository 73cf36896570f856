// The inverse wavelet transform against the equations of ISO/IEC 15444-1 Annex F, computed one
// signal at a time with 64 bits.
#include "foundation/engines/jpeg2000/decoder/wavelet/synthesis.h"
#include "tests/support/instruction_sets.h"

#include <cmath>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <type_traits>

namespace quorvex::j2k {
namespace {

template <class T>
using Wide = std::conditional_t<std::is_same_v<T, float>, double, std::int64_t>;

/// A signal that begins at `first`, with samples mirrored about its ends.
template <class T>
struct Signal {
    int first;
    std::vector<Wide<T>> samples;
    Wide<T>& At(int place) {
        const int last = first + static_cast<int>(samples.size()) - 1;
        while (place < first || place > last) {
            if (place < first) place = 2 * first - place;
            if (place > last) place = 2 * last - place;
        }
        return samples[static_cast<std::size_t>(place - first)];
    }
};

template <class T>
void Step(Signal<T>& signal, int parity, const std::function<Wide<T>(Wide<T>)>& change) {
    const int end = signal.first + static_cast<int>(signal.samples.size());
    for (int i = signal.first; i < end; ++i) {
        if ((i & 1) == parity) signal.At(i) += change(signal.At(i - 1) + signal.At(i + 1));
    }
}

void Restore(Signal<std::int32_t>& signal) {
    if (signal.samples.size() == 1) {
        if (signal.first % 2 != 0) signal.samples[0] /= 2;
        return;
    }
    Step<std::int32_t>(signal, 0, [](std::int64_t sum) { return -((sum + 2) >> 2); });
    Step<std::int32_t>(signal, 1, [](std::int64_t sum) { return sum >> 1; });
}

void Restore(Signal<float>& signal) {
    constexpr double kScale = 1.230174104914001;
    constexpr double kSteps[] = {0.443506852043971, 0.882911075530934, -0.052980118572961,
                                 -1.586134342059924};
    if (signal.samples.size() == 1) {
        if (signal.first % 2 != 0) signal.samples[0] /= 2;
        return;
    }
    for (int i = 0; i < static_cast<int>(signal.samples.size()); ++i) {
        double& sample = signal.samples[static_cast<std::size_t>(i)];
        sample = (signal.first + i) % 2 == 0 ? sample * kScale : sample / kScale;
    }
    for (int step = 0; step < 4; ++step) {
        Step<float>(signal, step % 2, [&](double sum) { return -kSteps[step] * sum; });
    }
}

/// An area with its samples, in the coordinates of a resolution.
template <class T>
struct Field {
    Rect area;
    std::vector<Wide<T>> samples;
    Wide<T>& At(std::uint32_t x, std::uint32_t y) {
        return samples[std::size_t{y - area.y0} * area.Width() + (x - area.x0)];
    }
};

template <class T>
Field<T> RandomField(const Rect& area, unsigned seed) {
    std::mt19937 random(seed);
    Field<T> field{area, {}};
    for (std::size_t i = 0; i < std::size_t{area.Width()} * area.Height(); ++i) {
        field.samples.push_back(static_cast<int>(random() % 8001) - 4000);
    }
    return field;
}

// Rows first, then columns, of samples that stand where the bands are interleaved.
template <class T>
Field<T> Expected(Field<T> field) {
    const Rect& area = field.area;
    for (std::uint32_t y = area.y0; y < area.y1; ++y) {
        Signal<T> row{static_cast<int>(area.x0), {}};
        for (std::uint32_t x = area.x0; x < area.x1; ++x) row.samples.push_back(field.At(x, y));
        Restore(row);
        for (std::uint32_t x = area.x0; x < area.x1; ++x)
            field.At(x, y) = row.At(static_cast<int>(x));
    }
    for (std::uint32_t x = area.x0; x < area.x1; ++x) {
        Signal<T> column{static_cast<int>(area.y0), {}};
        for (std::uint32_t y = area.y0; y < area.y1; ++y) column.samples.push_back(field.At(x, y));
        Restore(column);
        for (std::uint32_t y = area.y0; y < area.y1; ++y)
            field.At(x, y) = column.At(static_cast<int>(y));
    }
    return field;
}

/// One band of an interleaved field, in a window, as a level takes it: floats with K in them.
template <class T>
class Band final : public RowSource<T> {
public:
    Band(Field<T>& field, const Rect& window, bool isRight, bool isLower)
        : field_(field), window_(window), isRight_(isRight), isLower_(isLower) {}
    const T* Row(std::uint32_t y) override {
        constexpr double kScale = 1.230174104914001;
        const double scale =
            isRight_ == isLower_ ? (isRight_ ? 1 / kScale / kScale : kScale * kScale) : 1;
        row_.assign(field_.area.Width() + kRowSlack, T{});
        std::size_t i = 0;
        for (std::uint32_t x = window_.x0; x < window_.x1; ++x) {
            if ((x % 2 != 0) != isRight_) continue;
            const Wide<T> sample = field_.At(x, 2 * y + (isLower_ ? 1 : 0));
            row_[i++] =
                std::is_same_v<T, float> ? static_cast<T>(sample * scale) : static_cast<T>(sample);
        }
        return row_.data();
    }

private:
    Field<T>& field_;
    Rect window_;
    bool isRight_, isLower_;
    std::vector<T> row_;
};

// The largest difference of a level's samples in `region` from the expected ones.
template <class T>
double Difference(Field<T>& bands, Field<T>& expected, const Rect& window, const Rect& region) {
    Band<T> ll(bands, window, false, false);
    Band<T> hl(bands, window, true, false);
    Band<T> lh(bands, window, false, true);
    Band<T> hh(bands, window, true, true);
    Synthesis<T> level(window, {&ll, &hl, &lh, &hh, 0});
    double most = 0;
    for (std::uint32_t y = region.y0; y < region.y1; ++y) {
        const T* row = level.Row(y);
        for (std::uint32_t x = region.x0; x < region.x1; ++x) {
            const double difference =
                static_cast<double>(row[x - window.x0]) - static_cast<double>(expected.At(x, y));
            most = std::max(most, std::abs(difference));
        }
    }
    return most;
}

template <class T>
void CheckWholeLevels(double tolerance) {
    for (std::uint32_t width = 1; width <= 37; width += width < 12 ? 1 : 5) {
        for (std::uint32_t height = 1; height <= 19; height += height < 12 ? 1 : 3) {
            for (std::uint32_t start = 0; start < 4; ++start) {
                const Rect area{start % 2, start / 2, start % 2 + width, start / 2 + height};
                Field<T> bands = RandomField<T>(area, width * 100 + height);
                Field<T> expected = Expected(bands);
                EXPECT_LE(Difference(bands, expected, area, area), tolerance)
                    << width << " x " << height << " from " << area.x0 << "," << area.y0;
            }
        }
    }
}

TEST(Jpeg2000Wavelet, WholeLevelsOfAllParities) {
    ForEachInstructionSet([] {
        CheckWholeLevels<std::int32_t>(0);
        CheckWholeLevels<float>(0.01);
    });
}

template <class T>
void CheckWindows(double tolerance) {
    constexpr std::uint32_t kMargin = Synthesis<T>::kMargin;
    const Rect area{3, 2, 60, 45};
    Field<T> bands = RandomField<T>(area, 5);
    Field<T> expected = Expected(bands);
    for (std::uint32_t begin = 0; begin < 12; ++begin) {
        const Rect window{area.x0 + begin, area.y0 + begin, area.x1 - 2 * begin, area.y1 - begin};
        const std::uint32_t margin = begin == 0 ? 0 : kMargin;
        const Rect region{window.x0 + margin, window.y0 + margin, window.x1 - margin,
                          window.y1 - margin};
        EXPECT_LE(Difference(bands, expected, window, region), tolerance) << begin;
    }
}

TEST(Jpeg2000Wavelet, WindowsAreRightInsideOfTheirMargins) {
    CheckWindows<std::int32_t>(0);
    CheckWindows<float>(0.01);
}

}  // namespace
}  // namespace quorvex::j2k
