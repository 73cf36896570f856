#include "presentation/mask_subtraction.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"

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
    ForEachPair<unsigned short>(item, tag::kApplicableFrameRange,
                                [&](const ValuePair<unsigned short>& range) {
                                    if (filled < count)
                                        ranges[filled++] = {range.first, range.second};
                                });
    info.maskFrameRangeCount = static_cast<std::int32_t>(count);
    info.maskFrameRanges = ranges.release();
}

void ReadMaskFrames(const CDcmItem& item, CXGSPSInfo& info) {
    unsigned short number = 0;
    auto result = item.GetValue(tag::kMaskFrameNumbers, number);
    if (result != kDcmSuccess) return;
    const std::size_t count = CountValues(item, tag::kMaskFrameNumbers);
    auto numbers = std::make_unique<std::uint16_t[]>(count);
    for (std::size_t i = 0; i < count && result == kDcmSuccess; ++i) {
        numbers[i] = number;
        result = item.GetNextValue(tag::kMaskFrameNumbers, number);
    }
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

int CXGSPSObject::GetMask(CDcmObject* object, CXGSPSInfo* info) {
    ReadMaskSubtraction(*object, *info);
    return 1;
}

void ReadMaskSubtraction(const CDcmObject& object, CXGSPSInfo& info) {
    const auto item = Read<CDcmItem>(object, tag::kMaskSubtractionSequence);
    if (!item) return;
    ReadFrameRanges(*item, info);
    ReadOperation(*item, info);
    info.contrastFrameAveraging = Read<unsigned short>(*item, tag::kContrastFrameAveraging)
                                      .value_or(info.contrastFrameAveraging);
    ReadSubPixelShift(*item, info);
    info.recommendedViewingMode =
        Read<CString>(object, tag::kRecommendedViewingMode).value_or(info.recommendedViewingMode);
}

}  // namespace quorvex
