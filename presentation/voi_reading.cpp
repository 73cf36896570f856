#include "foundation/dicom/model/attributes.h"
#include "foundation/types/saturate.h"
#include "presentation/presentation_reader.h"
#include "presentation/reference_matching.h"

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

/// The window with its fractions and what is said of it.
void TakeExactWindow(const CDcmObjectCommon& object, CXGSPSInfo& info) {
    info.exactWindowCenter = Read<double>(object, tag::kWindowCenter).value_or(0.0);
    info.exactWindowWidth = Read<double>(object, tag::kWindowWidth).value_or(0.0);
    info.windowFunction = Read<CString>(object, tag::kVOILUTFunction).value_or(CString());
    info.windowExplanation =
        Read<CString>(object, tag::kWindowCenterWidthExplanation).value_or(CString());
}

void TakeWindow(const CDcmObjectCommon& object, CXGSPSInfo& info, std::int32_t center,
                std::int32_t width) {
    TakeExactWindow(object, info);
    info.windowCenter = center;
    info.windowWidth = width;
    info.voiLUTData = nullptr;
}

void TakeNothing(CXGSPSInfo& info) noexcept {
    info.voiLUTData = nullptr;
    info.windowWidth = 0;
    info.exactWindowWidth = 0.0;
}

}  // namespace

std::int32_t PresentationReader::WholeCenterOf(const CString& text) noexcept {
    return LeadingWholeNumber(text);
}

void PresentationReader::TakeVOILUT(const CDcmItem& item) {
    auto lut = GetLUTData(item);
    if (!lut) return;
    info_.voiLUTCount = lut->count;
    info_.voiLUTFirst = lut->first;
    info_.voiLUTBits = lut->bits;
    info_.voiLUTData = lut->data.release();
}

/// An image's table wins over its window.
void PresentationReader::GetVOILUT() {
    if (!IsForImage()) return GetSoftcopyVOILUT();
    if (const auto lut = Read<CDcmItem>(object_, tag::kVOILUTSequence)) return TakeVOILUT(*lut);
    const auto center = Read<double>(object_, tag::kWindowCenter);
    if (!center) return TakeNothing(info_);
    const double width = Read<double>(object_, tag::kWindowWidth).value_or(0.0);
    TakeWindow(object_, info_, TruncateToInt(*center), TruncateToInt(width));
}

void PresentationReader::GetSoftcopyVOILUT() {
    if (!Read<CDcmItem>(object_, tag::kSoftcopyVOILUTSequence)) return TakeNothing(info_);
    const unsigned short* const fromCaller = info_.voiLUTData;
    ForEachItem(object_, tag::kSoftcopyVOILUTSequence, [&](const CDcmItem& item) {
        if (!AppliesTo(item, imageUID_, frameNumber_)) return;
        unsigned short* const former = info_.voiLUTData;
        ProcessVOISequence(item);
        // A table of an earlier item of this walk has no other owner.
        const bool isReplaced = former != info_.voiLUTData && former != fromCaller;
        const std::unique_ptr<unsigned short[]> released(isReplaced ? former : nullptr);
    });
}

/// A state's window wins over its table.
void PresentationReader::ProcessVOISequence(const CDcmItem& item) {
    if (const auto center = Read<CString>(item, tag::kWindowCenter)) {
        const double width = Read<double>(item, tag::kWindowWidth).value_or(0.0);
        return TakeWindow(item, info_, WholeCenterOf(*center), TruncateToInt(width));
    }
    if (const auto lut = Read<CDcmItem>(item, tag::kVOILUTSequence)) TakeVOILUT(*lut);
}

}  // namespace quorvex
