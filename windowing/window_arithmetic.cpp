#include "windowing/window_arithmetic.h"

#include "foundation/types/saturate.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {
namespace {

constexpr std::int64_t kRampTop = 255;

std::int64_t LowClip(const DomainWindow& window, const ValueDomain& domain) noexcept {
    return std::min(std::max(domain.minimum, window.lower), domain.maximum);
}

std::int64_t HighClip(const DomainWindow& window, const ValueDomain& domain) noexcept {
    return std::max(std::min(window.upper, domain.maximum), domain.minimum);
}

// A width of 0 gives an infinity or NaN, which ClampToByte takes.
double RampAt(std::int64_t value, const DomainWindow& window) noexcept {
    return 255.0 * static_cast<double>(value - window.lower) / static_cast<double>(window.width);
}

std::uint8_t ClampToByte(double value) noexcept {
    if (!(value > 0.0)) return 0;
    return static_cast<std::uint8_t>(std::min(value, 255.0));
}

constexpr RampBytes MakeRamp(bool isInverse) noexcept {
    RampBytes ramp{};
    for (std::size_t i = 0; i < ramp.size(); ++i) {
        ramp[i] = static_cast<std::uint8_t>(isInverse ? 255 - i : i);
    }
    return ramp;
}

constexpr RampBytes kRisingRamp = MakeRamp(false);
constexpr RampBytes kFallingRamp = MakeRamp(true);

// Equal bytes are filled in runs. trunc(255.0 * step / width) is the whole quotient exactly: the
// quotient lies at least 1 / width >= 2^-31 below the next whole number, and a double near 255
// rounds by at most 2^-46. So a run ends at the first step whose whole quotient is higher.
void FillRamp(std::span<std::uint8_t> ramp, std::int64_t firstStep, std::int64_t width,
              const RampBytes& bytes) noexcept {
    const auto size = static_cast<std::int64_t>(ramp.size());
    for (std::int64_t i = 0; i < size;) {
        const std::int64_t value = kRampTop * (firstStep + i) / width;
        const std::int64_t nextStep = ((value + 1) * width + kRampTop - 1) / kRampTop;
        const std::int64_t end = std::min(size, nextStep - firstStep);
        std::fill(ramp.begin() + i, ramp.begin() + end, bytes[static_cast<std::size_t>(value)]);
        i = end;
    }
}

}  // namespace

std::int64_t StepFactor(std::int32_t pixelBits) noexcept {
    if (pixelBits == 12) return 2;
    return pixelBits == 16 ? 3 : 1;
}

DomainWindow ToDomainWindow(std::int32_t level, std::int32_t width, double slope,
                            double intercept) noexcept {
    const double reciprocal = 1.0 / slope;
    const std::int64_t domainLevel = TruncateToInt((level - intercept) * reciprocal);
    const std::int64_t domainWidth = TruncateToInt(width * reciprocal);
    const std::int64_t half = TruncateToInt(0.5 * (static_cast<double>(domainWidth) + 1.0));
    return {domainLevel - half, domainLevel + half, domainWidth};
}

DisplayBytes PlainDisplayBytes(const DomainWindow& window, const ValueDomain& domain,
                               bool isInverse) noexcept {
    const double low = RampAt(LowClip(window, domain), window);
    const double high = RampAt(HighClip(window, domain), window);
    // The flat ends are subtracted before they are truncated, the ramp after.
    if (isInverse) return {ClampToByte(255.0 - low), kFallingRamp, ClampToByte(255.0 - high)};
    return {ClampToByte(low), kRisingRamp, ClampToByte(high)};
}

void FillWindow(std::span<std::uint8_t> table, const ValueDomain& domain,
                const DomainWindow& window, const DisplayBytes& bytes) noexcept {
    const auto size = static_cast<std::int64_t>(table.size());
    const std::int64_t rampBegin = std::min(LowClip(window, domain) - domain.minimum, size);
    const std::int64_t rampEnd = std::min(HighClip(window, domain) - domain.minimum, size);
    std::fill(table.begin(), table.begin() + rampBegin, bytes.low);
    if (rampBegin < rampEnd) {
        const auto ramp = table.subspan(static_cast<std::size_t>(rampBegin),
                                        static_cast<std::size_t>(rampEnd - rampBegin));
        FillRamp(ramp, domain.minimum + rampBegin - window.lower, window.width, bytes.ramp);
    }
    std::fill(table.begin() + rampEnd, table.end(), bytes.high);
}

}  // namespace quorvex
