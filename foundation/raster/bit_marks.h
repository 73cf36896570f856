/// Set bits of packed planes.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace quorvex {

/// Calls `mark(k)` for every set bit `first` + k, k below `count`, of a plane in overlay order.
/// Bits past its end are not set.
template <class Mark>
void ForEachSetBit(std::span<const unsigned char> plane, std::size_t first, std::size_t count,
                   Mark mark) {
    const std::size_t end = std::min(first + count, plane.size() * 8);
    for (std::size_t bit = first; bit < end;) {
        std::uint64_t word = 0;
        const std::size_t byte = bit / 8;
        std::memcpy(&word, plane.data() + byte, std::min(sizeof word, plane.size() - byte));
        word >>= bit % 8;
        const std::size_t taken = std::min(64 - bit % 8, end - bit);
        if (taken < 64) word &= (std::uint64_t{1} << taken) - 1;
        for (; word != 0; word &= word - 1) {
            mark(bit - first + static_cast<std::size_t>(std::countr_zero(word)));
        }
        bit += taken;
    }
}

}  // namespace quorvex
