#include "presentation/cielab.h"

#include "foundation/dicom/model/attributes.h"

#include <algorithm>
#include <cmath>

namespace quorvex {
namespace {

using Triple = std::array<double, 3>;

constexpr double kWord = 65535.0;
constexpr Triple kWhiteD50{0.96422, 1.0, 0.82521};

/// From XYZ under D50 straight to linear sRGB (Bradford adaptation to D65 included).
constexpr std::array<Triple, 3> kToLinearRgb{{{3.1338561, -1.6168667, -0.4906146},
                                              {-0.9787684, 1.9161415, 0.0334540},
                                              {0.0719453, -0.2289914, 1.4052427}}};

double Unlabbed(double t) {
    constexpr double kKnee = 6.0 / 29.0;
    return t > kKnee ? t * t * t : 3.0 * kKnee * kKnee * (t - 4.0 / 29.0);
}

std::uint8_t GammaByte(double linear) {
    const double clamped = std::clamp(linear, 0.0, 1.0);
    const double gamma =
        clamped <= 0.0031308 ? 12.92 * clamped : 1.055 * std::pow(clamped, 1.0 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(gamma * 255.0));
}

}  // namespace

std::array<std::uint8_t, 3> RgbOfCieLab(const std::array<std::uint16_t, 3>& encoded) noexcept {
    const double lightness = encoded[0] * 100.0 / kWord;
    const double a = encoded[1] * 255.0 / kWord - 128.0;
    const double b = encoded[2] * 255.0 / kWord - 128.0;
    const double y = (lightness + 16.0) / 116.0;
    const Triple xyz{kWhiteD50[0] * Unlabbed(y + a / 500.0), kWhiteD50[1] * Unlabbed(y),
                     kWhiteD50[2] * Unlabbed(y - b / 200.0)};
    std::array<std::uint8_t, 3> rgb{};
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        const Triple& row = kToLinearRgb[i];
        rgb[i] = GammaByte(row[0] * xyz[0] + row[1] * xyz[1] + row[2] * xyz[2]);
    }
    return rgb;
}

std::array<std::uint8_t, 3> GreyOfPresentationValue(std::uint16_t value) noexcept {
    const auto grey = static_cast<std::uint8_t>((value * 255 + 32767) / 65535);
    return {grey, grey, grey};
}

std::optional<std::array<std::uint16_t, 3>> ReadCieLab(const CDcmObjectCommon& object,
                                                       std::uint32_t tag) {
    std::array<std::uint16_t, 3> lab{};
    std::size_t count = 0;
    ForEachValue<unsigned short>(object, tag, [&](unsigned short value) {
        if (count < lab.size()) lab[count] = value;
        ++count;
    });
    if (count != lab.size()) return std::nullopt;
    return lab;
}

}  // namespace quorvex
