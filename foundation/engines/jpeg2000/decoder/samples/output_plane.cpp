#include "foundation/engines/jpeg2000/decoder/samples/output_plane.h"

#include "foundation/engines/jpeg2000/decoder/samples/dense_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace quorvex::j2k {
namespace {

static_assert(std::endian::native == std::endian::little, "samples hold the lower byte first");

std::uint8_t Ordered(std::uint8_t sample, bool) noexcept {
    return sample;
}
std::uint16_t Ordered(std::uint16_t sample, bool isBigEndian) noexcept {
    return isBigEndian ? __builtin_bswap16(sample) : sample;
}
std::uint32_t Ordered(std::uint32_t sample, bool isBigEndian) noexcept {
    return isBigEndian ? __builtin_bswap32(sample) : sample;
}

// The sum of value and shift may leave 32 bits in damaged streams only: it wraps.
template <class Sample>
Sample SampleOf(std::int32_t value, const SampleRange& range) noexcept {
    const auto shifted = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                                   static_cast<std::uint32_t>(range.shift));
    const std::int32_t clamped = std::clamp(shifted, range.least, range.greatest);
    return static_cast<Sample>(static_cast<std::uint32_t>(clamped) & range.mask);
}

// Samples of 4 bytes are rare: their rows have no kernel.
void StoreDenseRow(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                   std::uint32_t* out) noexcept {
    for (std::uint32_t i = 0; i < count; ++i) out[i] = SampleOf<std::uint32_t>(values[i], range);
}

// Samples that do not stand side by side are made so many at a time, then put in their places.
template <class Sample>
void StoreSamples(const OutputPlane& plane, const SampleRange& range, const std::int32_t* values,
                  std::uint32_t count, unsigned char* out) noexcept {
    const bool isAligned = reinterpret_cast<std::uintptr_t>(out) % alignof(Sample) == 0;
    if (plane.sampleStride == sizeof(Sample) && !plane.isBigEndian && isAligned) {
        StoreDenseRow(range, values, count, static_cast<Sample*>(static_cast<void*>(out)));
        return;
    }
    constexpr std::uint32_t kAtOnce = 256;
    Sample samples[kAtOnce];
    for (std::uint32_t done = 0; done < count; done += kAtOnce) {
        const std::uint32_t now = std::min(kAtOnce, count - done);
        StoreDenseRow(range, values + done, now, samples);
        for (std::uint32_t i = 0; i < now; ++i, out += plane.sampleStride) {
            const Sample sample = Ordered(samples[i], plane.isBigEndian);
            std::memcpy(out, &sample, sizeof(Sample));
        }
    }
}

template <class Sample>
void StoreRepeated(const OutputPlane& plane, const SampleRange& range, const std::int32_t* values,
                   std::uint32_t x, std::uint32_t count, unsigned char* row) noexcept {
    for (std::uint32_t i = 0; i < count; ++i) {
        const Sample sample = Ordered(SampleOf<Sample>(values[i], range), plane.isBigEndian);
        const std::uint64_t begin = std::uint64_t{x + i} * plane.repeatX;
        const std::uint64_t end = std::min<std::uint64_t>(begin + plane.repeatX, plane.width);
        for (std::uint64_t place = begin; place < end; ++place) {
            std::memcpy(row + static_cast<std::ptrdiff_t>(place) * plane.sampleStride, &sample,
                        sizeof(Sample));
        }
    }
}

template <class Sample>
void Store(const OutputPlane& plane, const SampleRange& range, const std::int32_t* values,
           std::uint32_t x, std::uint32_t y, std::uint32_t count) noexcept {
    const std::uint64_t top = std::uint64_t{y} * plane.repeatY;
    const std::uint64_t bottom = std::min<std::uint64_t>(top + plane.repeatY, plane.height);
    for (std::uint64_t place = top; place < bottom; ++place) {
        unsigned char* const row =
            plane.data + static_cast<std::ptrdiff_t>(place) * plane.rowStride;
        if (plane.repeatX == 1) {
            if (x >= plane.width) continue;
            StoreSamples<Sample>(plane, range, values, std::min(count, plane.width - x),
                                 row + static_cast<std::ptrdiff_t>(x) * plane.sampleStride);
        } else {
            StoreRepeated<Sample>(plane, range, values, x, count, row);
        }
    }
}

}  // namespace

SampleRange RangeOf(unsigned precision, bool isSigned, bool keepsSign) noexcept {
    const auto full = static_cast<std::int32_t>((std::uint32_t{1} << precision) - 1);
    const auto half = static_cast<std::int32_t>(std::uint32_t{1} << (precision - 1));
    const auto mask = static_cast<std::uint32_t>(full);
    if (isSigned) return {-half, half - 1, 0, keepsSign ? 0xFFFFFFFF : mask};
    return {0, full, half, mask};
}

void StoreRow(const OutputPlane& plane, const SampleRange& range, const std::int32_t* values,
              std::uint32_t x, std::uint32_t y, std::uint32_t count) noexcept {
    switch (plane.bytesPerSample) {
        case 1:
            return Store<std::uint8_t>(plane, range, values, x, y, count);
        case 2:
            return Store<std::uint16_t>(plane, range, values, x, y, count);
        default:
            return Store<std::uint32_t>(plane, range, values, x, y, count);
    }
}

void StoreZeros(const OutputPlane& plane, std::uint32_t x, std::uint32_t y,
                std::uint32_t count) noexcept {
    constexpr std::uint32_t kAtOnce = 64;
    constexpr std::int32_t kZeros[kAtOnce] = {};
    for (std::uint32_t done = 0; done < count; done += kAtOnce) {
        StoreRow(plane, {0, 0, 0, 0}, kZeros, x + done, y, std::min(kAtOnce, count - done));
    }
}

}  // namespace quorvex::j2k
