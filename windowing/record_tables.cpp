#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "foundation/types/undo.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

namespace quorvex {
namespace {

constexpr std::int32_t kFallbackWidth = 400;
constexpr std::int32_t kFallbackLevel = 0;
constexpr std::size_t kPresentationEntries = 256;
constexpr std::int32_t kMostPixelBits = 24;
constexpr std::int64_t kAllInts = std::int64_t{1} << 32;

/// A LUT of the record, as its readers take it.
struct RecordLut {
    std::span<const std::uint16_t> entries;  ///< empty where the record has no such LUT
    std::int64_t first = 0;
    int bits = 0;

    /// An entry as a display byte. 8-bit LUTs pack two entries into a word, and only the low byte
    /// of a word counts.
    [[nodiscard]] std::uint8_t ByteAt(std::int64_t index) const noexcept {
        return WholeByteAt(bits == 8 ? index / 2 : index);
    }
    [[nodiscard]] std::uint8_t WholeByteAt(std::int64_t index) const noexcept {
        const int shift = std::clamp(bits - 8, 0, 16);
        return static_cast<std::uint8_t>(entries[static_cast<std::size_t>(index)] >> shift);
    }
    [[nodiscard]] std::int64_t Count() const noexcept {
        return static_cast<std::int64_t>(entries.size());
    }
};

RecordLut MakeRecordLut(const std::uint16_t* data, std::int32_t count, std::uint16_t first,
                        std::int32_t bits, bool isSigned) noexcept {
    if (data == nullptr || count < 0) return {};
    const std::size_t entries = count == 0 ? 65536 : static_cast<std::size_t>(count);
    const std::int64_t firstValue =
        isSigned ? std::int64_t{static_cast<std::int16_t>(first)} : std::int64_t{first};
    return {{data, entries}, firstValue, bits};
}

/// The stretch [begin, end) of a table that a LUT's entries are put into.
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

std::vector<std::uint8_t> MakeVoiTable(const RecordLut& lut, std::int64_t minValue,
                                       std::size_t size) {
    std::vector<std::uint8_t> table(size);
    if (size == 0) return table;
    const auto last = static_cast<std::int64_t>(size) - 1;
    const Stretch stretch = ClipStretch(lut.first - minValue, lut.Count(), last);
    FillAround<std::uint8_t>(
        table, stretch, lut.WholeByteAt(0),
        [&](std::int64_t i) { return lut.ByteAt(i - stretch.begin); },
        lut.WholeByteAt(lut.Count() - 1));
    return table;
}

std::vector<std::uint8_t> MakePresentationTable(const RecordLut& lut, std::int64_t minValue) {
    std::vector<std::uint8_t> table(kPresentationEntries);
    const std::int64_t step = lut.Count() / static_cast<std::int64_t>(kPresentationEntries);
    FillAround<std::uint8_t>(
        table, ClipStretch(lut.first - minValue, lut.Count(), kPresentationEntries - 1),
        lut.WholeByteAt(0), [&](std::int64_t i) { return lut.ByteAt(step * i); },
        lut.WholeByteAt(lut.Count() - 1));
    return table;
}

std::vector<std::int32_t> TableFromModalityLut(const RecordLut& lut, std::int64_t start,
                                               std::size_t size, std::int32_t offset) {
    std::vector<std::int32_t> table(size);
    const Stretch stretch =
        ClipStretch(start, lut.Count(), static_cast<std::int64_t>(table.size()));
    const auto entryAt = [&](std::int64_t i) {
        return std::int32_t{lut.entries[static_cast<std::size_t>(i - stretch.begin)]};
    };
    FillAround<std::int32_t>(table, stretch,
                             SaturateToInt(std::int64_t{lut.entries.front()} - offset), entryAt,
                             SaturateToInt(std::int64_t{lut.entries.back()} - offset));
    return table;
}

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

}  // namespace

template <class Steps>
int CXWindowing::Prepare(Steps steps) {
    const std::lock_guard lock(tableLock);
    const Settings settingsBefore = settings;
    Tables tablesBefore = std::exchange(tables, Tables{});
    return Answer(0, [&] {
        UndoUnlessKept undo([&] {
            settings = settingsBefore;
            tables = std::move(tablesBefore);
        });
        steps();
        undo.Keep();
        return 0;
    });
}

int CXWindowing::PrepareGSPSProcessing(CXGSPSInfo* info) {
    if (info == nullptr) return 0;
    return Prepare([&] {
        settings.pixelBits = info->pixelBitDepth;
        MakeModalityTable(info);
        PrepareWindowingTable(info);
        UpdateWindowingTable();
    });
}

int CXWindowing::PrepareGSPSProcessing2(CXGSPSInfo* info, int minimum, int maximum) {
    if (info == nullptr) return 0;
    return Prepare([&] {
        settings.pixelBits = info->pixelBitDepth;
        settings.minValue = minimum;
        settings.maxValue = maximum;
        settings.tableSize = TableSizeOf(minimum, maximum);
        if (minimum >= 0 && maximum < 256 && settings.pixelBits == 8) {
            settings.windowLevel = 128;
            settings.windowWidth = 256;
        } else if (info->windowWidth == 0) {
            TakeFullRangeWindow();
        }
        PrepareWindowingTable(info);
        UpdateWindowingTable();
    });
}

void CXWindowing::TakeFullRangeWindow() noexcept {
    std::int64_t low = settings.minValue;
    std::int64_t high = settings.maxValue;
    if (settings.rescaleSlope >= 1.0) {
        low = TruncateToInt(settings.minValue * settings.rescaleSlope + settings.rescaleIntercept);
        high = TruncateToInt(settings.maxValue * settings.rescaleSlope + settings.rescaleIntercept);
    }
    settings.windowLevel = SaturateToInt((low + high) / 2);
    settings.windowWidth = SaturateToInt(high - low);
}

int CXWindowing::MakeModalityTable(CXGSPSInfo* info) {
    const std::int32_t bits = settings.pixelBits;
    if (bits < 0 || bits > kMostPixelBits) {
        SetEmptyDomain();
        return 0;
    }
    const std::int32_t entryCount = std::int32_t{1} << bits;
    settings.modalityEntryCount = entryCount;
    settings.modalityFirstValue =
        bits == 16 ? std::numeric_limits<std::int16_t>::min() : std::int16_t{0};
    MakeModalityEntries(*info);
    const std::int64_t span = std::int64_t{settings.maxValue} - settings.minValue + 1;
    // A rescale that runs off both ends of int has no domain to speak of; it counts as none.
    settings.tableSize =
        span % kAllInts == 0 ? entryCount : TableSizeOf(settings.minValue, settings.maxValue);
    return 0;
}

void CXWindowing::SetEmptyDomain() noexcept {
    settings.modalityFirstValue = 0;
    settings.modalityEntryCount = 0;
    settings.minValue = 0;
    settings.maxValue = -1;
    settings.tableSize = 0;
}

void CXWindowing::MakeModalityEntries(const CXGSPSInfo& info) {
    const bool isSigned = info.pixelRepresentation != 0;
    const std::int32_t firstValue = settings.modalityFirstValue;
    const auto size = static_cast<std::size_t>(settings.modalityEntryCount);
    const RecordLut lut = MakeRecordLut(info.modalityLUTData, info.modalityLUTCount,
                                        info.modalityLUTFirst, /*bits=*/16, isSigned);
    if (!lut.entries.empty()) {
        const std::int64_t start = isSigned ? lut.first - firstValue : lut.first;
        tables.modalityTable = TableFromModalityLut(lut, start, size, info.pixelValueOffset);
        const std::int64_t offset = info.pixelValueOffset;
        SetDomain(SaturateToInt(lut.entries.front() - offset),
                  SaturateToInt(lut.entries.back() - offset));
    } else if (info.rescaleSlope == 0.0) {
        settings.minValue = firstValue;
        settings.maxValue = firstValue + settings.modalityEntryCount - 1;
        settings.modalityEntryCount = 0;
    } else {
        tables.modalityTable = TableFromRescale(info, firstValue, size);
        SetDomain(tables.modalityTable.front(), tables.modalityTable.back());
    }
}

void CXWindowing::SetDomain(std::int32_t oneEnd, std::int32_t otherEnd) noexcept {
    settings.minValue = std::min(oneEnd, otherEnd);
    settings.maxValue = std::max(oneEnd, otherEnd);
}

int CXWindowing::PrepareWindowingTable(CXGSPSInfo* info) {
    const bool isSigned = info->pixelRepresentation != 0;
    const RecordLut voi = MakeRecordLut(info->voiLUTData, info->voiLUTCount, info->voiLUTFirst,
                                        info->voiLUTBits, isSigned);
    if (!voi.entries.empty()) {
        tables.voiTable =
            MakeVoiTable(voi, settings.minValue, static_cast<std::size_t>(settings.tableSize));
    } else {
        TakeWindow(*info);
    }
    const RecordLut presentation =
        MakeRecordLut(info->presentationLUTData, info->presentationLUTCount,
                      info->presentationLUTFirst, info->presentationLUTBits, isSigned);
    if (!presentation.entries.empty()) {
        tables.presentationTable = MakePresentationTable(presentation, settings.minValue);
    } else {
        settings.presentationShape = info->presentationShape;
    }
    return 0;
}

void CXWindowing::TakeWindow(const CXGSPSInfo& info) noexcept {
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
