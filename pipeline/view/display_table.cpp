#include "pipeline/view/display_table.h"

#include "foundation/types/scratch_memory.h"
#include "windowing/table_snapshot.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

namespace {

/// The table of windowing with the value of its first entry.
struct WindowingTable {
    std::span<const unsigned char> entries;
    std::int64_t first = 0;

    /// The display values of `low` and those that follow it.
    void PutValues(std::int64_t low, std::span<unsigned char> to) const {
        const auto size = static_cast<std::int64_t>(to.size());
        const auto count = static_cast<std::int64_t>(entries.size());
        const std::int64_t below = std::clamp<std::int64_t>(first - low, 0, size);
        const std::int64_t known = std::clamp<std::int64_t>(first + count - low, below, size);
        std::fill_n(to.begin(), below, entries.front());
        if (known > below) {
            std::copy_n(entries.begin() + (low + below - first), known - below, to.data() + below);
        }
        std::fill(to.begin() + known, to.end(), entries.back());
    }
};

WindowingTable TableOf(const CXWindowing& windowing, std::pmr::memory_resource& memory) {
    const DisplayTableSnapshot fetched = WindowingReader::DisplayTable(windowing, memory);
    return {fetched.entries, fetched.firstAsReported};
}

/// Puts the display values of `values` values from `low` on where the elements that hold their low
/// bits are looked up.
void PutElements(const WindowingTable& source, std::int64_t low, std::int64_t values,
                 std::span<unsigned char> table) {
    const auto count = static_cast<std::int64_t>(table.size());
    const std::int64_t element = low & (count - 1);
    const std::int64_t ahead = std::min(values, count - element);
    const auto places = [](std::int64_t number) { return static_cast<std::size_t>(number); };
    source.PutValues(low, table.subspan(places(element), places(ahead)));
    source.PutValues(low + ahead, table.first(places(values - ahead)));
}

}  // namespace

std::span<unsigned char> DisplayTable(const CXWindowing& windowing, const ValueRange& range,
                                      ElementWidth width, std::pmr::memory_resource& memory) {
    const WindowingTable source = TableOf(windowing, memory);
    if (source.entries.empty()) return {};
    const std::int64_t count = width == ElementWidth::kByte ? 256 : 65536;
    const auto table = TakeArray<unsigned char>(memory, static_cast<std::size_t>(count));
    PutElements(source, source.first < 0 ? -count / 2 : 0, count, table);
    const std::int64_t valuesOfFrame =
        std::clamp<std::int64_t>(range.high - range.low + 1, 0, count);
    PutElements(source, range.low, valuesOfFrame, table);
    return table;
}

}  // namespace quorvex
