#include "windowing/record_luts.h"

#include "foundation/types/saturate.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr std::size_t kPresentationEntries = 256;
constexpr std::size_t kMostEntries = 65536;

/// The part [begin, end) of a table that a LUT's entries are put into.
struct Stretch {
    std::int64_t begin;
    std::int64_t end;
};

Stretch ClipStretch(std::int64_t start, std::int64_t count, std::int64_t lastEnd) noexcept {
    return {std::max<std::int64_t>(start, 0), std::clamp<std::int64_t>(start + count, 0, lastEnd)};
}

/// Low before the stretch, its own values on it, high behind it. A stretch that begins past the
/// table leaves low everywhere but from its end on.
template <class Entry, class ValueAt>
void FillAround(std::span<Entry> table, Stretch stretch, Entry low, ValueAt valueAt, Entry high) {
    const auto size = static_cast<std::int64_t>(table.size());
    std::fill(table.begin(), table.begin() + std::min(stretch.begin, size), low);
    for (std::int64_t i = stretch.begin; i < stretch.end; ++i) {
        table[static_cast<std::size_t>(i)] = valueAt(i);
    }
    std::fill(table.begin() + stretch.end, table.end(), high);
}

}  // namespace

std::uint8_t RecordLut::ByteOfWord(std::int64_t index) const noexcept {
    const int shift = std::clamp(bits - 8, 0, 16);
    return static_cast<std::uint8_t>(words[static_cast<std::size_t>(index)] >> shift);
}

RecordLut MakeRecordLut(const std::uint16_t* data, std::int32_t count, std::uint16_t first,
                        std::int32_t bits, bool isSigned) noexcept {
    if (data == nullptr || count < 0) return {};
    const std::size_t words = count == 0 ? kMostEntries : static_cast<std::size_t>(count);
    const std::int64_t firstValue =
        isSigned ? std::int64_t{static_cast<std::int16_t>(first)} : std::int64_t{first};
    return {{data, words}, firstValue, bits};
}

std::vector<std::uint8_t> MakeVoiTable(const RecordLut& lut, std::int64_t minValue,
                                       std::size_t size) {
    std::vector<std::uint8_t> table(size);
    if (size == 0) return table;
    const auto last = static_cast<std::int64_t>(size) - 1;
    const Stretch stretch = ClipStretch(lut.first - minValue, lut.Count(), last);
    const auto byteAt = [&](std::int64_t i) { return lut.ByteAt(i - stretch.begin); };
    FillAround<std::uint8_t>(table, stretch, lut.ByteOfWord(0), byteAt,
                             lut.ByteOfWord(lut.Count() - 1));
    return table;
}

std::vector<std::uint8_t> MakePresentationTable(const RecordLut& lut, std::int64_t minValue) {
    std::vector<std::uint8_t> table(kPresentationEntries);
    const std::int64_t step = lut.Count() / static_cast<std::int64_t>(kPresentationEntries);
    const Stretch stretch =
        ClipStretch(lut.first - minValue, lut.Count(), kPresentationEntries - 1);
    const auto byteAt = [&](std::int64_t i) { return lut.ByteAt(step * i); };
    FillAround<std::uint8_t>(table, stretch, lut.ByteOfWord(0), byteAt,
                             lut.ByteOfWord(lut.Count() - 1));
    return table;
}

std::vector<std::int32_t> TableFromModalityLut(const RecordLut& lut, std::int64_t start,
                                               std::size_t size, std::int32_t offset) {
    std::vector<std::int32_t> table(size);
    const Stretch stretch = ClipStretch(start, lut.Count(), static_cast<std::int64_t>(size));
    const auto entryAt = [&](std::int64_t i) {
        return std::int32_t{lut.words[static_cast<std::size_t>(i - stretch.begin)]};
    };
    FillAround<std::int32_t>(table, stretch,
                             SaturateToInt(std::int64_t{lut.words.front()} - offset), entryAt,
                             SaturateToInt(std::int64_t{lut.words.back()} - offset));
    return table;
}

}  // namespace quorvex
