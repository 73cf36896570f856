#include "codec/colour.h"

#include "codec/ybr_to_rgb.h"
#include "tests/codec/coded_frames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <span>

namespace quorvex::test {
namespace {

_IMAGE_PROCESS_PARAM Param(const char* photometric, int planar, unsigned columns, int bits = 8) {
    _IMAGE_PROCESS_PARAM param = ParamOf(kExplicitLittleEndian, {columns, 1, 3});
    param.photometric = photometric;
    param.planarConfiguration = static_cast<std::uint16_t>(planar);
    param.bitsAllocated = static_cast<std::uint16_t>(bits);
    return param;
}

Bytes Convert(_IMAGE_PROCESS_PARAM param, Bytes source, std::size_t size) {
    Bytes rgb(size, 0xEE);
    unsigned char* result = rgb.data();
    EXPECT_EQ(CxImageProcessor().ConvertYBRToRGB(&param, source.data(), result), QVM_SUCCESS);
    return rgb;
}

unsigned char Low8(double value) {
    return static_cast<unsigned char>(static_cast<int>(value));
}
unsigned char ClampedByte(double value) {
    return static_cast<unsigned char>(std::clamp(value, 0.0, 255.0));
}

using Pixel = std::array<unsigned char, 3>;

template <class ToByte>
Pixel ByDoubles(int y, int cb, int cr, ToByte toByte) {
    return {toByte(y + 1.401987577 * cr - 0.00003682 * cb + 0.5),
            toByte(y - 0.344113281 * cb - 0.714103821 * cr + 0.5),
            toByte(y + 1.771978117 * cb - 0.000134583 * cr + 0.5)};
}

unsigned char RoundedQuotient(std::int64_t number, std::int64_t divisor) {
    const std::int64_t twice = 2 * number + divisor;
    const std::int64_t floor = twice / (2 * divisor) - (twice < 0 && twice % (2 * divisor) != 0);
    return static_cast<unsigned char>(std::clamp<std::int64_t>(floor, 0, 255));
}

/// The inverse in whole numbers: `y` and the chroma are counted in ySteps and chromaSteps of 1 / 1.
Pixel ByFractions(std::int64_t y, std::int64_t cb, std::int64_t cr, int ySteps, int chromaSteps) {
    // 1.402, 1.772, 0.299 * 1.402 / 0.587 and 0.114 * 1.772 / 0.587 with the denominator 587000.
    constexpr std::int64_t kOne = 587'000;
    const std::int64_t luma = 255 * y * kOne * chromaSteps;
    const std::int64_t chroma = std::int64_t{255} * ySteps;
    const std::int64_t divisor = kOne * ySteps * chromaSteps;
    return {RoundedQuotient(luma + chroma * 822'974 * cr, divisor),
            RoundedQuotient(luma - chroma * (202'008 * cb + 419'198 * cr), divisor),
            RoundedQuotient(luma + chroma * 1'040'164 * cb, divisor)};
}

const struct {
    const char* what;
    YbrArithmetic arithmetic;
    Pixel (*expected)(int y, int cb, int cr);
} kArithmetics[] = {
    {"wrapped", YbrArithmetic::kWrapped,
     [](int y, int cb, int cr) { return ByDoubles(y, cb, cr, Low8); }},
    {"clamped", YbrArithmetic::kClamped,
     [](int y, int cb, int cr) { return ByDoubles(y, cb, cr, ClampedByte); }},
    {"exact", YbrArithmetic::kExact,
     [](int y, int cb, int cr) { return ByFractions(y, cb, cr, 255, 255); }},
    {"exact video", YbrArithmetic::kExactVideo,
     [](int y, int cb, int cr) { return ByFractions(y - 16, cb, cr, 219, 224); }},
};

/// Every pair of colours at every fifth brightness.
TEST(YbrToRgb, IsItsArithmetic) {
    constexpr std::size_t kPixels = 65536;
    Bytes source(3 * kPixels);
    Bytes rgb(3 * kPixels);
    for (const auto& c : kArithmetics) {
        for (int y = 0; y < 256; y += 5) {
            for (std::size_t p = 0; p < kPixels; ++p) {
                source[3 * p] = static_cast<unsigned char>(y);
                source[3 * p + 1] = static_cast<unsigned char>(p >> 8);
                source[3 * p + 2] = static_cast<unsigned char>(p);
            }
            ConvertYbrPixels(source, kPixels, c.arithmetic, rgb);
            std::size_t wrong = 0;
            for (std::size_t p = 0; p < kPixels; ++p) {
                const int cb = static_cast<int>(p >> 8) - 128;
                const int cr = static_cast<int>(p & 255) - 128;
                if (!std::ranges::equal(c.expected(y, cb, cr), std::span(rgb).subspan(3 * p, 3)))
                    ++wrong;
            }
            ASSERT_EQ(wrong, 0U) << c.what << ", Y " << y;
        }
    }
}

TEST(FullRangeColour, ReadsPlanesPixelsAndPairsAlike) {
    EXPECT_EQ(Convert(Param("YBR_FULL", 0, 1), {128, 128, 128}, 3), (Bytes{128, 128, 128}));
    EXPECT_EQ(Convert(Param("YBR_FULL", 0, 1), {255, 128, 255}, 3)[0], 177);  // 433, not clamped
    const Bytes pixels{10, 90, 200, 20, 90, 200, 250, 30, 128};
    const Bytes planes{10, 20, 250, 90, 90, 30, 200, 200, 128};
    // Three columns: the second pair begins in the first row's last pixel.
    const Bytes pairs{10, 90, 20, 200, 250, 30, 0, 128};
    const Bytes expected = Convert(Param("YBR_FULL", 0, 3), pixels, 9);
    EXPECT_EQ(Convert(Param("YBR_FULL", 1, 3), planes, 9), expected);
    EXPECT_EQ(Convert(Param("YBR_FULL_422", 7, 3), pairs, 9), expected);
}

TEST(Colour, KnowsItsFormsExactly) {
    const Bytes source{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(Convert(Param("RGB", 0, 2), source, 6), source);
    EXPECT_EQ(Convert(Param("RGB", 1, 2), source, 6), (Bytes{1, 3, 5, 2, 4, 6}));
    const Bytes untouched(6, 0xEE);
    EXPECT_EQ(Convert(Param("rgb", 1, 2), source, 6), untouched);
    EXPECT_EQ(Convert(Param("ybr_full", 0, 2), source, 6), untouched);
    EXPECT_EQ(Convert(Param("YBR_FULL", 2, 2), source, 6), untouched);
    EXPECT_EQ(Convert(Param("YBR_FULL", 0, 1, 16), source, 6), untouched);
    EXPECT_EQ(Convert(Param("RGB", 1, 1, 16), source, 6), source);
    const Bytes wide{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_EQ(Convert(Param("RGB", 1, 2, 16), wide, 12),
              (Bytes{1, 2, 5, 6, 9, 10, 3, 4, 7, 8, 11, 12}));

    auto grey = ParamOf(kExplicitLittleEndian, {1, 1});
    unsigned char* result = nullptr;
    EXPECT_EQ(CxImageProcessor().ConvertYBRToRGB(&grey, nullptr, result),
              QVM_ERROR_NOT_COLOR_IMAGE);
}

TEST(Colour, AShortSourceGivesWhatItHas) {
    constexpr ColourForm kForms[] = {ColourForm::kFullPlanes, ColourForm::kFullInterleaved,
                                     ColourForm::kFull422,    ColourForm::kPartial422,
                                     ColourForm::kRgbPlanes,  ColourForm::kRgbInterleaved};
    for (const ColourForm form : kForms) {
        for (const std::size_t sampleBytes : {1U, 2U, 4U}) {
            if (sampleBytes > 1 && form < ColourForm::kRgbPlanes) continue;
            const ColourFrame frame{form, 6, 5, sampleBytes};
            Bytes whole;
            while (whole.size() < frame.StoredBytes())
                whole.push_back(static_cast<unsigned char>(60 + 7 * whole.size()));
            Bytes expected(frame.RgbBytes());
            ASSERT_TRUE(ConvertToRgb(frame, whole, expected));
            for (std::size_t cut = 0; cut < whole.size(); ++cut) {
                const Bytes source(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
                Bytes rgb(frame.RgbBytes(), 0xEE);
                ASSERT_TRUE(ConvertToRgb(frame, source, rgb));
                if (IsPlanar(form)) continue;
                std::size_t same = 0;
                while (same < rgb.size() && rgb[same] == expected[same]) ++same;
                EXPECT_GE(same + 6 * 3 * sampleBytes + 6, rgb.size() * cut / whole.size());
                EXPECT_EQ(rgb.back(), 0) << cut;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
