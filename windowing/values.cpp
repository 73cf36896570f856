// CXWindowing: values read, and the window changed.
#include "foundation/types/answer.h"
#include "foundation/types/saturate.h"
#include "foundation/types/undo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"
#include "windowing/windowing_state.h"

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

// Whoever calls these holds the lock.

template <class Change>
int ChangeSettings(WindowingState& state, Change change) {
    return Answer(kNoChange, [&] {
        UndoUnlessKept undo([&state, before = state.settings] { state.settings = before; });
        change(state.settings);
        state.UpdateWindowingTable();
        undo.Keep();
        return kDone;
    });
}

int MoveLevel(WindowingState& state, std::int64_t steps) {
    const auto& settings = state.settings;
    const std::int32_t level =
        SaturateToInt(settings.windowLevel + StepFactor(settings.pixelBits) * steps);
    if (level == settings.windowLevel) return kNoChange;
    return ChangeSettings(state, [level](auto& changed) { changed.windowLevel = level; });
}

int MoveWidth(WindowingState& state, std::int64_t steps) {
    const auto& settings = state.settings;
    const std::int64_t moved = settings.windowWidth + StepFactor(settings.pixelBits) * steps;
    const std::int32_t width = SaturateToInt(std::max(moved, kNarrowestStep));
    if (width == settings.windowWidth) return kNoChange;
    return ChangeSettings(state, [width](auto& changed) { changed.windowWidth = width; });
}

int TakeWindow(WindowingState& state, const int* widthAndLevel) {
    return ChangeSettings(state, [widthAndLevel](auto& changed) {
        changed.windowWidth = widthAndLevel[0];
        changed.windowLevel = widthAndLevel[1];
    });
}

int ToggleInversion(WindowingState& state) {
    return ChangeSettings(state, [](auto& changed) { changed.inverted = changed.inverted == 0; });
}

}  // namespace

int CXWindowing::GetValue(unsigned int selector, void* first, void* second) {
    if (first == nullptr) return kNoChange;
    const std::lock_guard lock(state_->tableLock);
    const WindowingSettings& settings = state_->settings;
    switch (selector) {
        case kDisplayTable:
            CopyOut(state_->tables.windowingTable, first);
            return kDone;
        case kModalityTable:
            CopyOut(state_->tables.modalityTable, first);
            return kDone;
        case kDisplayTableCount:
            AsInt(first) = settings.tableSize;
            if (second != nullptr) {
                AsInt(second) = TruncateToInt(settings.minValue - settings.postIntercept);
            }
            return kDone;
        case kModalityTableCount:
            AsInt(first) = settings.modalityEntryCount;
            return kDone;
        case kDisplayTableFirst:
            AsInt(first) = settings.minValue;
            return kDone;
        case kModalityTableFirst:
            AsInt(first) = settings.modalityFirstValue;
            return kDone;
        case kWindowLevel:
            AsInt(first) = settings.windowLevel;
            return kDone;
        case kWindowWidth:
            AsInt(first) = settings.windowWidth;
            return kDone;
        default:
            return kNoChange;
    }
}

int CXWindowing::SetValue(unsigned int selector, void* first, void* /*second*/) {
    const std::lock_guard lock(state_->tableLock);
    if (selector == kInversion) return ToggleInversion(*state_);
    if (first == nullptr) return kNoChange;
    switch (selector) {
        case kWindowLevel:
            return MoveLevel(*state_, AsInt(first));
        case kWindowWidth:
            return MoveWidth(*state_, AsInt(first));
        case kWindow:
            return TakeWindow(*state_, static_cast<const int*>(first));
        default:
            return kNoChange;
    }
}

int CXWindowing::ChangeWWByOffset(int offset) {
    const std::lock_guard lock(state_->tableLock);
    return MoveWidth(*state_, -std::int64_t{offset});
}

int CXWindowing::ChangeWLByOffset(int offset) {
    const std::lock_guard lock(state_->tableLock);
    return MoveLevel(*state_, -std::int64_t{offset});
}

int CXWindowing::GetWindowingFactor(int& width, int& level) {
    const std::lock_guard lock(state_->tableLock);
    width = state_->settings.windowWidth;
    level = state_->settings.windowLevel;
    return kDone;
}

void CXWindowing::SetRescale(double slope, double intercept) {
    const std::lock_guard lock(state_->tableLock);
    state_->settings.rescaleSlope = slope;
    state_->settings.rescaleIntercept = intercept;
}

void CXWindowing::SetPostIntercept(double value) {
    const std::lock_guard lock(state_->tableLock);
    state_->settings.postIntercept = value;
}

}  // namespace quorvex
