// The radiograph-like view: how much radiation passes through a chest of ellipsoids.
#include "tools/phantom/phantom_images.h"
#include "tools/phantom/phantom_shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace quorvex::tools {
namespace {

struct Part {
    Outline outline;
    double absorption;  // of a ray through the middle; negative for air in a part drawn before
};
struct DrawnPart {
    explicit DrawnPart(const Part& part) : shape(part.outline), absorption(part.absorption) {}
    Ellipse shape;
    double absorption;
};

constexpr double kOpenField = 3900.0;  // sample where nothing is in the way
constexpr double kPerAbsorption = 900.0;
constexpr double kNoise = 9.0;
constexpr double kSoftness = 0.012;
constexpr std::uint32_t kSeed = 7;
constexpr int kRibs = 9;
constexpr int kVesselsPerLung = 110;
constexpr double kMiddleLine = -0.01;

constexpr Part kParts[] = {
    {{{0.0, 0.35}, 0.76, 1.30, 0}, 2.3},      // trunk
    {{{0.0, -0.88}, 0.20, 0.50, 0}, 1.0},     // neck
    {{{-0.72, -0.42}, 0.34, 0.30, 35}, 0.9},  // shoulders
    {{{0.72, -0.42}, 0.34, 0.30, -35}, 0.9},
    {{{-0.33, -0.06}, 0.235, 0.53, 4}, -1.45},  // lungs
    {{{0.34, -0.05}, 0.225, 0.52, -4}, -1.45},
    {{{0.0, -0.62}, 0.045, 0.36, 0}, -0.35},     // windpipe
    {{{0.13, 0.22}, 0.29, 0.23, 32}, 0.95},      // heart
    {{{0.02, -0.08}, 0.10, 0.36, 0}, 0.55},      // great vessels
    {{{0.07, -0.26}, 0.075, 0.075, 0}, 0.35},    // aortic arch
    {{{-0.36, 0.72}, 0.34, 0.30, 0}, 1.0},       // liver
    {{{0.36, 0.76}, 0.34, 0.28, 0}, 0.8},        // spleen and stomach
    {{{0.30, 0.62}, 0.13, 0.07, 0}, -0.6},       // air in the stomach
    {{{-0.30, -0.52}, 0.30, 0.030, -12}, 0.42},  // collar bones
    {{{0.30, -0.52}, 0.30, 0.030, 12}, 0.42},
    {{{-0.60, -0.22}, 0.07, 0.28, 14}, 0.30},  // shoulder blades
    {{{0.60, -0.22}, 0.07, 0.28, -14}, 0.30},
};

void AddVessels(std::vector<Part>& parts, double side, std::uint32_t seed) {
    const Place root = {side * 0.13, 0.02};
    for (int i = 0; i < kVesselsPerLung; ++i) {
        const double angle = (EvenNoise(3 * i, seed) - 0.5) * 2.6;
        const double distance = 0.06 + 0.40 * EvenNoise(3 * i + 1, seed);
        const double width = Mix(0.016, 0.003, distance / 0.46);
        const Place centre = {root.x + side * 0.62 * distance * std::cos(angle),
                              root.y + distance * std::sin(angle)};
        const double turn = side * angle / std::numbers::pi * 180;
        parts.push_back({{centre, 0.07, width, turn}, 0.10 + 0.10 * EvenNoise(3 * i + 2, seed)});
    }
}

std::vector<DrawnPart> Chest() {
    std::vector<Part> parts(std::begin(kParts), std::end(kParts));
    AddVessels(parts, -1, kSeed + 1);
    AddVessels(parts, 1, kSeed + 2);
    return {parts.begin(), parts.end()};
}

// Ribs run down and outwards from the spine in front of and behind the lungs.
double RibsAt(Place place) {
    const double side = std::abs(place.x - kMiddleLine);
    if (side > 0.60) return 0;
    double absorption = 0;
    for (int i = 0; i < kRibs; ++i) {
        const double top = -0.60 + 0.125 * i;
        const double behind = (place.y - (top - 0.10 + 0.55 * side * side)) / 0.022;
        const double front = (place.y - (top + 0.34 - 0.75 * side * side)) / 0.026;
        absorption += 0.17 * std::exp(-behind * behind);
        if (side > 0.16) absorption += 0.10 * std::exp(-front * front);
    }
    return absorption * std::clamp((0.60 - side) / 0.05, 0.0, 1.0);
}

double SpineAt(Place place) {
    const double across = (place.x - kMiddleLine) / 0.085;
    const double column = std::exp(-across * across * across * across);
    const double vertebrae = 0.5 + 0.5 * std::cos(place.y * 2 * std::numbers::pi / 0.115);
    return column * (0.55 + 0.22 * vertebrae);
}

// A lead letter "L" beside the patient's left shoulder.
bool IsMarker(Place place) {
    const double x = place.x - 0.62;
    const double y = place.y + 0.86;
    return x >= 0 && y >= 0 && x < 0.06 && y < 0.10 && (x < 0.018 || y > 0.082);
}

double AbsorptionAt(std::span<const DrawnPart> parts, Place place) {
    double absorption = RibsAt(place) + SpineAt(place);
    for (const auto& part : parts)
        absorption +=
            part.absorption * part.shape.Thickness(place) * part.shape.Coverage(place, kSoftness);
    return IsMarker(place) ? 4.2 : std::max(absorption, 0.0);
}

}  // namespace

std::vector<std::uint16_t> DrawRadiograph(CSize size) {
    const auto parts = Chest();
    std::vector<std::uint16_t> samples;
    ForEachPixel(size, [&](int x, int y, Place place) {
        const double absorption = AbsorptionAt(parts, place);
        const double noise = kNoise * (1 + absorption) * Noise(x, y, kSeed);
        samples.push_back(TwelveBits(kOpenField - kPerAbsorption * absorption + noise));
    });
    return samples;
}

}  // namespace quorvex::tools
