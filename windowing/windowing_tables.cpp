// CXWindowing: its life, and the display table made from what is set.
#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"
#include "windowing/windowing_state.h"

#include <algorithm>
#include <span>
#include <utility>

namespace quorvex {
namespace {

void CopyInverse(std::span<const std::uint8_t> source, std::span<std::uint8_t> target) {
    std::ranges::transform(source, target.begin(), [](std::uint8_t value) {
        return static_cast<std::uint8_t>(255 - value);
    });
}

void CopyThrough(std::span<const std::uint8_t> source, std::span<const std::uint8_t> lut,
                 std::span<std::uint8_t> target) {
    std::ranges::transform(source, target.begin(),
                           [lut](std::uint8_t value) { return lut[value]; });
}

DisplayBytes PresentationDisplayBytes(std::span<const std::uint8_t> presentationTable) {
    DisplayBytes bytes{presentationTable.front(), {}, presentationTable.back()};
    std::ranges::copy(presentationTable, bytes.ramp.begin());
    return bytes;
}

}  // namespace

CXWindowing::CXWindowing() : state_(std::make_unique<WindowingState>()) {}

CXWindowing::CXWindowing(const CXWindowing& other) : CXWindowing() {
    const std::lock_guard lock(other.state_->tableLock);
    state_->settings = other.state_->settings;
    state_->tables = other.state_->tables;
}

CXWindowing& CXWindowing::operator=(const CXWindowing& other) {
    if (this == &other) return *this;
    const std::scoped_lock lock(state_->tableLock, other.state_->tableLock);
    WindowingTables copies = other.state_->tables;
    state_->tables = std::move(copies);
    state_->settings = other.state_->settings;
    return *this;
}

CXWindowing::~CXWindowing() = default;

void WindowingState::UpdateWindowingTable() {
    tables.windowingTable.resize(static_cast<std::size_t>(settings.tableSize));
    if (settings.tableSize == 0) return;
    if (tables.voiTable.empty()) {
        FillFromWindow();
    } else {
        FillFromVoiTable();
    }
}

bool WindowingState::IsInverse() const noexcept {
    return (static_cast<std::int64_t>(settings.presentationShape) + settings.inverted) % 2 != 0;
}

void WindowingState::FillFromVoiTable() {
    if (!tables.presentationTable.empty()) {
        CopyThrough(tables.voiTable, tables.presentationTable, tables.windowingTable);
    } else if (IsInverse()) {
        CopyInverse(tables.voiTable, tables.windowingTable);
    } else {
        tables.windowingTable = tables.voiTable;
    }
}

void WindowingState::FillFromWindow() {
    const ValueDomain domain{settings.minValue, settings.maxValue};
    const DomainWindow window = ToDomainWindow(settings.windowLevel, settings.windowWidth,
                                               settings.rescaleSlope, settings.rescaleIntercept);
    const DisplayBytes bytes = tables.presentationTable.empty()
                                   ? PlainDisplayBytes(window, domain, IsInverse())
                                   : PresentationDisplayBytes(tables.presentationTable);
    FillWindow(tables.windowingTable, domain, window, bytes);
}

}  // namespace quorvex
