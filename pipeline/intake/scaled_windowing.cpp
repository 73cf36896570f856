#include "pipeline/intake/scaled_windowing.h"

#include "foundation/types/saturate.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/record_luts.h"
#include "windowing/window_arithmetic.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvex {

namespace {

constexpr int kBitsOfByte = 8;

struct ElementWindow {
    int level = 0;
    int width = 0;
};

// Over a range of two values the usual full-range window shows both white.
void ShowBitsBlackAndWhite(CXGSPSInfo& record) {
    if (record.voiLUTData != nullptr || record.windowWidth != 0) return;
    record.windowCenter = 1;
    record.windowWidth = 1;
}

// A value counts as the element that it lies a rounding error short of.
int WholeElements(double elements) noexcept {
    constexpr double kRoundingError = 1e-6;
    return TruncateToInt(elements + std::copysign(kRoundingError, elements));
}

// A window so wide that it is flat over all elements may have any width that it is flat with.
ElementWindow FlatWindow(const ValueWindow& window, const ValueScale& scale,
                         double width) noexcept {
    const double place = (window.level - scale.offset) / window.width;
    return {TruncateToInt(place * width), TruncateToInt(width)};
}

ElementWindow ToElements(const ValueWindow& window, const ValueScale& scale) noexcept {
    constexpr double kWidest = 1 << 30;
    const double width = window.width / scale.step;
    if (std::abs(width) > kWidest) return FlatWindow(window, scale, std::copysign(kWidest, width));
    const int level = WholeElements((window.level - scale.offset) / scale.step);
    const int wholeWidth = WholeElements(width);
    if (wholeWidth != 0 || width == 0.0) return {level, wholeWidth};
    return {level, width > 0.0 ? 1 : -1};
}

/// Whether the elements are bytes that are shown as they are where nothing else is asked for.
bool AreElementsBytes(const CXGSPSInfo& record, const WindowedFrame& frame) {
    return frame.scale.IsFractional() && record.pixelBitDepth == kBitsOfByte &&
           frame.range.domainLow >= 0 && frame.range.domainHigh < kByteWidth;
}

ValueWindow FullRangeWindow(const WindowedFrame& frame) {
    const auto [low, high] = frame.fullRange;
    if (low == high) return {kFallbackLevel, kFallbackWidth};
    const double level = (low + high) / 2.0;
    return {frame.scale.IsFractional() ? level : std::trunc(level), high - low};
}

ValueWindow WindowOf(const CXGSPSInfo& record, const WindowedFrame& frame) {
    const ValueScale& scale = frame.scale;
    if (record.windowWidth != 0) {
        return {static_cast<double>(record.windowCenter) - record.pixelValueOffset,
                static_cast<double>(record.windowWidth)};
    }
    if (frame.bitsStored == 1) return {scale.ValueOf(1), scale.step};
    if (AreElementsBytes(record, frame)) {
        return {scale.ValueOf(kByteLevel), kByteWidth * scale.step};
    }
    return FullRangeWindow(frame);
}

// A VOI LUT has entries for whole values: those of fractions are cut off as in the modality stage.
std::int64_t WholeValue(std::int64_t element, const ValueScale& scale) noexcept {
    const double value = scale.ValueOf(element);
    return TruncateToInt64(scale.IsFractional() ? value : std::round(value));
}

std::uint8_t VoiByte(const RecordLut& lut, std::int64_t index) noexcept {
    if (index <= 0) return lut.ByteOfWord(0);
    const std::int64_t last = lut.Count() - 1;
    return index < last ? lut.ByteAt(index) : lut.ByteOfWord(last);
}

/// The VOI LUT of the record laid over all elements of the domain, as 16-bit entries; empty without
/// one.
std::vector<std::uint16_t> VoiEntries(const CXGSPSInfo& record, const WindowedFrame& frame) {
    const RecordLut lut = MakeRecordLut(record.voiLUTData, record.voiLUTCount, record.voiLUTFirst,
                                        record.voiLUTBits, record.pixelRepresentation != 0);
    std::vector<std::uint16_t> entries;
    if (lut.words.empty()) return entries;
    entries.reserve(
        static_cast<std::size_t>(std::int64_t{frame.range.domainHigh} - frame.range.domainLow + 1));
    for (std::int64_t element = frame.range.domainLow; element <= frame.range.domainHigh;
         ++element) {
        const unsigned byte = VoiByte(lut, WholeValue(element, frame.scale) - lut.first);
        entries.push_back(static_cast<std::uint16_t>(byte << kBitsOfByte));
    }
    return entries;
}

/// The presentation stage of the record, for a record that lives no longer than it.
void SharePresentation(CXGSPSInfo& own, const CXGSPSInfo& record) {
    own.pixelBitDepth = record.pixelBitDepth;
    own.pixelRepresentation = record.pixelRepresentation;
    own.presentationLUTData = record.presentationLUTData;
    own.presentationLUTFirst = record.presentationLUTFirst;
    own.presentationLUTCount = record.presentationLUTCount;
    own.presentationLUTBits = record.presentationLUTBits;
    own.presentationShape = record.presentationShape;
}

}  // namespace

std::optional<ValueWindow> PrepareWindowing(CXWindowing& windowing, CXGSPSInfo& record,
                                            const WindowedFrame& frame) {
    const int low = frame.range.domainLow;
    const int high = frame.range.domainHigh;
    if (frame.scale.IsPlain()) {
        if (frame.bitsStored == 1) ShowBitsBlackAndWhite(record);
        windowing.PrepareGSPSProcessing2(&record, low, high);
        return std::nullopt;
    }
    const ValueWindow window = WindowOf(record, frame);
    const auto [level, width] = ToElements(window, frame.scale);
    auto voi = VoiEntries(record, frame);
    CXGSPSInfo own;
    SharePresentation(own, record);
    own.windowCenter = level;
    own.windowWidth = width;
    if (!voi.empty()) {
        own.voiLUTData = voi.data();
        own.voiLUTFirst = static_cast<std::uint16_t>(low);
        own.voiLUTCount = static_cast<std::int32_t>(voi.size());
        own.voiLUTBits = 2 * kBitsOfByte;
    }
    windowing.PrepareGSPSProcessing2(&own, low, high);
    return window;
}

bool PutWindow(CXWindowing& windowing, const ValueWindow& window, const ValueScale& scale) {
    const auto [level, width] = ToElements(window, scale);
    int widthAndLevel[] = {width, level};
    return windowing.SetValue(CXWindowing::kWindow, widthAndLevel, nullptr) == 0;
}

}  // namespace quorvex
