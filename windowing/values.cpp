#include "foundation/types/answer.h"
#include "foundation/types/saturate.h"
#include "foundation/types/undo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr int kDone = 0;
constexpr int kNoChange = 4;
constexpr std::int64_t kNarrowestStep = 2;

int& AsInt(void* value) noexcept {
    return *static_cast<int*>(value);
}

template <class Entry>
void CopyOut(const std::vector<Entry>& table, void* room) noexcept {
    std::copy_n(table.data(), table.size(), static_cast<Entry*>(room));
}

}  // namespace

int CXWindowing::GetValue(unsigned int selector, void* first, void* second) {
    if (first == nullptr) return kNoChange;
    const std::lock_guard lock(tableLock);
    switch (selector) {
        case 0:
            CopyOut(tables.windowingTable, first);
            return kDone;
        case 1:
            CopyOut(tables.modalityTable, first);
            return kDone;
        case 2:
            AsInt(first) = settings.tableSize;
            if (second != nullptr) {
                AsInt(second) = TruncateToInt(settings.minValue - settings.postIntercept);
            }
            return kDone;
        case 3:
            AsInt(first) = settings.modalityEntryCount;
            return kDone;
        case 4:
            AsInt(first) = settings.minValue;
            return kDone;
        case 5:
            AsInt(first) = settings.modalityFirstValue;
            return kDone;
        case 6:
            AsInt(first) = settings.windowLevel;
            return kDone;
        case 7:
            AsInt(first) = settings.windowWidth;
            return kDone;
        default:
            return kNoChange;
    }
}

int CXWindowing::SetValue(unsigned int selector, void* first, void* /*second*/) {
    if (selector == 9) {
        return ChangeSettings([](Settings& changed) { changed.inverted = changed.inverted == 0; });
    }
    if (first == nullptr) return kNoChange;
    switch (selector) {
        case 6:
            return MoveLevel(AsInt(first));
        case 7:
            return MoveWidth(AsInt(first));
        case 8:
            return ChangeSettings([window = static_cast<const int*>(first)](Settings& changed) {
                changed.windowWidth = window[0];
                changed.windowLevel = window[1];
            });
        default:
            return kNoChange;
    }
}

int CXWindowing::ChangeWWByOffset(int offset) {
    return MoveWidth(-std::int64_t{offset});
}

int CXWindowing::ChangeWLByOffset(int offset) {
    return MoveLevel(-std::int64_t{offset});
}

int CXWindowing::GetWindowingFactor(int& width, int& level) {
    const std::lock_guard lock(tableLock);
    width = settings.windowWidth;
    level = settings.windowLevel;
    return kDone;
}

void CXWindowing::SetRescale(double slope, double intercept) {
    const std::lock_guard lock(tableLock);
    settings.rescaleSlope = slope;
    settings.rescaleIntercept = intercept;
}

void CXWindowing::SetPostIntercept(double value) {
    const std::lock_guard lock(tableLock);
    settings.postIntercept = value;
}

int CXWindowing::MoveLevel(std::int64_t steps) {
    const std::lock_guard lock(tableLock);
    const std::int32_t level =
        SaturateToInt(settings.windowLevel + StepFactor(settings.pixelBits) * steps);
    if (level == settings.windowLevel) return kNoChange;
    return ChangeSettings([level](Settings& changed) { changed.windowLevel = level; });
}

int CXWindowing::MoveWidth(std::int64_t steps) {
    const std::lock_guard lock(tableLock);
    const std::int64_t moved = settings.windowWidth + StepFactor(settings.pixelBits) * steps;
    const std::int32_t width = SaturateToInt(std::max(moved, kNarrowestStep));
    if (width == settings.windowWidth) return kNoChange;
    return ChangeSettings([width](Settings& changed) { changed.windowWidth = width; });
}

template <class Change>
int CXWindowing::ChangeSettings(Change change) {
    const std::lock_guard lock(tableLock);
    return Answer(kNoChange, [&] {
        UndoUnlessKept undo([this, before = settings] { settings = before; });
        change(settings);
        UpdateWindowingTable();
        undo.Keep();
        return kDone;
    });
}

}  // namespace quorvex
