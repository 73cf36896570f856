#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/types/saturate.h"
#include "presentation/reference_matching.h"
#include "quorvex/CXGSPSObject.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace quorvex {
namespace {

constexpr std::u16string_view kBlanks = u" \t\n\v\f\r";

/// The number that a text begins with, after blanks: sign and digits up to the first other
/// character, so that a fraction is cut. 0 without digits.
std::int32_t LeadingWholeNumber(const CString& text) noexcept {
    std::u16string_view digits = text.View();
    digits.remove_prefix(std::min(digits.find_first_not_of(kBlanks), digits.size()));
    const bool isNegative = digits.starts_with(u'-');
    if (isNegative || digits.starts_with(u'+')) digits.remove_prefix(1);
    double value = 0.0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9') break;
        value = value * 10.0 + (digit - u'0');
    }
    return TruncateToInt(isNegative ? -value : value);
}

void TakeWindow(CXGSPSInfo& info, std::int32_t center, std::int32_t width) noexcept {
    info.windowCenter = center;
    info.windowWidth = width;
    info.voiLUTData = nullptr;
}

void TakeNothing(CXGSPSInfo& info) noexcept {
    info.voiLUTData = nullptr;
    info.windowWidth = 0;
}

}  // namespace

int CXGSPSObject::TakeVOILUT(CDcmItem* item, CXGSPSInfo* info) {
    unsigned short count = 0;
    unsigned short bits = 0;
    if (GetLUTData(item, count, info->voiLUTFirst, bits, info->voiLUTData) == 0) return 0;
    info->voiLUTCount = count;
    info->voiLUTBits = bits;
    return 1;
}

int CXGSPSObject::GetVOILUT(CDcmObject* object, CXGSPSInfo* info) {
    if (!imageUID.IsEmpty()) return GetSoftcopyVOILUT(object, info);
    if (auto item = Read<CDcmItem>(*object, tag::kVOILUTSequence)) return TakeVOILUT(&*item, info);
    if (const auto center = Read<double>(*object, tag::kWindowCenter)) {
        const auto width = Read<double>(*object, tag::kWindowWidth).value_or(0.0);
        TakeWindow(*info, TruncateToInt(*center), TruncateToInt(width));
        return 1;
    }
    TakeNothing(*info);
    return 0;
}

int CXGSPSObject::GetSoftcopyVOILUT(CDcmObject* object, CXGSPSInfo* info) {
    if (!Read<CDcmItem>(*object, tag::kSoftcopyVOILUTSequence)) {
        TakeNothing(*info);
        return 0;
    }
    const unsigned short* const fromCaller = info->voiLUTData;
    ForEachItem(*object, tag::kSoftcopyVOILUTSequence, [&](const CDcmItem& item) {
        if (!AppliesTo(item, imageUID, frameNumber)) return;
        unsigned short* const former = info->voiLUTData;
        ProcessVOISequence(item, info);
        // A LUT of an earlier item of this walk has no other owner.
        const bool isReplaced = former != info->voiLUTData && former != fromCaller;
        const std::unique_ptr<unsigned short[]> released(isReplaced ? former : nullptr);
    });
    return 1;
}

int CXGSPSObject::ProcessVOISequence(CDcmItem item, CXGSPSInfo* info) {
    if (const auto center = Read<CString>(item, tag::kWindowCenter)) {
        const auto width = Read<unsigned short>(item, tag::kWindowWidth).value_or(0);
        TakeWindow(*info, LeadingWholeNumber(*center), width);
        return 1;
    }
    if (auto lut = Read<CDcmItem>(item, tag::kVOILUTSequence)) return TakeVOILUT(&*lut, info);
    return 1;
}

}  // namespace quorvex
