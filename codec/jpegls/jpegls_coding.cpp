#include "codec/jpegls/jpegls_coding.h"

#include "foundation/engines/jpegls/jpegls_engine.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace quorvex {
namespace {

constexpr unsigned kLeastBytePrecision = 8;
constexpr unsigned kLeastWordPrecision = 9;

unsigned PrecisionOf(const StoredForms& forms, bool areWithinBitsStored) {
    const bool areAllCoded = forms.isSigned || !areWithinBitsStored;
    const unsigned bits = areAllCoded ? forms.bitsAllocated : forms.bitsStored;
    return std::max(bits, forms.bitsAllocated > 8 ? kLeastWordPrecision : kLeastBytePrecision);
}

template <class Sample>
bool AreWithin(std::span<const unsigned char> frame, std::int64_t lowest, std::int64_t highest) {
    for (std::size_t at = 0; at + sizeof(Sample) <= frame.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, frame.data() + at, sizeof sample);
        if (sample < lowest || sample > highest) return false;
    }
    return true;
}

/// Whether losses leave every sample what Bits Stored can hold. The coder itself keeps unsigned
/// samples within the stream's bits.
bool KeepTheirBits(const StoredForms& forms, unsigned precision,
                   std::span<const unsigned char> frame) {
    const std::int64_t bound = forms.quality;
    const std::int64_t span = std::int64_t{1} << forms.bitsStored;
    if (!forms.isSigned && precision == forms.bitsStored) return true;
    const std::int64_t highest = (forms.isSigned ? span / 2 : span) - 1 - bound;
    // A coder leaves no sample below 0, nor above the greatest of the stream, which is -1.
    const std::int64_t lowest = forms.isSigned ? -span / 2 + bound : 0;
    if (forms.bitsAllocated <= 8) {
        return forms.isSigned ? AreWithin<std::int8_t>(frame, lowest, highest)
                              : AreWithin<std::uint8_t>(frame, lowest, highest);
    }
    return forms.isSigned ? AreWithin<std::int16_t>(frame, lowest, highest)
                          : AreWithin<std::uint16_t>(frame, lowest, highest);
}

}  // namespace

QUORVEX_MESSAGE CodeToJpegLs(const StoredForms& forms, bool areWithinBitsStored,
                             std::span<const unsigned char> frame,
                             std::vector<unsigned char>& coded) {
    const bool isLossy = forms.form == kXferJpegLs;
    const unsigned precision = PrecisionOf(forms, areWithinBitsStored);
    if (isLossy && !KeepTheirBits(forms, precision, frame)) return QVM_ERROR_INVALID_BITS_STORED;
    auto made = CodeJpegLs({.columns = forms.columns,
                            .rows = forms.rows,
                            .components = forms.samplesPerPixel,
                            .precision = precision,
                            .errorBound = isLossy ? forms.quality : 0U,
                            .samples = frame});
    if (!made) return QVM_ERROR_FAILED_TO_COMPRESS;
    coded = *std::move(made);
    return QVM_SUCCESS;
}

}  // namespace quorvex
