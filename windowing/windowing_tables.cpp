#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"

#include <algorithm>
#include <span>

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

CXWindowing::CXWindowing() = default;

CXWindowing::~CXWindowing() = default;

CXWindowing::CXWindowing(const CXWindowing& other) {
    const std::lock_guard lock(other.tableLock);
    settings = other.settings;
    tables = other.tables;
}

CXWindowing& CXWindowing::operator=(const CXWindowing& other) {
    if (this == &other) return *this;
    const std::scoped_lock lock(tableLock, other.tableLock);
    Tables copies = other.tables;
    tables = std::move(copies);
    settings = other.settings;
    return *this;
}

void CXWindowing::UpdateWindowingTable() {
    tables.windowingTable.resize(static_cast<std::size_t>(settings.tableSize));
    if (settings.tableSize == 0) return;
    if (tables.voiTable.empty()) {
        FillFromWindow();
    } else {
        FillFromVoiTable();
    }
}

bool CXWindowing::IsInverse() const noexcept {
    return (static_cast<std::int64_t>(settings.presentationShape) + settings.inverted) % 2 != 0;
}

void CXWindowing::FillFromVoiTable() {
    if (!tables.presentationTable.empty()) {
        CopyThrough(tables.voiTable, tables.presentationTable, tables.windowingTable);
    } else if (IsInverse()) {
        CopyInverse(tables.voiTable, tables.windowingTable);
    } else {
        tables.windowingTable = tables.voiTable;
    }
}

void CXWindowing::FillFromWindow() {
    const ValueDomain domain{settings.minValue, settings.maxValue};
    const DomainWindow window = ToDomainWindow(settings.windowLevel, settings.windowWidth,
                                               settings.rescaleSlope, settings.rescaleIntercept);
    const DisplayBytes bytes = tables.presentationTable.empty()
                                   ? PlainDisplayBytes(window, domain, IsInverse())
                                   : PresentationDisplayBytes(tables.presentationTable);
    FillWindow(tables.windowingTable, domain, window, bytes);
}

}  // namespace quorvex
