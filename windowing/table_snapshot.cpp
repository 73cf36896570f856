#include "windowing/table_snapshot.h"

#include "foundation/types/saturate.h"
#include "foundation/types/scratch_memory.h"
#include "quorvex/CXWindowing.h"
#include "windowing/windowing_state.h"

#include <algorithm>

namespace quorvex {
namespace {

/// Fills a copy of a table; entries that it lacks are 0.
template <class Entry>
void CopyTo(std::span<Entry> copy, const std::vector<Entry>& table) {
    const std::size_t count = std::min(table.size(), copy.size());
    std::ranges::copy(std::span(table).first(count), copy.begin());
    std::ranges::fill(copy.subspan(count), Entry{});
}

std::size_t CountOf(std::int32_t entries) {
    return static_cast<std::size_t>(std::max(entries, 0));
}

}  // namespace

DisplayTableSnapshot WindowingReader::DisplayTable(const CXWindowing& windowing,
                                                   std::pmr::memory_resource& memory) {
    const std::lock_guard lock(windowing.state_->tableLock);
    const WindowingSettings& settings = windowing.state_->settings;
    const auto entries = TakeArray<std::uint8_t>(memory, CountOf(settings.tableSize));
    CopyTo(entries, windowing.state_->tables.windowingTable);
    return {.entries = entries,
            .first = settings.minValue,
            .firstAsReported = TruncateToInt(settings.minValue - settings.postIntercept)};
}

ModalityTableSnapshot WindowingReader::ModalityTable(const CXWindowing& windowing) {
    const std::lock_guard lock(windowing.state_->tableLock);
    const WindowingSettings& settings = windowing.state_->settings;
    std::vector<std::int32_t> entries(CountOf(settings.modalityEntryCount));
    CopyTo(std::span(entries), windowing.state_->tables.modalityTable);
    return {.entries = std::move(entries), .first = settings.modalityFirstValue};
}

}  // namespace quorvex
