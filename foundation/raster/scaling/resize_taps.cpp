#include "foundation/raster/scaling/resize_taps.h"

#include <cmath>

namespace quorvex {
namespace {

/// A factor that is the quotient of two sizes misses the size by less than this part of a pixel.
constexpr double kWholeSizeTolerance = 1e-6;

bool FillsDestination(int sourceLength, int destinationLength, double factor) {
    return std::abs(sourceLength * factor - destinationLength) < kWholeSizeTolerance;
}

/// Halves go to the even number, so that numerator and denominator - numerator round to numbers
/// that add up to an even one.
std::uint64_t RoundedQuotient(std::uint64_t numerator, std::uint64_t denominator) {
    const std::uint64_t quotient = numerator / denominator;
    const std::uint64_t twice = 2 * (numerator % denominator);
    const auto above = static_cast<unsigned>(twice > denominator);
    const auto half = static_cast<unsigned>(twice == denominator);
    return quotient + (above | (half & (quotient & 1U)));
}

ResizeTap Clamped(std::int64_t first, std::uint64_t weight, int sourceLength, int bits) {
    if (weight == std::uint64_t{1} << bits) {
        ++first;
        weight = 0;
    }
    if (first < 0) return {0, 0};
    if (first >= sourceLength - 1) return {sourceLength - 1, 0};
    return {static_cast<std::int32_t>(first), static_cast<std::uint32_t>(weight)};
}

/// A position as a whole number and a fraction, moved on by additions alone.
class ExactPosition {
public:
    /// That of destination pixel i: ((2 i + 1) x source - destination) / (2 x destination).
    ExactPosition(std::int64_t sourceLength, std::int64_t destinationLength, std::int64_t i)
        : denominator_(2 * destinationLength),
          wholeStep_(sourceLength / destinationLength),
          fractionStep_(2 * (sourceLength % destinationLength)) {
        const std::int64_t distance = (2 * i + 1) * sourceLength - destinationLength;
        whole_ = distance < 0 ? -1 : distance / denominator_;
        fraction_ = distance - whole_ * denominator_;
    }
    void Advance() {
        whole_ += wholeStep_;
        fraction_ += fractionStep_;
        if (fraction_ >= denominator_) {
            fraction_ -= denominator_;
            ++whole_;
        }
    }
    [[nodiscard]] std::int64_t Whole() const { return whole_; }
    /// The fraction in units of 2^-bits. 2^32 x 2^30 at most: the shift cannot overflow.
    [[nodiscard]] std::uint64_t Weight(int bits) const {
        return RoundedQuotient(static_cast<std::uint64_t>(fraction_) << bits,
                               static_cast<std::uint64_t>(denominator_));
    }

private:
    std::int64_t denominator_;
    std::int64_t wholeStep_;
    std::int64_t fractionStep_;
    std::int64_t whole_;
    std::int64_t fraction_;
};

/// Fills `taps` with those of destination pixel `start` and of the ones behind it.
void FillExactly(std::pmr::vector<ResizeTap>& taps, int sourceLength, int destinationLength,
                 int start, int bits) {
    ExactPosition position(sourceLength, destinationLength, start);
    for (ResizeTap& tap : taps) {
        tap = Clamped(position.Whole(), position.Weight(bits), sourceLength, bits);
        position.Advance();
    }
}

ResizeTap FactorTap(int i, int sourceLength, double factor, int bits) {
    const double position = (i + 0.5) / factor - 0.5;
    if (!(position > 0.0)) return {0, 0};
    if (position >= sourceLength - 1) return {sourceLength - 1, 0};
    const double whole = std::floor(position);
    const auto weight =
        static_cast<std::uint64_t>(std::nearbyint(std::ldexp(position - whole, bits)));
    return Clamped(static_cast<std::int64_t>(whole), weight, sourceLength, bits);
}

}  // namespace

std::pmr::vector<ResizeTap> ResizeTaps(int sourceLength, int destinationLength, double factor,
                                       int bits, std::pmr::memory_resource* memory) {
    std::pmr::vector<ResizeTap> taps(memory);
    if (sourceLength < 1 || destinationLength < 1 || !std::isfinite(factor) || factor <= 0.0) {
        return taps;
    }
    taps.resize(static_cast<std::size_t>(destinationLength));
    if (FillsDestination(sourceLength, destinationLength, factor)) {
        FillExactly(taps, sourceLength, destinationLength, 0, bits);
    } else {
        int i = 0;
        for (ResizeTap& tap : taps) tap = FactorTap(i++, sourceLength, factor, bits);
    }
    return taps;
}

std::pmr::vector<ResizeTap> ResizeTapsOfPart(int sourceLength, int scaledLength, int start,
                                             int length, int bits,
                                             std::pmr::memory_resource* memory) {
    std::pmr::vector<ResizeTap> taps(static_cast<std::size_t>(length), memory);
    FillExactly(taps, sourceLength, scaledLength, start, bits);
    return taps;
}

}  // namespace quorvex
