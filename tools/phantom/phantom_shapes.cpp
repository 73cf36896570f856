#include "tools/phantom/phantom_shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quorvex::tools {
namespace {

constexpr double kRadian = std::numbers::pi / 180.0;

// A counter-based generator (the finaliser of MurmurHash3): any pixel's noise without its
// neighbours'.
std::uint32_t Scramble(std::uint32_t bits) noexcept {
    bits = (bits ^ (bits >> 16)) * 0x85EBCA6BU;
    bits = (bits ^ (bits >> 13)) * 0xC2B2AE35U;
    return bits ^ (bits >> 16);
}

std::uint32_t Hash(int x, int y, std::uint32_t seed) noexcept {
    const auto row = Scramble(static_cast<std::uint32_t>(y) + seed * 0x9E3779B9U);
    return Scramble(static_cast<std::uint32_t>(x) ^ row);
}

}  // namespace

Ellipse::Ellipse(const Outline& outline) noexcept
    : outline_(outline),
      cosine_(std::cos(outline.degrees * kRadian)),
      sine_(std::sin(outline.degrees * kRadian)) {}

double Ellipse::DistanceOf(Place place) const noexcept {
    const double x = place.x - outline_.centre.x;
    const double y = place.y - outline_.centre.y;
    const double u = (x * cosine_ + y * sine_) / outline_.radiusX;
    const double v = (y * cosine_ - x * sine_) / outline_.radiusY;
    return std::sqrt(u * u + v * v);
}

// Most shapes are far from most places, so this is asked first.
bool Ellipse::IsFarFrom(Place place, double margin) const noexcept {
    const double reach = std::max(outline_.radiusX, outline_.radiusY) * (1.0 + margin);
    const double x = place.x - outline_.centre.x;
    const double y = place.y - outline_.centre.y;
    return x * x + y * y > reach * reach;
}

double Ellipse::Coverage(Place place, double softness) const noexcept {
    const double edge = softness / std::min(outline_.radiusX, outline_.radiusY);
    if (IsFarFrom(place, edge)) return 0.0;
    return std::clamp(0.5 + (1.0 - DistanceOf(place)) / edge, 0.0, 1.0);
}

double Ellipse::Thickness(Place place) const noexcept {
    if (IsFarFrom(place, 0.0)) return 0.0;
    const double distance = DistanceOf(place);
    return distance < 1.0 ? std::sqrt(1.0 - distance * distance) : 0.0;
}

double Mix(double from, double to, double share) noexcept {
    return from + (to - from) * share;
}

double Noise(int x, int y, std::uint32_t seed) noexcept {
    // Four even numbers added up come close to a normal distribution, of deviation sqrt(4 / 12).
    double sum = -2.0;
    for (std::uint32_t part = 0; part < 4; ++part)
        sum += static_cast<double>(Hash(x, y, seed * 4 + part)) / 4294967295.0;
    return sum * std::numbers::sqrt3;
}

double SmoothNoise(double x, double y, std::uint32_t seed) noexcept {
    const double left = std::floor(x);
    const double top = std::floor(y);
    const int column = static_cast<int>(left);
    const int row = static_cast<int>(top);
    const auto along = [&](int line) {
        return Mix(Noise(column, line, seed), Noise(column + 1, line, seed), x - left);
    };
    return Mix(along(row), along(row + 1), y - top);
}

double EvenNoise(int n, std::uint32_t seed) noexcept {
    return static_cast<double>(Hash(n, 0, seed)) / 4294967295.0;
}

std::uint16_t TwelveBits(double value) noexcept {
    return static_cast<std::uint16_t>(std::clamp(std::lround(value), 0L, 4095L));
}

Place PlaceOf(int x, int y, CSize size) noexcept {
    const double half = std::max(size.cx, size.cy) / 2.0;
    return {(x + 0.5 - size.cx / 2.0) / half, (y + 0.5 - size.cy / 2.0) / half};
}

}  // namespace quorvex::tools
