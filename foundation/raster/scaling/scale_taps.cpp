#include "foundation/raster/scaling/scale_taps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quorvex {
namespace {

void Add(ScaleTaps& taps, std::int64_t first, std::span<const double> weights) {
    taps.places.push_back({static_cast<std::int32_t>(first),
                           static_cast<std::uint32_t>(weights.size()),
                           static_cast<std::uint32_t>(taps.weights.size())});
    for (const double weight : weights) taps.weights.push_back(static_cast<float>(weight));
}

/// Pixel i covers i x source / scaled to (i + 1) x source / scaled: counted in whole units of 1 /
/// scaled, so that nothing is lost at the edges.
void AddArea(ScaleTaps& taps, std::int64_t source, std::int64_t scaled, std::int64_t i,
             std::pmr::vector<double>& weights) {
    const std::int64_t begin = i * source;
    const std::int64_t end = begin + source;
    const std::int64_t first = begin / scaled;
    weights.clear();
    for (std::int64_t pixel = first; pixel * scaled < end; ++pixel) {
        const std::int64_t covered =
            std::min(end, (pixel + 1) * scaled) - std::max(begin, pixel * scaled);
        weights.push_back(static_cast<double>(covered) / static_cast<double>(source));
    }
    Add(taps, first, weights);
}

/// Catmull-Rom weights of the four pixels around a place, `t` behind the second.
std::array<double, 4> CubicWeights(double t) {
    return {((-0.5 * t + 1.0) * t - 0.5) * t, (1.5 * t - 2.5) * t * t + 1.0,
            ((-1.5 * t + 2.0) * t + 0.5) * t, (0.5 * t - 0.5) * t * t};
}

/// Weights of neighbouring pixels, those outside the axis given to its ends.
void AddNeighbours(ScaleTaps& taps, std::int64_t source, std::int64_t first,
                   std::span<const double> weights) {
    const auto count = static_cast<std::int64_t>(weights.size());
    const std::int64_t begin = std::clamp<std::int64_t>(first, 0, source - 1);
    const std::int64_t end = std::clamp<std::int64_t>(first + count, begin + 1, source);
    std::array<double, 4> kept{};
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t pixel = std::clamp(first + i, begin, end - 1);
        kept[static_cast<std::size_t>(pixel - begin)] += weights[static_cast<std::size_t>(i)];
    }
    Add(taps, begin, std::span(kept).first(static_cast<std::size_t>(end - begin)));
}

void AddEnlarged(ScaleTaps& taps, std::int64_t source, std::int64_t scaled, std::int64_t i,
                 Interpolation enlarging) {
    if (enlarging == Interpolation::kNearest) {
        constexpr double kWhole[] = {1.0};
        return Add(taps, (2 * i + 1) * source / (2 * scaled), kWhole);
    }
    const double place =
        (static_cast<double>(i) + 0.5) * static_cast<double>(source) / static_cast<double>(scaled) -
        0.5;
    const double whole = std::floor(place);
    const double t = place - whole;
    const auto first = static_cast<std::int64_t>(whole);
    if (enlarging == Interpolation::kCubic) {
        return AddNeighbours(taps, source, first - 1, CubicWeights(t));
    }
    const double weights[] = {1.0 - t, t};
    AddNeighbours(taps, source, first, weights);
}

/// Of one pixel.
std::size_t MostTaps(int source, int scaled, Interpolation enlarging) {
    if (scaled < source) return static_cast<std::size_t>(source / scaled) + 2;
    if (scaled == source || enlarging == Interpolation::kNearest) return 1;
    return enlarging == Interpolation::kCubic ? 4 : 2;
}

}  // namespace

std::int32_t ScaleTaps::Begin() const noexcept {
    return places.empty() ? 0 : places.front().first;
}

std::int32_t ScaleTaps::End() const noexcept {
    if (places.empty()) return 0;
    return places.back().first + static_cast<std::int32_t>(places.back().count);
}

ScaleTaps MakeScaleTaps(int source, int scaled, int start, int length, Interpolation enlarging,
                        std::pmr::memory_resource* memory) {
    ScaleTaps taps(memory);
    const auto pixels = static_cast<std::size_t>(length);
    const std::size_t mostTaps = MostTaps(source, scaled, enlarging);
    taps.places.reserve(pixels);
    taps.weights.reserve(pixels * mostTaps);
    std::pmr::vector<double> weights(memory);
    weights.reserve(mostTaps);
    for (std::int64_t i = start; i < std::int64_t{start} + length; ++i) {
        if (scaled < source) {
            AddArea(taps, source, scaled, i, weights);
        } else if (scaled == source) {
            Add(taps, i, std::array{1.0});
        } else {
            AddEnlarged(taps, source, scaled, i, enlarging);
        }
    }
    return taps;
}

ColumnTaps::ColumnTaps(const ScaleTaps& taps, std::pmr::memory_resource* memory)
    : begin_(taps.Begin()),
      sourcePixels_(static_cast<std::size_t>(taps.End() - taps.Begin())),
      firsts_(memory),
      weights_(memory),
      grouped_(memory) {
    for (const ScaleTaps::Place& place : taps.places) {
        count_ = std::max<std::size_t>(count_, place.count);
    }
    weights_.resize(count_ * taps.places.size());
    firsts_.reserve(taps.places.size() + kColumnGroup);
    for (const ScaleTaps::Place& place : taps.places) {
        std::ranges::copy(taps.WeightsOf(place),
                          weights_.begin() + static_cast<std::ptrdiff_t>(firsts_.size() * count_));
        firsts_.push_back(place.first - begin_);
    }
    constexpr std::size_t kMostGrouped = 8;  // taps; more of them lie in too many vectors
    if (count_ > 0 && count_ <= kMostGrouped) Group();
}

/// The last pixel's place fills up the last group, by weights of 0.
void ColumnTaps::Group() {
    const std::size_t groups = (firsts_.size() + kColumnGroup - 1) / kColumnGroup;
    grouped_.resize(groups * kColumnGroup * count_);
    for (std::size_t i = 0; i < firsts_.size(); ++i) {
        float* const to = grouped_.data() + i / kColumnGroup * kColumnGroup * count_;
        for (std::size_t tap = 0; tap < count_; ++tap) {
            to[tap * kColumnGroup + i % kColumnGroup] = weights_[i * count_ + tap];
        }
    }
    firsts_.resize(groups * kColumnGroup, firsts_.back());
}

void ColumnTaps::ScaleGroups(const float* whole, std::size_t first, std::span<float> scaled) const {
    const std::size_t inGroups = scaled.size() / kColumnGroup * kColumnGroup;
    GroupedTaps taps{firsts_.data() + first, grouped_.data() + first * count_, count_,
                     inGroups / kColumnGroup};
    SumColumns(taps, whole, scaled.data());
    if (inGroups == scaled.size()) return;
    std::array<float, kColumnGroup> last{};
    taps.firsts += inGroups;
    taps.weights += inGroups * count_;
    taps.groups = 1;
    SumColumns(taps, whole, last.data());
    std::copy_n(last.begin(), scaled.size() - inGroups, scaled.data() + inGroups);
}

void ColumnTaps::ScaleAny(const float* whole, std::size_t channels, std::size_t first,
                          std::span<float> scaled) const {
    const float* weights = weights_.data() + first * count_;
    for (std::size_t i = 0; i < scaled.size(); i += channels, weights += count_) {
        const float* const from = whole + static_cast<std::size_t>(firsts_[first++]) * channels;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            float sum = 0.0F;
            for (std::size_t tap = 0; tap < count_; ++tap) {
                sum += from[tap * channels + channel] * weights[tap];
            }
            scaled[i + channel] = sum;
        }
    }
}

void ColumnTaps::Scale(std::span<const float> whole, std::size_t channels,
                       std::span<float> scaled) const {
    if (channels == 1) return ScalePart(whole, 0, scaled);
    ScaleAny(whole.data(), channels, 0, scaled);
}

void ColumnTaps::ScalePart(std::span<const float> whole, std::size_t first,
                           std::span<float> scaled) const {
    if (!grouped_.empty()) return ScaleGroups(whole.data(), first, scaled);
    ScaleAny(whole.data(), 1, first, scaled);
}

}  // namespace quorvex
