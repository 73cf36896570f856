/// Stored values of one row, read and looked up.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvex {

// How the stored value of pixel i of a row is read.
struct ByteReader {
    static constexpr std::size_t kBytes = 1;
    static int At(const unsigned char* row, std::size_t i) { return row[i]; }
};
template <class Word>
struct WordReader {
    static constexpr std::size_t kBytes = 2;
    static int At(const unsigned char* row, std::size_t i) {
        Word word;
        std::memcpy(&word, row + 2 * i, sizeof(word));
        return word;
    }
};
template <class Half>
struct LowByteReader {
    static constexpr std::size_t kBytes = 2;
    static int At(const unsigned char* row, std::size_t i) {
        return static_cast<Half>(WordReader<std::uint16_t>::At(row, i) & 0xFF);
    }
};

struct ByteTable {
    const unsigned char* entries;
    std::ptrdiff_t first;
    [[nodiscard]] unsigned char Of(int value) const { return entries[value - first]; }
};

// Most of a job's time is spent here. Without the prefetch, each row would wait for the memory.
template <class Reader>
void MapPlain(const unsigned char* source, const unsigned char* prefetch, ByteTable table,
              unsigned char* to, std::size_t count) {
    constexpr std::size_t kLine = 64 / Reader::kBytes;
    for (std::size_t i = 0; i < count;) {
        const std::size_t end = std::min(i + kLine, count);
        __builtin_prefetch(prefetch + i * Reader::kBytes);
#pragma GCC unroll 8
        for (; i < end; ++i) to[i] = table.Of(Reader::At(source, i));
    }
}

template <class Reader>
void MapMasked(const unsigned char* source, ByteTable table, unsigned char* to, std::size_t count,
               const unsigned char* mask, unsigned char hidden) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = mask[i] != 0 ? hidden : table.Of(Reader::At(source, i));
    }
}

inline void Hide(const unsigned char* mask, unsigned char hidden, unsigned char* to,
                 std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) to[i] = mask[i] != 0 ? hidden : to[i];
}

}  // namespace quorvex
