#include "codec/ybr_to_rgb.h"

#include <array>
#include <cstring>

namespace quorvex {
namespace {

/// R, G, B and nothing, in steps of 2^-FractionBits.
using Sums = std::array<std::int32_t, 4>;
using SumVector __attribute__((vector_size(16))) = std::int32_t;
using ByteVector __attribute__((vector_size(4))) = std::uint8_t;

/// What a sample adds to R, G and B.
struct Part {
    double red;
    double green;
    double blue;
};
struct Matrix {
    double darkest;  ///< the Y of black
    double ySteps;   ///< of R, G, B in one of Y
    Part cb;
    Part cr;
};

constexpr Matrix kEstablished{
    0, 1, {-0.00003682, -0.344113281, 1.771978117}, {1.401987577, -0.714103821, -0.000134583}};

/// @param chromaSteps  of R, G, B in one of Cb and Cr, were Y as wide
constexpr Matrix InverseOf(double darkest, double ySteps, double chromaSteps) {
    constexpr double kRed = 0.299;
    constexpr double kGreen = 0.587;
    constexpr double kBlue = 0.114;
    const double blue = 2 * (1 - kBlue) * chromaSteps;
    const double red = 2 * (1 - kRed) * chromaSteps;
    return {darkest, ySteps, {0, -kBlue / kGreen * blue, blue}, {red, -kRed / kGreen * red, 0}};
}

struct Tables {
    alignas(16) std::array<Sums, 256> y{};
    alignas(16) std::array<Sums, 256> cb{};
    alignas(16) std::array<Sums, 256> cr{};
};

template <int FractionBits>
constexpr std::int32_t Fixed(double value) {
    const double scaled = value * (1 << FractionBits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

template <int FractionBits>
constexpr Sums FixedPart(const Part& part, double times, double more = 0) {
    return {Fixed<FractionBits>(part.red * times + more),
            Fixed<FractionBits>(part.green * times + more),
            Fixed<FractionBits>(part.blue * times + more), 0};
}

template <int FractionBits>
constexpr Tables TablesOf(const Matrix& matrix) {
    Tables tables;
    for (int i = 0; i < 256; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double luma = (i - matrix.darkest) * matrix.ySteps;
        tables.y[at] = FixedPart<FractionBits>({1, 1, 1}, luma, 0.5);
        tables.cb[at] = FixedPart<FractionBits>(matrix.cb, i - 128);
        tables.cr[at] = FixedPart<FractionBits>(matrix.cr, i - 128);
    }
    return tables;
}

/// So fine that no result of the 2^24 inputs falls on the other side of a whole number, and wide
/// enough for -227 to 482, and in the video range for -278 to 535.
constexpr int kBits = 22;
constexpr int kVideoBits = 21;

constexpr Tables kEstablishedTables = TablesOf<kBits>(kEstablished);
constexpr Tables kExactTables = TablesOf<kBits>(InverseOf(0, 1, 1));
constexpr Tables kVideoTables = TablesOf<kVideoBits>(InverseOf(16, 255.0 / 219, 255.0 / 224));

SumVector Load(const Sums& sums) noexcept {
    SumVector vector;
    std::memcpy(&vector, sums.data(), sizeof vector);
    return vector;
}

SumVector Clamped(SumVector sums) noexcept {
    const SumVector high = sums > 255;
    return ((sums & ~high) | (255 & high)) & ~(sums >> 31);
}

/// A shift rounds down; negative sums get what makes it a cut towards zero.
template <int FractionBits>
SumVector CutTowardsZero(SumVector sums) noexcept {
    return (sums + ((sums >> 31) & ((1 << FractionBits) - 1))) >> FractionBits;
}

// Of each kind: its tables, and R, G, B as whole numbers. What is beyond a byte is cut off.
struct Wrapped {
    static constexpr const Tables& kTables = kEstablishedTables;
    static SumVector Whole(SumVector sums) noexcept { return CutTowardsZero<kBits>(sums); }
};
struct ClampedToBytes {
    static constexpr const Tables& kTables = kEstablishedTables;
    static SumVector Whole(SumVector sums) noexcept { return Clamped(sums >> kBits); }
};
struct Exact {
    static constexpr const Tables& kTables = kExactTables;
    static SumVector Whole(SumVector sums) noexcept { return Clamped(sums >> kBits); }
};
struct ExactVideo {
    static constexpr const Tables& kTables = kVideoTables;
    static SumVector Whole(SumVector sums) noexcept { return Clamped(sums >> kVideoBits); }
};

/// R, G, B of one pixel, and a byte without meaning.
template <class Kind>
std::uint32_t Rgb(unsigned y, unsigned cb, unsigned cr) noexcept {
    const Tables& tables = Kind::kTables;
    const SumVector sums =
        Kind::Whole(Load(tables.y[y]) + Load(tables.cb[cb]) + Load(tables.cr[cr]));
    const ByteVector bytes = __builtin_convertvector(sums, ByteVector);
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes, sizeof word);
    return word;
}

struct Ybr {
    unsigned y;
    unsigned cb;
    unsigned cr;
};

/// Stores pixel after pixel; the fourth byte of each is overwritten by the next.
template <class Kind, class PixelAt>
void Store(std::size_t pixels, unsigned char* out, PixelAt pixelAt) noexcept {
    if (pixels == 0) return;
    const auto rgbAt = [&](std::size_t p) {
        const Ybr pixel = pixelAt(p);
        return Rgb<Kind>(pixel.y, pixel.cb, pixel.cr);
    };
    for (std::size_t p = 0; p + 1 < pixels; ++p, out += 3) {
        const std::uint32_t word = rgbAt(p);
        std::memcpy(out, &word, 4);
    }
    const std::uint32_t last = rgbAt(pixels - 1);
    std::memcpy(out, &last, 3);
}

template <class PixelAt>
void Convert(YbrArithmetic arithmetic, std::size_t pixels, unsigned char* out,
             PixelAt pixelAt) noexcept {
    switch (arithmetic) {
        case YbrArithmetic::kWrapped:
            return Store<Wrapped>(pixels, out, pixelAt);
        case YbrArithmetic::kClamped:
            return Store<ClampedToBytes>(pixels, out, pixelAt);
        case YbrArithmetic::kExact:
            return Store<Exact>(pixels, out, pixelAt);
        case YbrArithmetic::kExactVideo:
            return Store<ExactVideo>(pixels, out, pixelAt);
    }
}

}  // namespace

void ConvertYbrPlanes(std::span<const unsigned char> source, std::size_t pixels,
                      YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept {
    const unsigned char* y = source.data();
    const unsigned char* cb = y + pixels;
    const unsigned char* cr = cb + pixels;
    Convert(arithmetic, pixels, rgb.data(), [=](std::size_t p) { return Ybr{y[p], cb[p], cr[p]}; });
}

void ConvertYbrPixels(std::span<const unsigned char> source, std::size_t pixels,
                      YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept {
    const unsigned char* in = source.data();
    Convert(arithmetic, pixels, rgb.data(), [=](std::size_t p) {
        return Ybr{in[3 * p], in[3 * p + 1], in[3 * p + 2]};
    });
}

void ConvertYbr422(std::span<const unsigned char> source, std::size_t pixels,
                   YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept {
    const unsigned char* in = source.data();
    Convert(arithmetic, pixels, rgb.data(), [=](std::size_t p) {
        const unsigned char* group = in + p / 2 * 4;
        return Ybr{in[2 * p], group[1], group[3]};
    });
}

}  // namespace quorvex
