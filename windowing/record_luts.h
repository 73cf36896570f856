/// The LUTs of a presentation record, laid over the values of a table. Pure functions, no object.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// A LUT as a record keeps it. Each word of an 8-bit LUT serves two entries by its low byte,
/// however the object packs them.
struct RecordLut {
    std::span<const std::uint16_t> words;  ///< empty where the record has no such LUT
    std::int64_t first = 0;                ///< value that the first entry belongs to
    int bits = 16;

    /// Entry `index` as a display byte.
    [[nodiscard]] std::uint8_t ByteAt(std::int64_t index) const noexcept {
        return ByteOfWord(bits == 8 ? index / 2 : index);
    }
    /// Word `index` as a display byte.
    [[nodiscard]] std::uint8_t ByteOfWord(std::int64_t index) const noexcept;
    [[nodiscard]] std::int64_t Count() const noexcept {
        return static_cast<std::int64_t>(words.size());
    }
};

/// @param count  words; 0 stands for 65,536
[[nodiscard]] RecordLut MakeRecordLut(const std::uint16_t* data, std::int32_t count,
                                      std::uint16_t first, std::int32_t bits,
                                      bool isSigned) noexcept;

// Each table takes the LUT's first entry below the values that the LUT covers, and its last entry
// above them. All throw std::bad_alloc.

/// Display bytes of `size` values from `minValue` on; the last one is always the LUT's last entry.
[[nodiscard]] std::vector<std::uint8_t> MakeVoiTable(const RecordLut& lut, std::int64_t minValue,
                                                     std::size_t size);

/// 256 display bytes; the LUT is walked through in steps of a 256th of its length, by table index.
[[nodiscard]] std::vector<std::uint8_t> MakePresentationTable(const RecordLut& lut,
                                                              std::int64_t minValue);

/// `size` entries, those of the LUT from index `start` on; `offset` is taken off the two ends.
[[nodiscard]] std::vector<std::int32_t> TableFromModalityLut(const RecordLut& lut,
                                                             std::int64_t start, std::size_t size,
                                                             std::int32_t offset);

}  // namespace quorvex
