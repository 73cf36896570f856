/// Shapes and noise from which the phantoms are drawn; the same on every run.
///
/// Places are in the unit square from -1 to 1, x to the right and y down.
#pragma once

#include "quorvex/Types.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex::tools {

struct Place {
    double x = 0.0;
    double y = 0.0;
};

/// An ellipse, turned clockwise by `degrees`, as the tables of the phantoms state it.
struct Outline {
    Place centre;
    double radiusX = 0.0;
    double radiusY = 0.0;
    double degrees = 0.0;
};

/// An ellipse that can be asked about a place.
class Ellipse {
public:
    explicit Ellipse(const Outline& outline) noexcept;

    /// How far from the centre a place lies: 0 there, 1 on the edge.
    [[nodiscard]] double DistanceOf(Place place) const noexcept;
    /// 1 inside, 0 outside, and a soft edge of about `softness` between.
    [[nodiscard]] double Coverage(Place place, double softness) const noexcept;
    /// Length of a ray through an ellipsoid of this outline, 1 through its middle.
    [[nodiscard]] double Thickness(Place place) const noexcept;

private:
    [[nodiscard]] bool IsFarFrom(Place place, double margin) const noexcept;

    Outline outline_;
    double cosine_;
    double sine_;
};

/// A mix: `from` at 0, `to` at 1.
double Mix(double from, double to, double share) noexcept;

/// Normally distributed noise of deviation 1 for one pixel of one seed.
double Noise(int x, int y, std::uint32_t seed) noexcept;

/// The same between the pixels of its grid.
double SmoothNoise(double x, double y, std::uint32_t seed) noexcept;

/// Evenly distributed from 0 to 1 for the n-th number of one seed.
double EvenNoise(int n, std::uint32_t seed) noexcept;

/// A value as unsigned 12-bit sample.
std::uint16_t TwelveBits(double value) noexcept;

/// The middle of pixel (x, y) of an image, in the unit square; the longer side fills it.
Place PlaceOf(int x, int y, CSize size) noexcept;

/// Calls `draw(x, y, place)` for each pixel of an image, row by row from the top.
template <class Draw>
void ForEachPixel(CSize size, Draw draw) {
    for (int y = 0; y < size.cy; ++y)
        for (int x = 0; x < size.cx; ++x) draw(x, y, PlaceOf(x, y, size));
}

}  // namespace quorvex::tools
