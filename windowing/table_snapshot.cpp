#include "windowing/table_snapshot.h"

#include "foundation/types/saturate.h"
#include "quorvex/CXWindowing.h"
#include "windowing/windowing_state.h"

#include <algorithm>

namespace quorvex {
namespace {

template <class Entry>
std::pmr::vector<Entry> CopyOf(const std::vector<Entry>& table, std::int32_t count,
                               std::pmr::memory_resource* memory) {
    std::pmr::vector<Entry> copy(static_cast<std::size_t>(std::max(count, 0)), memory);
    std::copy_n(table.begin(), std::min(table.size(), copy.size()), copy.begin());
    return copy;
}

}  // namespace

DisplayTableSnapshot WindowingReader::DisplayTable(const CXWindowing& windowing,
                                                   std::pmr::memory_resource* memory) {
    const std::lock_guard lock(windowing.state_->tableLock);
    const WindowingSettings& settings = windowing.state_->settings;
    return {.entries = CopyOf(windowing.state_->tables.windowingTable, settings.tableSize, memory),
            .first = settings.minValue,
            .firstAsReported = TruncateToInt(settings.minValue - settings.postIntercept)};
}

ModalityTableSnapshot WindowingReader::ModalityTable(const CXWindowing& windowing) {
    const std::lock_guard lock(windowing.state_->tableLock);
    const WindowingSettings& settings = windowing.state_->settings;
    return {.entries = CopyOf(windowing.state_->tables.modalityTable, settings.modalityEntryCount,
                              std::pmr::get_default_resource()),
            .first = settings.modalityFirstValue};
}

}  // namespace quorvex
