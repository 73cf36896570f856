#include "foundation/raster/byte_runs.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/byte_runs.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
/// As many whole vectors as there are; gives their bytes.
template <std::size_t kPixelBytes, std::size_t kPlace>
std::size_t TakeVectors(const unsigned char* pixels, std::size_t count, unsigned char* row) {
    const hn::ScalableTag<std::uint8_t> octets;
    const std::size_t lanes = hn::Lanes(octets);
    hn::Vec<decltype(octets)> a;
    hn::Vec<decltype(octets)> b;
    hn::Vec<decltype(octets)> c;
    hn::Vec<decltype(octets)> d;
    std::size_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        const unsigned char* const at = pixels + x * kPixelBytes;
        if constexpr (kPixelBytes == 2) hn::LoadInterleaved2(octets, at, a, b);
        if constexpr (kPixelBytes == 3) hn::LoadInterleaved3(octets, at, a, b, c);
        if constexpr (kPixelBytes == 4) hn::LoadInterleaved4(octets, at, a, b, c, d);
        if constexpr (kPlace == 0) hn::StoreU(a, octets, row + x);
        if constexpr (kPlace == 1) hn::StoreU(b, octets, row + x);
        if constexpr (kPlace == 2) hn::StoreU(c, octets, row + x);
        if constexpr (kPlace == 3) hn::StoreU(d, octets, row + x);
    }
    return x;
}

std::size_t TakeMost(const unsigned char* pixels, std::size_t pixelBytes, std::size_t place,
                     std::size_t count, unsigned char* row) {
    switch (10 * pixelBytes + place) {
        case 20:
            return TakeVectors<2, 0>(pixels, count, row);
        case 21:
            return TakeVectors<2, 1>(pixels, count, row);
        case 30:
            return TakeVectors<3, 0>(pixels, count, row);
        case 31:
            return TakeVectors<3, 1>(pixels, count, row);
        case 32:
            return TakeVectors<3, 2>(pixels, count, row);
        case 40:
            return TakeVectors<4, 0>(pixels, count, row);
        case 41:
            return TakeVectors<4, 1>(pixels, count, row);
        case 42:
            return TakeVectors<4, 2>(pixels, count, row);
        case 43:
            return TakeVectors<4, 3>(pixels, count, row);
        default:
            return 0;
    }
}

/// Whole vectors, beyond the row's end too.
void MarkEqual(const unsigned char* row, std::size_t count, unsigned char* one,
               unsigned char* two) {
    const hn::ScalableTag<std::uint8_t> octets;
    for (std::size_t x = 0; x < count; x += hn::Lanes(octets)) {
        const auto bytes = hn::LoadU(octets, row + x);
        const auto equal = hn::Eq(bytes, hn::LoadU(octets, row + x + 1));
        const auto three = hn::And(equal, hn::Eq(bytes, hn::LoadU(octets, row + x + 2)));
        hn::StoreMaskBits(octets, equal, one + x / 8);
        hn::StoreMaskBits(octets, three, two + x / 8);
    }
}
#else
std::size_t TakeMost(const unsigned char*, std::size_t, std::size_t, std::size_t, unsigned char*) {
    return 0;
}

void MarkEqual(const unsigned char* row, std::size_t count, unsigned char* one,
               unsigned char* two) {
    for (std::size_t x = 0; x < count; ++x) {
        const unsigned bit = x % 8;
        if (bit == 0) one[x / 8] = two[x / 8] = 0;
        const bool equal = row[x] == row[x + 1];
        one[x / 8] = static_cast<unsigned char>(one[x / 8] | unsigned{equal} << bit);
        const bool three = equal && row[x] == row[x + 2];
        two[x / 8] = static_cast<unsigned char>(two[x / 8] | unsigned{three} << bit);
    }
}
#endif

void TakeRow(const unsigned char* pixels, std::size_t pixelBytes, std::size_t place,
             std::size_t count, unsigned char* row) {
    if (pixelBytes == 1) {
        std::memcpy(row, pixels, count);
        return;
    }
    for (std::size_t x = TakeMost(pixels, pixelBytes, place, count, row); x < count; ++x)
        row[x] = pixels[x * pixelBytes + place];
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(TakeRow);
HWY_EXPORT(MarkEqual);

namespace {

/// Clears the bits from `count` on, as far as anything reads.
void ClearFrom(std::size_t count, unsigned char* bits) noexcept {
    unsigned char& first = bits[count / 8];
    first = static_cast<unsigned char>(first & ((1U << count % 8) - 1));
    std::memset(&first + 1, 0, PlaneRow::kSlack / 16);
}

}  // namespace

PlaneRow::PlaneRow(std::size_t count)
    : count_(count),
      bytes_(count + kSlack),
      equalNext_((count + kSlack) / 8),
      equalNextTwo_(equalNext_.size()) {}

void PlaneRow::Take(const unsigned char* pixels, std::size_t pixelBytes,
                    std::size_t place) noexcept {
    if (count_ == 0) return;
    HWY_DYNAMIC_DISPATCH(TakeRow)(pixels, pixelBytes, place, count_, bytes_.data());
    HWY_DYNAMIC_DISPATCH(MarkEqual)(bytes_.data(), count_, equalNext_.data(), equalNextTwo_.data());
    ClearFrom(count_ - 1, equalNext_.data());
    ClearFrom(count_ < 2 ? 0 : count_ - 2, equalNextTwo_.data());
}

}  // namespace quorvex
#endif
