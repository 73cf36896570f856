#include "foundation/raster/resize_taps.h"

#include <cmath>

namespace quorvex {
namespace {

/// A factor that comes from a division misses the whole size by less than this part of a pixel.
constexpr double kWholeSizeTolerance = 1e-6;

bool FillsDestination(int sourceLength, int destinationLength, double factor) {
    return std::abs(sourceLength * factor - destinationLength) < kWholeSizeTolerance;
}

/// Halves go to the even number, so that numerator and denominator - numerator round to numbers
/// that add up to an even one.
std::uint64_t RoundedQuotient(std::uint64_t numerator, std::uint64_t denominator) {
    const std::uint64_t quotient = numerator / denominator;
    const std::uint64_t twice = 2 * (numerator % denominator);
    const bool up = twice > denominator || (twice == denominator && quotient % 2 == 1);
    return quotient + (up ? 1 : 0);
}

ResizeTap Held(std::int64_t first, std::uint64_t weight, int sourceLength, int bits) {
    if (weight == std::uint64_t{1} << bits) {
        ++first;
        weight = 0;
    }
    if (first < 0) return {0, 0};
    if (first >= sourceLength - 1) return {sourceLength - 1, 0};
    return {static_cast<std::int32_t>(first), static_cast<std::uint32_t>(weight)};
}

ResizeTap WholeNumberTap(std::int64_t i, int sourceLength, int destinationLength, int bits) {
    const std::int64_t numerator = (2 * i + 1) * sourceLength - destinationLength;
    const std::int64_t denominator = std::int64_t{2} * destinationLength;
    if (numerator <= 0) return {0, 0};
    const auto fraction = static_cast<std::uint64_t>(numerator % denominator);
    // 2^32 x 2^30 at most: the shift cannot overflow.
    const auto weight = RoundedQuotient(fraction << bits, static_cast<std::uint64_t>(denominator));
    return Held(numerator / denominator, weight, sourceLength, bits);
}

ResizeTap FactorTap(int i, int sourceLength, double factor, int bits) {
    const double position = (i + 0.5) / factor - 0.5;
    if (!(position > 0.0)) return {0, 0};
    if (position >= sourceLength - 1) return {sourceLength - 1, 0};
    const double whole = std::floor(position);
    const auto weight =
        static_cast<std::uint64_t>(std::nearbyint(std::ldexp(position - whole, bits)));
    return Held(static_cast<std::int64_t>(whole), weight, sourceLength, bits);
}

}  // namespace

std::vector<ResizeTap> ResizeTaps(int sourceLength, int destinationLength, double factor,
                                  int bits) {
    std::vector<ResizeTap> taps;
    if (sourceLength < 1 || destinationLength < 1 || !std::isfinite(factor) || factor <= 0.0) {
        return taps;
    }
    const bool whole = FillsDestination(sourceLength, destinationLength, factor);
    taps.reserve(static_cast<std::size_t>(destinationLength));
    for (int i = 0; i < destinationLength; ++i) {
        taps.push_back(whole ? WholeNumberTap(i, sourceLength, destinationLength, bits)
                             : FactorTap(i, sourceLength, factor, bits));
    }
    return taps;
}

}  // namespace quorvex
