// The CT-like slice: overlaid ellipses in Hounsfield units, with noise.
#include "tools/phantom/phantom_images.h"
#include "tools/phantom/phantom_shapes.h"

#include <cmath>
#include <numbers>
#include <span>

namespace quorvex::tools {
namespace {

struct Organ {
    Outline outline;
    double hounsfield;
};
struct DrawnOrgan {
    explicit DrawnOrgan(const Organ& organ) : shape(organ.outline), hounsfield(organ.hounsfield) {}
    Ellipse shape;
    double hounsfield;
};

constexpr double kAir = -1024.0;
constexpr double kOffset = 1024.0;  // minus the rescale intercept
constexpr double kNoise = 14.0;
constexpr double kSoftness = 0.006;
constexpr double kFieldOfView = 0.99;
constexpr std::uint32_t kSeed = 2;
constexpr int kVesselsPerLung = 70;
constexpr int kRibsPerSide = 6;

constexpr Outline kLeftLung = {{0.40, -0.03}, 0.29, 0.42, 6};
constexpr Outline kRightLung = {{-0.40, -0.02}, 0.30, 0.43, -6};
constexpr Outline kRibCage = {{0.0, 0.0}, 0.765, 0.525, 0};

constexpr Organ kTorso[] = {
    {{{0.0, 0.02}, 0.88, 0.64, 0}, -105},  // skin and fat
    {{{0.0, 0.01}, 0.81, 0.57, 0}, 48},    // muscle
    {{{0.0, 0.0}, 0.71, 0.48, 0}, -60},   {kRightLung, -860}, {kLeftLung, -860},
};
constexpr Organ kMiddle[] = {
    {{{0.02, -0.06}, 0.16, 0.36, 0}, 38},   // mediastinum
    {{{0.11, 0.03}, 0.25, 0.21, 28}, 55},   // heart
    {{{0.19, 0.06}, 0.13, 0.10, 28}, 170},  // left ventricle, contrast medium
    {{{0.03, -0.02}, 0.09, 0.08, 28}, 150},
    {{{-0.06, -0.19}, 0.065, 0.065, 0}, 240},  // ascending aorta
    {{{0.13, 0.29}, 0.055, 0.055, 0}, 235},    // descending aorta
    {{{-0.16, -0.12}, 0.035, 0.045, 0}, 260},  // vena cava
    {{{-0.07, 0.16}, 0.035, 0.030, 0}, -980},  // bronchi
    {{{0.08, 0.19}, 0.030, 0.027, 0}, -980},
    {{{0.03, 0.26}, 0.028, 0.020, 0}, 30},  // oesophagus
    {{{0.03, 0.26}, 0.008, 0.006, 0}, -700},
    {{{0.0, 0.46}, 0.09, 0.115, 0}, 420},  // vertebra
    {{{0.0, 0.375}, 0.125, 0.085, 0}, 520},
    {{{0.0, 0.375}, 0.110, 0.070, 0}, 190},
    {{{-0.13, 0.47}, 0.085, 0.028, -20}, 430},
    {{{0.13, 0.47}, 0.085, 0.028, 20}, 430},
    {{{0.0, 0.55}, 0.022, 0.065, 0}, 430},
    {{{0.0, 0.475}, 0.043, 0.038, 0}, 25},   // spinal canal
    {{{0.0, -0.515}, 0.10, 0.028, 0}, 430},  // breastbone
    {{{0.0, -0.515}, 0.085, 0.016, 0}, 160},
    {{{-0.52, 0.13}, 0.030, 0.027, 15}, 40},  // nodule
};

void AddVessels(std::vector<Organ>& organs, const Outline& lung, std::uint32_t seed) {
    for (int i = 0; i < kVesselsPerLung; ++i) {
        const double angle = 2 * std::numbers::pi * EvenNoise(3 * i, seed);
        const double distance = 0.9 * std::sqrt(EvenNoise(3 * i + 1, seed));
        const double radius =
            Mix(0.016, 0.004, distance) * (0.6 + 0.8 * EvenNoise(3 * i + 2, seed));
        const Place centre = {lung.centre.x + lung.radiusX * distance * std::cos(angle),
                              lung.centre.y + lung.radiusY * distance * std::sin(angle)};
        organs.push_back({{centre, radius * 1.6, radius, angle / std::numbers::pi * 180}, 20});
    }
}

void AddRibs(std::vector<Organ>& organs) {
    constexpr double kFirst = 20;  // degrees from the front
    constexpr double kStep = 26;
    for (int i = 0; i < 2 * kRibsPerSide; ++i) {
        const int rib = i / 2;
        const double degrees = kFirst + kStep * rib;
        const double angle = (i % 2 == 0 ? degrees : -degrees) / 180 * std::numbers::pi;
        const Place centre = {kRibCage.radiusX * std::sin(angle),
                              -kRibCage.radiusY * std::cos(angle)};
        const double tangent =
            std::atan2(kRibCage.radiusY * std::sin(angle), kRibCage.radiusX * std::cos(angle));
        const double turn = tangent / std::numbers::pi * 180;
        organs.push_back({{centre, 0.085, 0.026, turn}, 560});
        organs.push_back({{centre, 0.072, 0.013, turn}, 180});
    }
}

std::vector<DrawnOrgan> Chest() {
    std::vector<Organ> organs(std::begin(kTorso), std::end(kTorso));
    AddVessels(organs, kLeftLung, kSeed + 1);
    AddVessels(organs, kRightLung, kSeed + 2);
    organs.insert(organs.end(), std::begin(kMiddle), std::end(kMiddle));
    AddRibs(organs);
    return {organs.begin(), organs.end()};
}

// The couch: a thin curved shell under the patient, filled with foam.
double CouchAt(Place place, double below) {
    constexpr Outline kOutline = {{0.0, -0.35}, 1.6, 1.12, 0};
    static const Ellipse kShell(kOutline);
    constexpr double kThickness = 0.09;
    constexpr double kSkin = 0.012;
    const double depth = (kShell.DistanceOf(place) - 1.0) * kOutline.radiusY;
    if (depth < 0 || depth > kThickness || std::abs(place.x) > 0.62) return below;
    return depth < kSkin || depth > kThickness - kSkin ? -220 : -920;
}

double HounsfieldAt(std::span<const DrawnOrgan> organs, Place place) {
    double value = CouchAt(place, -1000);
    for (const auto& organ : organs)
        value = Mix(value, organ.hounsfield, organ.shape.Coverage(place, kSoftness));
    return value;
}

}  // namespace

std::vector<std::uint16_t> DrawSlice(CSize size) {
    const auto organs = Chest();
    std::vector<std::uint16_t> samples;
    ForEachPixel(size, [&](int x, int y, Place place) {
        const bool isScanned = std::hypot(place.x, place.y) < kFieldOfView;
        const double value =
            isScanned ? HounsfieldAt(organs, place) + kNoise * Noise(x, y, kSeed) : kAir;
        samples.push_back(TwelveBits(value + kOffset));
    });
    return samples;
}

}  // namespace quorvex::tools
