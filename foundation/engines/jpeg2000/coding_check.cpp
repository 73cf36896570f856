#include "foundation/engines/jpeg2000/coding_check.h"

#include "foundation/engines/jpeg2000/encoding_samples.h"
#include "foundation/engines/jpeg2000/jpeg2000_coders.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace quorvex {
namespace {

std::size_t RowBytes(const PegasusParameters& p) noexcept {
    return static_cast<std::size_t>(p.columns) * static_cast<std::size_t>(p.samples) *
           static_cast<std::size_t>(p.bytesPerSample);
}

// All samples of a row, as one component that has no others beside it.
void ReadRow(std::span<std::int32_t> values, const unsigned char* row, PegasusParameters& flat) {
    static_cast<void>(ReadComponent(values, row, flat));
}

int GreatestDifference(const PegasusParameters& p, std::span<const unsigned char> pixels) {
    PegasusParameters flat;
    flat.bytesPerSample = p.bytesPerSample;
    flat.bitDepth = p.bitDepth;
    flat.isSigned = p.isSigned;
    flat.isBigEndian = p.isBigEndian;
    std::vector<std::int32_t> one(RowBytes(p) / static_cast<std::size_t>(p.bytesPerSample));
    std::vector<std::int32_t> other(one.size());
    int greatest = 0;
    for (std::size_t at = 0; at < pixels.size(); at += RowBytes(p)) {
        ReadRow(one, p.input.data() + at, flat);
        ReadRow(other, pixels.data() + at, flat);
        for (std::size_t i = 0; i < one.size(); ++i)
            greatest = std::max(greatest, std::abs(one[i] - other[i]));
    }
    return greatest;
}

}  // namespace

std::optional<int> GreatestCodingError(const PegasusParameters& parameters) {
    std::vector<unsigned char> pixels(RowBytes(parameters) *
                                      static_cast<std::size_t>(parameters.rows));
    PegasusParameters decoding;
    decoding.input = parameters.coded;
    decoding.output = pixels;
    decoding.columns = parameters.columns;
    decoding.rows = parameters.rows;
    decoding.samples = parameters.samples;
    decoding.bytesPerSample = parameters.bytesPerSample;
    decoding.isSigned = parameters.isSigned;
    decoding.isBigEndian = parameters.isBigEndian;
    const bool isDecoded = QueryJpeg2000(decoding) && CanDecodeJpeg2000(decoding) &&
                           DecodeJpeg2000(decoding) && !decoding.isIncomplete;
    if (!isDecoded) return std::nullopt;
    if (std::ranges::equal(pixels, parameters.input.first(pixels.size()))) return 0;
    return GreatestDifference(parameters, pixels);
}

}  // namespace quorvex
