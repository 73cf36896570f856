#include "pipeline/recipe/shrunk_frame.h"

#include "foundation/raster/bit_marks.h"
#include "foundation/raster/scaling/value_shrinker.h"
#include "pipeline/displayed_image.h"

#include <algorithm>
#include <cmath>

namespace quorvex {

namespace {

constexpr double kMostWords = 65535.0;
constexpr double kFinestStep = 64.0;  ///< of a stored value

ValueKind KindOf(const DisplayedImage& image) {
    const bool isSigned = image.standard->form.isSigned;
    if (image.bytesPerPixel == 1) {
        return isSigned ? ValueKind::kSignedByte : ValueKind::kUnsignedByte;
    }
    return isSigned ? ValueKind::kSignedWord : ValueKind::kUnsignedWord;
}

std::size_t PixelCount(CSize size) {
    return static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
}

}  // namespace

CSize ShrunkSize(CSize image, CSize scaled) noexcept {
    return {std::min(image.cx, scaled.cx), std::min(image.cy, scaled.cy)};
}

bool CanShrink(const DisplayedImage& image, const DisplayFunction& function) noexcept {
    const StandardImage& standard = *image.standard;
    if (!standard.isGrey || image.bytesPerPixel > 2 || !standard.colours.empty()) return false;
    const auto line = function.AsLine();
    if (!line) return false;
    const auto isUnclamped = [&](std::int64_t stored) {
        const double byte = line->gain * (static_cast<double>(stored) - line->zero);
        constexpr double kSlack = 1e-6;
        return byte >= -kSlack && byte <= UINT8_MAX + kSlack;
    };
    return isUnclamped(standard.stored.low) && isUnclamped(standard.stored.high);
}

ShrunkFrame Shrink(const DisplayedImage& image, CSize size) {
    const ValueSpan stored = image.standard->stored;
    const auto span = static_cast<double>(stored.high - stored.low);
    ShrunkFrame shrunk;
    shrunk.size = size;
    shrunk.low = static_cast<double>(stored.low);
    shrunk.steps = span > 0.0 ? std::min(std::floor(kMostWords / span), kFinestStep) : 1.0;
    shrunk.wordCount = static_cast<std::size_t>(span * shrunk.steps) + 1;
    shrunk.words.resize(PixelCount(size));
    const auto steps = static_cast<float>(shrunk.steps);
    const auto low = static_cast<float>(shrunk.low);
    const auto most = static_cast<float>(shrunk.wordCount - 1);
    const auto put = [&](int y, std::span<const float> row) {
        std::uint16_t* const to = shrunk.words.data() + static_cast<std::size_t>(y) * row.size();
        for (std::size_t x = 0; x < row.size(); ++x) {
            const float word = std::clamp((row[x] - low) * steps, 0.0F, most);
            const float up = word + 0.5F;  // not lround, which is a call
            to[x] = static_cast<std::uint16_t>(static_cast<int>(up));
        }
    };
    ShrinkValues(image.pixels.data.get(), KindOf(image), image.imageSize, size, put);
    return shrunk;
}

std::vector<unsigned char> CoverageOfMask(const std::vector<unsigned char>& mask, CSize image,
                                          CSize size) {
    std::vector<unsigned char> coverage(PixelCount(size));
    const auto put = [&](int y, std::span<const float> row) {
        unsigned char* const to = coverage.data() + static_cast<std::size_t>(y) * row.size();
        for (std::size_t x = 0; x < row.size(); ++x) {
            const float up = std::clamp(row[x], 0.0F, 255.0F) + 0.5F;
            to[x] = static_cast<unsigned char>(up);
        }
    };
    ShrinkValues(mask.data(), ValueKind::kUnsignedByte, image, size, put);
    return coverage;
}

std::vector<unsigned char> CoverageOfBits(const std::vector<unsigned char>& bits, CSize image,
                                          CSize size) {
    std::vector<unsigned char> mask(PixelCount(image));
    ForEachSetBit(bits, 0, mask.size(), [&](std::size_t i) { mask[i] = UINT8_MAX; });
    return CoverageOfMask(mask, image, size);
}

}  // namespace quorvex
