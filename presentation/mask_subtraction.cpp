#include "foundation/dicom/model/attributes.h"
#include "presentation/presentation_reader.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace quorvex {
namespace {

std::size_t CountValues(const CDcmItem& item, std::uint32_t valueTag) {
    int count = 0;
    item.GetValueCount(valueTag, count);
    return static_cast<std::size_t>(std::max(count, 0));
}

void ReadFrameRanges(const CDcmItem& item, CXGSPSInfo& info) {
    if (!Read<unsigned short>(item, tag::kApplicableFrameRange)) return;
    const std::size_t count = CountValues(item, tag::kApplicableFrameRange) / 2;
    auto ranges = std::make_unique<GSPSFrameRange[]>(count);
    std::size_t filled = 0;
    ForEachPair<unsigned short>(item, tag::kApplicableFrameRange, [&](const auto& range) {
        if (filled < count) ranges[filled++] = {range.first, range.second};
    });
    info.maskFrameRangeCount = static_cast<std::int32_t>(count);
    info.maskFrameRanges = ranges.release();
}

void ReadMaskFrames(const CDcmItem& item, CXGSPSInfo& info) {
    if (!Read<unsigned short>(item, tag::kMaskFrameNumbers)) return;
    const std::size_t count = CountValues(item, tag::kMaskFrameNumbers);
    auto numbers = std::make_unique<std::uint16_t[]>(count);
    std::size_t filled = 0;
    ForEachValue<unsigned short>(item, tag::kMaskFrameNumbers, [&](unsigned short number) {
        if (filled < count) numbers[filled++] = number;
    });
    info.maskFrameCount = static_cast<std::int32_t>(count);
    info.maskFrameNumbers = numbers.release();
}

void ReadOperation(const CDcmItem& item, CXGSPSInfo& info) {
    if (TextIs(item, tag::kMaskOperation, "AVG_SUB")) {
        ReadMaskFrames(item, info);
    } else if (TextIs(item, tag::kMaskOperation, "TID")) {
        info.tidOffset = Read<short>(item, tag::kTIDOffset).value_or(info.tidOffset);
    }
}

void ReadSubPixelShift(const CDcmItem& item, CXGSPSInfo& info) {
    const auto row = Read<float>(item, tag::kMaskSubPixelShift);
    if (!row) return;
    info.maskSubPixelShiftRow = *row;
    float column = 0.0F;
    if (item.GetNextValue(tag::kMaskSubPixelShift, column) == kDcmSuccess) {
        info.maskSubPixelShiftColumn = column;
    }
}

}  // namespace

void PresentationReader::GetMask() {
    const auto item = Read<CDcmItem>(object_, tag::kMaskSubtractionSequence);
    if (!item) return;
    ReadFrameRanges(*item, info_);
    ReadOperation(*item, info_);
    info_.contrastFrameAveraging = Read<unsigned short>(*item, tag::kContrastFrameAveraging)
                                       .value_or(info_.contrastFrameAveraging);
    ReadSubPixelShift(*item, info_);
    info_.recommendedViewingMode =
        Read<CString>(object_, tag::kRecommendedViewingMode).value_or(info_.recommendedViewingMode);
}

}  // namespace quorvex
