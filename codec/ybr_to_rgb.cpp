#include "codec/full_range.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

/// R, G, B and nothing, in steps of 2^-22. Wide enough for -227 to 482, and so fine that no result
/// of the 2^24 inputs falls on the other side of a whole number.
using Sums = std::array<std::int32_t, 4>;
using SumVector __attribute__((vector_size(16))) = std::int32_t;
using ByteVector __attribute__((vector_size(4))) = std::uint8_t;
constexpr int kFractionBits = 22;

constexpr std::int32_t Fixed(double value) {
    const double scaled = value * (1 << kFractionBits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

struct Tables {
    alignas(16) std::array<Sums, 256> y{};
    alignas(16) std::array<Sums, 256> cb{};
    alignas(16) std::array<Sums, 256> cr{};
};

constexpr Tables MakeTables() {
    Tables tables;
    for (int i = 0; i < 256; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double chroma = i - 128;
        tables.y[at] = {Fixed(i + 0.5), Fixed(i + 0.5), Fixed(i + 0.5), 0};
        tables.cb[at] = {Fixed(-0.00003682 * chroma), Fixed(-0.344113281 * chroma),
                         Fixed(1.771978117 * chroma), 0};
        tables.cr[at] = {Fixed(1.401987577 * chroma), Fixed(-0.714103821 * chroma),
                         Fixed(-0.000134583 * chroma), 0};
    }
    return tables;
}

constexpr Tables kTables = MakeTables();

SumVector Load(const Sums& sums) noexcept {
    SumVector vector;
    std::memcpy(&vector, sums.data(), sizeof vector);
    return vector;
}

/// R, G, B of one pixel, and a byte without meaning.
std::uint32_t Rgb(unsigned y, unsigned cb, unsigned cr) noexcept {
    constexpr std::int32_t kFraction = (1 << kFractionBits) - 1;
    SumVector sums = Load(kTables.y[y]) + Load(kTables.cb[cb]) + Load(kTables.cr[cr]);
    // A shift rounds down; negative sums get what makes it a cut towards zero.
    sums = (sums + ((sums >> 31) & kFraction)) >> kFractionBits;
    const ByteVector bytes = __builtin_convertvector(sums, ByteVector);
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes, sizeof word);
    return word;
}

/// Stores pixel after pixel; the fourth byte of each is overwritten by the next.
template <class PixelAt>
void Store(std::size_t pixels, unsigned char* out, PixelAt pixelAt) noexcept {
    if (pixels == 0) return;
    for (std::size_t p = 0; p + 1 < pixels; ++p, out += 3) {
        const std::uint32_t word = pixelAt(p);
        std::memcpy(out, &word, 4);
    }
    const std::uint32_t last = pixelAt(pixels - 1);
    std::memcpy(out, &last, 3);
}

}  // namespace

void ConvertFullRangePlanes(std::span<const unsigned char> source, std::size_t pixels,
                            std::span<unsigned char> rgb) noexcept {
    const unsigned char* y = source.data();
    const unsigned char* cb = y + pixels;
    const unsigned char* cr = cb + pixels;
    Store(pixels, rgb.data(), [=](std::size_t p) { return Rgb(y[p], cb[p], cr[p]); });
}

void ConvertFullRangePixels(std::span<const unsigned char> source, std::size_t pixels,
                            std::span<unsigned char> rgb) noexcept {
    const unsigned char* in = source.data();
    Store(pixels, rgb.data(),
          [=](std::size_t p) { return Rgb(in[3 * p], in[3 * p + 1], in[3 * p + 2]); });
}

void ConvertFullRange422(std::span<const unsigned char> source, std::size_t pixels,
                         std::span<unsigned char> rgb) noexcept {
    const unsigned char* in = source.data();
    Store(pixels, rgb.data(), [=](std::size_t p) {
        const unsigned char* group = in + p / 2 * 4;
        return Rgb(in[2 * p], group[1], group[3]);
    });
}

}  // namespace quorvex
