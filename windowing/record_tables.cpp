// CXWindowing: the tables and the window that a presentation record asks for.
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "foundation/types/undo.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/record_luts.h"
#include "windowing/window_arithmetic.h"
#include "windowing/windowing_state.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvex {
namespace {

constexpr std::int32_t kMostPixelBits = 24;
constexpr std::int64_t kAllInts = std::int64_t{1} << 32;

std::vector<std::int32_t> TableFromRescale(const CXGSPSInfo& info, std::int32_t first,
                                           std::size_t size) {
    std::vector<std::int32_t> table(size);
    double value = static_cast<double>(first) + info.pixelValueOffset;
    for (std::int32_t& entry : table) {
        entry = TruncateToInt(value * info.rescaleSlope + info.rescaleIntercept);
        value += 1.0;
    }
    return table;
}

/// Entries of a table from minimum to maximum; 0 where there can be none.
std::int32_t TableSizeOf(std::int64_t minimum, std::int64_t maximum) noexcept {
    const std::int64_t size = maximum - minimum + 1;
    return size < 0 || size > kLargestWindowingTable ? 0 : static_cast<std::int32_t>(size);
}

/// Makes all tables anew by `steps`, under the lock. Without memory all stays as it was.
template <class Steps>
int Prepare(WindowingState& state, Steps steps) {
    const std::lock_guard lock(state.tableLock);
    const WindowingSettings settingsBefore = state.settings;
    WindowingTables tablesBefore = std::exchange(state.tables, WindowingTables{});
    return Answer(0, [&] {
        UndoUnlessKept undo([&] {
            state.settings = settingsBefore;
            state.tables = std::move(tablesBefore);
        });
        steps();
        state.UpdateWindowingTable();
        undo.Keep();
        return 0;
    });
}

}  // namespace

int CXWindowing::PrepareGSPSProcessing(CXGSPSInfo* info) {
    if (info == nullptr) return 0;
    return Prepare(*state_, [&] {
        state_->settings.pixelBits = info->pixelBitDepth;
        state_->MakeModalityTable(*info);
        state_->PrepareWindowingTable(*info);
    });
}

int CXWindowing::PrepareGSPSProcessing2(CXGSPSInfo* info, int minimum, int maximum) {
    if (info == nullptr) return 0;
    return Prepare(*state_, [&, &settings = state_->settings] {
        settings.pixelBits = info->pixelBitDepth;
        settings.minValue = minimum;
        settings.maxValue = maximum;
        settings.tableSize = TableSizeOf(minimum, maximum);
        if (minimum >= 0 && maximum < 256 && settings.pixelBits == 8) {
            settings.windowLevel = kByteLevel;
            settings.windowWidth = kByteWidth;
        } else if (info->windowWidth == 0) {
            state_->TakeFullRangeWindow();
        }
        state_->PrepareWindowingTable(*info);
    });
}

void WindowingState::TakeFullRangeWindow() noexcept {
    std::int64_t low = settings.minValue;
    std::int64_t high = settings.maxValue;
    if (settings.rescaleSlope >= 1.0) {
        low = TruncateToInt(settings.minValue * settings.rescaleSlope + settings.rescaleIntercept);
        high = TruncateToInt(settings.maxValue * settings.rescaleSlope + settings.rescaleIntercept);
    }
    settings.windowLevel = SaturateToInt((low + high) / 2);
    settings.windowWidth = SaturateToInt(high - low);
}

void WindowingState::MakeModalityTable(const CXGSPSInfo& info) {
    const std::int32_t bits = settings.pixelBits;
    if (bits < 0 || bits > kMostPixelBits) {
        SetEmptyDomain();
        return;
    }
    const std::int32_t entryCount = std::int32_t{1} << bits;
    settings.modalityEntryCount = entryCount;
    settings.modalityFirstValue =
        bits == 16 ? std::numeric_limits<std::int16_t>::min() : std::int16_t{0};
    MakeModalityEntries(info);
    const std::int64_t span = std::int64_t{settings.maxValue} - settings.minValue + 1;
    // A rescale that is clamped at both ends of int has no usable domain; its table is a plain one.
    settings.tableSize =
        span % kAllInts == 0 ? entryCount : TableSizeOf(settings.minValue, settings.maxValue);
}

void WindowingState::SetEmptyDomain() noexcept {
    settings.modalityFirstValue = 0;
    settings.modalityEntryCount = 0;
    settings.minValue = 0;
    settings.maxValue = -1;
    settings.tableSize = 0;
}

void WindowingState::MakeModalityEntries(const CXGSPSInfo& info) {
    const bool isSigned = info.pixelRepresentation != 0;
    const std::int32_t firstValue = settings.modalityFirstValue;
    const auto size = static_cast<std::size_t>(settings.modalityEntryCount);
    const RecordLut lut = MakeRecordLut(info.modalityLUTData, info.modalityLUTCount,
                                        info.modalityLUTFirst, /*bits=*/16, isSigned);
    if (!lut.words.empty()) {
        const std::int64_t start = isSigned ? lut.first - firstValue : lut.first;
        tables.modalityTable = TableFromModalityLut(lut, start, size, info.pixelValueOffset);
        const std::int64_t offset = info.pixelValueOffset;
        SetDomain(SaturateToInt(lut.words.front() - offset),
                  SaturateToInt(lut.words.back() - offset));
    } else if (info.rescaleSlope == 0.0) {
        settings.minValue = firstValue;
        settings.maxValue = firstValue + settings.modalityEntryCount - 1;
        settings.modalityEntryCount = 0;
    } else {
        tables.modalityTable = TableFromRescale(info, firstValue, size);
        SetDomain(tables.modalityTable.front(), tables.modalityTable.back());
    }
}

void WindowingState::SetDomain(std::int32_t oneEnd, std::int32_t otherEnd) noexcept {
    settings.minValue = std::min(oneEnd, otherEnd);
    settings.maxValue = std::max(oneEnd, otherEnd);
}

void WindowingState::PrepareWindowingTable(const CXGSPSInfo& info) {
    const bool isSigned = info.pixelRepresentation != 0;
    const RecordLut voi = MakeRecordLut(info.voiLUTData, info.voiLUTCount, info.voiLUTFirst,
                                        info.voiLUTBits, isSigned);
    if (!voi.words.empty()) {
        tables.voiTable =
            MakeVoiTable(voi, settings.minValue, static_cast<std::size_t>(settings.tableSize));
    } else {
        TakeWindow(info);
    }
    const RecordLut presentation =
        MakeRecordLut(info.presentationLUTData, info.presentationLUTCount,
                      info.presentationLUTFirst, info.presentationLUTBits, isSigned);
    if (!presentation.words.empty()) {
        tables.presentationTable = MakePresentationTable(presentation, settings.minValue);
    } else {
        settings.presentationShape = info.presentationShape;
    }
}

void WindowingState::TakeWindow(const CXGSPSInfo& info) noexcept {
    if (info.windowWidth != 0) {
        settings.windowLevel =
            SaturateToInt(std::int64_t{info.windowCenter} - info.pixelValueOffset);
        settings.windowWidth = info.windowWidth;
    }
    if (settings.windowWidth == 0) {
        settings.windowWidth = kFallbackWidth;
        settings.windowLevel = kFallbackLevel;
    }
}

}  // namespace quorvex
