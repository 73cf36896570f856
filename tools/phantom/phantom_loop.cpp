// The ultrasound-like loop: a beating chamber in a fan of speckle, with coloured flow.
#include "tools/phantom/phantom_images.h"
#include "tools/phantom/phantom_shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quorvex::tools {
namespace {

using Colour = std::array<double, 3>;

constexpr double kTurn = 2 * std::numbers::pi;
constexpr Place kApex = {0.0, -0.74};
constexpr double kHalfAngle = 0.66;  // radians
constexpr double kNear = 0.08;
constexpr double kDepth = 1.40;
constexpr std::uint32_t kSeed = 11;
constexpr Colour kTrace = {90, 230, 110};
constexpr Colour kBox = {60, 200, 90};

struct Polar {
    double distance;
    double angle;
};

Polar PolarOf(Place place) {
    return {std::hypot(place.x - kApex.x, place.y - kApex.y),
            std::atan2(place.x - kApex.x, place.y - kApex.y)};
}

bool IsInFan(Polar polar) {
    return std::abs(polar.angle) < kHalfAngle && polar.distance > kNear && polar.distance < kDepth;
}

// Speckle is fine along the beam and grows wider with depth across it.
double SpeckleAt(Polar polar, double phase) {
    const double across = polar.angle * 75;
    const double along = polar.distance * 110 + 1.5 * std::sin(kTurn * phase);
    return std::abs(SmoothNoise(across, along, kSeed)) +
           0.5 * std::abs(SmoothNoise(across, along, kSeed + 1));
}

Ellipse Chamber(double phase) {
    const double beat = 1.0 + 0.16 * std::cos(kTurn * phase);
    return Ellipse({{0.02, -0.02}, 0.21 * beat, 0.37 * (0.5 + 0.5 * beat), 8});
}

double EchoAt(Place place, Polar polar, double phase) {
    const Ellipse chamber = Chamber(phase);
    const double distance = chamber.DistanceOf(place);
    const double wall = std::exp(-std::pow((distance - 1.12) / 0.13, 2));
    const double tissue = Mix(70, 8, chamber.Coverage(place, 0.03)) + 95 * wall;
    const double leaflet =
        (0.12 + 0.10 * std::sin(kTurn * phase)) * (1 - std::abs(place.x - 0.02) / 0.2);
    const double valve =
        std::abs(place.y - 0.33 - leaflet) < 0.012 && std::abs(place.x - 0.02) < 0.19 ? 120 : 0;
    const double fading = 1.15 - 0.5 * polar.distance / kDepth;
    return (tissue + valve) * fading * (0.35 + 0.75 * SpeckleAt(polar, phase));
}

bool IsInBox(Polar polar, double margin) {
    return std::abs(polar.angle - 0.02) < 0.25 - margin && polar.distance > 0.52 + margin &&
           polar.distance < 1.08 - margin;
}

// Flow towards the probe is red, away from it blue, faster flow is brighter.
double FlowAt(Place place, double phase) {
    const double across = (place.x - 0.02) / 0.11;
    const double along = (place.y - 0.06) / 0.26;
    const double jet = std::exp(-across * across - along * along);
    const double eddy = 0.25 * SmoothNoise(place.x * 22, place.y * 22 - 4 * phase, kSeed + 2);
    return jet * (std::sin(kTurn * phase + 0.8) + eddy) * 1.2;
}

Colour FlowColour(double velocity) {
    const double speed = std::min(std::abs(velocity), 1.0);
    if (velocity > 0) return {90 + 165 * speed, 210 * speed * speed, 20};
    return {15, 190 * speed * speed, 100 + 155 * speed};
}

Colour FanColour(Place place, double phase) {
    constexpr double kSlowest = 0.22;  // the wall filter takes slower movement away
    const Polar polar = PolarOf(place);
    if (!IsInFan(polar)) return {0, 0, 0};
    if (IsInBox(polar, 0) && !IsInBox(polar, 0.008)) return kBox;
    const double velocity = FlowAt(place, phase);
    const bool isFlow = IsInBox(polar, 0) && std::abs(velocity) > kSlowest &&
                        Chamber(phase).DistanceOf(place) < 0.95;
    if (isFlow) return FlowColour(velocity);
    const double echo = EchoAt(place, polar, phase);
    return {echo, echo, echo * 1.04};
}

// The scale of velocities at the right edge.
bool IsInScale(Place place) {
    return place.x > 0.90 && place.x < 0.95 && std::abs(place.y + 0.35) < 0.30;
}
Colour ScaleColour(Place place) {
    return FlowColour((-0.35 - place.y) / 0.30);
}

double TraceHeight(double time) {
    const double beat = time - std::floor(time);
    const auto wave = [beat](double at, double width) {
        return std::exp(-std::pow((beat - at) / width, 2));
    };
    return 0.10 * wave(0.18, 0.03) - 0.10 * wave(0.27, 0.012) + wave(0.30, 0.014) -
           0.22 * wave(0.335, 0.014) + 0.20 * wave(0.58, 0.05);
}

// Three beats of the heart along the lower edge; the present moment is marked.
bool IsOnTrace(Place place, double phase) {
    const double time = (place.x + 1) * 1.5;
    if (place.y < 0.6) return false;
    const double height = 0.72 - 0.10 * TraceHeight(time);
    const double slope = std::abs(TraceHeight(time + 0.005) - TraceHeight(time - 0.005)) * 0.10;
    const bool isMoment = std::abs(time - 1 - phase) < 0.008 && std::abs(place.y - 0.71) < 0.03;
    return isMoment || std::abs(place.y - height) < 0.006 + slope;
}

Colour ColourAt(Place place, double phase) {
    if (IsOnTrace(place, phase)) return kTrace;
    if (IsInScale(place)) return ScaleColour(place);
    return FanColour(place, phase);
}

}  // namespace

std::vector<unsigned char> DrawLoopFrame(CSize size, double phase) {
    std::vector<unsigned char> samples;
    ForEachPixel(size, [&](int, int, Place place) {
        for (const double part : ColourAt(place, phase))
            samples.push_back(static_cast<unsigned char>(std::clamp(part, 0.0, 255.0)));
    });
    return samples;
}

}  // namespace quorvex::tools
