// RenderRun: the record checked, the memory taken, the table found.
#include "render/job_rules.h"
#include "render/render_run.h"
#include "windowing/table_snapshot.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace quorvex {
namespace {

/// A job of fewer pixels is done before a ramp is found.
constexpr std::int64_t kFewPixels = 65536;

bool HasUsableSizes(const _IMAGE_INFO& info) {
    if (info.imageWidth < 1 || info.imageHeight < 1) return false;
    if (info.outputWidth < 1 || info.outputHeight < 1) return false;
    if (info.outputWidth % kRowAlignment != 0) return false;
    return !IsQuarterTurn(info.rotation) || info.outputHeight % kRowAlignment == 0;
}

bool IsUsable(const _IMAGE_INFO& info) {
    return HasUsableSizes(info) && info.bytesPerPixel > 0 && info.pixels != nullptr &&
           info.output != nullptr && (!SwapsSides(info.rotation) || IsQuarterTurn(info.rotation));
}

CRect CutToImage(const _IMAGE_INFO& info) {
    const int left = std::clamp(info.roi.left, 0, info.imageWidth);
    const int top = std::clamp(info.roi.top, 0, info.imageHeight);
    return {left, top, std::clamp(info.roi.right, left, info.imageWidth),
            std::clamp(info.roi.bottom, top, info.imageHeight)};
}

double HorizontalScale(const _IMAGE_INFO& info) {
    const auto [left, top, right, bottom] = info.roi;
    const double length = SwapsSides(info.rotation) ? static_cast<double>(right) - left
                                                    : static_cast<double>(bottom) - top;
    return info.outputHeight / (length * UsableAspectRatio(info.aspectRatio));
}

struct ValueRange {
    int lowest;
    int highest;
    [[nodiscard]] int Count() const noexcept { return highest - lowest + 1; }
};

/// Every value that a grey pixel can be read as.
ValueRange PixelValues(const _IMAGE_INFO& info) {
    if (info.bytesPerPixel == 1) return {0, UINT8_MAX};
    const bool isSigned = info.lutOffset < 0;
    if (info.bitsStored == 8) {
        return isSigned ? ValueRange{INT8_MIN, INT8_MAX} : ValueRange{0, UINT8_MAX};
    }
    return isSigned ? ValueRange{INT16_MIN, INT16_MAX} : ValueRange{0, UINT16_MAX};
}

std::span<unsigned char> TwoRows(const _IMAGE_INFO& info, int pixelSize,
                                 std::pmr::memory_resource& scratch) {
    const auto rows =
        TakeArray<unsigned char>(scratch, 2 * static_cast<std::size_t>(info.imageWidth) *
                                              static_cast<std::size_t>(pixelSize));
    std::ranges::fill(rows, static_cast<unsigned char>(0));
    return rows;
}

}  // namespace

int RenderRun::Run() {
    const int prepared = PrepareRender();
    if (prepared == kJobDone) ArrangeRender();
    return prepared;
}

int RenderRun::PrepareRender() {
    if (!IsUsable(info_)) return kJobRefused;
    scale_ = HorizontalScale(info_);
    workRoi_ = CutToImage(info_);
    workPixelSize_ = IsColour(info_) ? kColourBytes : 1;
    outputPixelSize_ = IsComposite(info_) ? kColourBytes : workPixelSize_;
    workImage_ = TwoRows(info_, workPixelSize_, scratch_);
    if (IsComposite(info_)) compositeImage_ = TwoRows(info_, kColourBytes, scratch_);
    if (info_.lut == nullptr && !IsColour(info_)) return FetchLut();
    table_ = info_.lut;
    tableFirst_ = info_.lutOffset;
    FindRamp(info_.lutCount);
    return kJobDone;
}

/// Takes the table as it is and widens it to every value that a pixel can have: values outside take
/// its nearest end, so that no pixel reads past it.
int RenderRun::FetchLut() {
    if (info_.windowing == nullptr) return kJobWithoutTable;
    const DisplayTableSnapshot fetched = WindowingReader::DisplayTable(*info_.windowing, scratch_);
    const auto count = static_cast<std::int64_t>(fetched.entries.size());
    if (count == 0) return kJobWithoutTable;
    info_.lutOffset = fetched.first;
    const ValueRange values = PixelValues(info_);
    workLut_ = TakeArray<unsigned char>(scratch_, static_cast<std::size_t>(values.Count()));
    for (std::int64_t i = 0; i < values.Count(); ++i) {
        const auto place =
            std::clamp<std::int64_t>(values.lowest + i - fetched.first, 0, count - 1);
        workLut_[static_cast<std::size_t>(i)] = fetched.entries[static_cast<std::size_t>(place)];
    }
    info_.lut = workLut_.data();
    table_ = workLut_.data();
    tableFirst_ = values.lowest;
    FindRamp(values.Count());
    return kJobDone;
}

void RenderRun::FindRamp(int tableCount) {
    const bool hasEveryWord =
        tableCount >= static_cast<int>(kWords) && (tableFirst_ == 0 || tableFirst_ == INT16_MIN);
    if (info_.bytesPerPixel != 2 || info_.bitsStored == 8 || !hasEveryWord) return;
    if (std::int64_t{workRoi_.Width()} * workRoi_.Height() < kFewPixels) return;
    ramp_ = RampOfTable(std::span<const std::uint8_t, kWords>(table_, kWords),
                        static_cast<std::uint16_t>(tableFirst_));
}

}  // namespace quorvex
