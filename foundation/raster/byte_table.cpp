#include "foundation/raster/byte_table.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/byte_table.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kColourBytes = 3;

#if HWY_TARGET != HWY_SCALAR
/// A vector instruction looks up 16 entries: each 16 are asked for their bytes, and give 0 for
/// others.
template <class Octets>
hn::Vec<Octets> LookUp(Octets octets, const std::uint8_t* table, hn::Vec<Octets> bytes) {
    const auto reach = hn::Set(octets, std::uint8_t{0x70});
    const auto counted = hn::Set(octets, std::uint8_t{0x8F});
    const auto sixteen = hn::Set(octets, std::uint8_t{16});
    auto result = hn::Zero(octets);
    for (std::size_t i = 0; i < 256; i += 16) {
        const auto place = hn::And(hn::SaturatedAdd(bytes, reach), counted);
        const auto entries = hn::LoadDup128(octets, table + i);
        result = hn::Or(result, hn::TableLookupBytesOr0(entries, place));
        bytes = hn::Sub(bytes, sixteen);
    }
    return result;
}

/// Maps as many whole vectors of pixels as there are, and gives their number.
std::size_t MapVectors(const std::uint8_t* table, const unsigned char* from, unsigned char* to,
                       std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> octets;
    const std::size_t step = hn::Lanes(octets);
    std::size_t i = 0;
    for (; i + step <= pixels; i += step) {
        hn::Vec<decltype(octets)> first;
        hn::Vec<decltype(octets)> second;
        hn::Vec<decltype(octets)> third;
        hn::LoadInterleaved3(octets, from + kColourBytes * i, first, second, third);
        hn::StoreInterleaved3(LookUp(octets, table, third), LookUp(octets, table, second),
                              LookUp(octets, table, first), octets, to + kColourBytes * i);
    }
    return i;
}
#else
std::size_t MapVectors(const std::uint8_t*, const unsigned char*, unsigned char*, std::size_t) {
    return 0;
}
#endif

void MapReversed(const std::uint8_t* table, const unsigned char* from, unsigned char* to,
                 std::size_t pixels) {
    for (std::size_t i = MapVectors(table, from, to, pixels); i < pixels; ++i) {
        to[kColourBytes * i] = table[from[kColourBytes * i + 2]];
        to[kColourBytes * i + 1] = table[from[kColourBytes * i + 1]];
        to[kColourBytes * i + 2] = table[from[kColourBytes * i]];
    }
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(MapReversed);

void MapColoursReversed(ByteTable256 table, const unsigned char* from, unsigned char* to,
                        std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(MapReversed)(table.data(), from, to, pixels);
}

}  // namespace quorvex
#endif
