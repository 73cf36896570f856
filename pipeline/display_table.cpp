#include "pipeline/display_table.h"

#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvex {

namespace {

constexpr unsigned kTable = 0;
constexpr unsigned kTableSize = 2;

/// The table of windowing with its first value.
struct WindowingTable {
    std::vector<unsigned char> entries;
    std::int64_t first = 0;

    [[nodiscard]] unsigned char At(std::int64_t value) const {
        const auto last = static_cast<std::int64_t>(entries.size()) - 1;
        return entries[static_cast<std::size_t>(std::clamp<std::int64_t>(value - first, 0, last))];
    }
};

WindowingTable TableOf(CXWindowing& windowing) {
    int count = 0;
    int first = 0;
    windowing.GetValue(kTableSize, &count, &first);
    WindowingTable table{std::vector<unsigned char>(static_cast<std::size_t>(std::max(count, 0))),
                         first};
    if (!table.entries.empty()) windowing.GetValue(kTable, table.entries.data(), nullptr);
    return table;
}

}  // namespace

std::vector<unsigned char> DisplayTable(CXWindowing& windowing, const ValueRange& range,
                                        ElementWidth width) {
    const WindowingTable source = TableOf(windowing);
    if (source.entries.empty()) return {};
    const std::int64_t count = width == ElementWidth::kByte ? 256 : 65536;
    const std::int64_t lowestAsItStands = source.first < 0 ? -count / 2 : 0;
    std::vector<unsigned char> table(static_cast<std::size_t>(count));
    const auto elementOf = [&](std::int64_t value) {
        return static_cast<std::size_t>(value & (count - 1));
    };
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t value = lowestAsItStands + i;
        table[elementOf(value)] = source.At(value);
    }
    const std::int64_t valuesOfFrame = std::min(range.high - range.low + 1, count);
    for (std::int64_t i = 0; i < valuesOfFrame; ++i) {
        table[elementOf(range.low + i)] = source.At(range.low + i);
    }
    return table;
}

}  // namespace quorvex
