#include "presentation/displayed_area.h"

#include "foundation/dicom/model/attributes.h"
#include "presentation/reference_matching.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace quorvex {
namespace {

/// First value over second one, where both are usable lengths.
std::optional<double> ReadRatio(const CDcmObjectCommon& object, std::uint32_t tag) {
    const auto pair = ReadPair<double>(object, tag);
    const auto isLength = [](double value) { return std::isfinite(value) && value > 0.0; };
    if (!pair || !isLength(pair->first) || !isLength(pair->second)) return std::nullopt;
    return pair->first / pair->second;
}

SizeMode ReadMode(const CDcmItem& item) {
    const CString word = Read<CString>(item, tag::kPresentationSizeMode).value_or(CString());
    if (word.CompareNoCase("MAGNIFY") == 0) return SizeMode::kMagnify;
    return word.CompareNoCase("TRUE SIZE") == 0 ? SizeMode::kTrueSize : SizeMode::kScaleToFit;
}

std::optional<DisplayedAreaSelection> ReadArea(const CDcmItem& item) {
    const auto one = ReadPair<int>(item, tag::kDisplayedAreaTopLeftHandCorner);
    const auto other = ReadPair<int>(item, tag::kDisplayedAreaBottomRightHandCorner);
    if (!one || !other) return std::nullopt;
    DisplayedAreaSelection area;
    std::tie(area.left, area.right) = std::minmax(one->first, other->first);
    std::tie(area.top, area.bottom) = std::minmax(one->second, other->second);
    area.mode = ReadMode(item);
    const auto factor = Read<double>(item, tag::kPresentationPixelMagnificationRatio);
    if (factor && std::isfinite(*factor) && *factor > 0.0) area.magnification = *factor;
    area.aspect = ReadRatio(item, tag::kPresentationPixelSpacing);
    if (area.aspect) {
        area.columnSpacing = ReadPair<double>(item, tag::kPresentationPixelSpacing)
                                 .value_or(ValuePair<double>{})
                                 .second;
    } else {
        area.aspect = ReadRatio(item, tag::kPresentationPixelAspectRatio);
    }
    return area;
}

}  // namespace

std::optional<DisplayedAreaSelection> ReadDisplayedArea(const CDcmObject& state,
                                                        const CString& imageUID,
                                                        std::int32_t frameNumber) {
    std::optional<DisplayedAreaSelection> found;
    ForEachItem(state, tag::kDisplayedAreaSelectionSequence, [&](const CDcmItem& item) {
        if (!found && AppliesTo(item, imageUID, frameNumber)) found = ReadArea(item);
    });
    return found;
}

double ReadPixelAspect(const CDcmObject& header) {
    for (const auto tag : {tag::kPixelAspectRatio, tag::kPixelSpacing, tag::kImagerPixelSpacing,
                           tag::kNominalScannedPixelSpacing}) {
        if (const auto ratio = ReadRatio(header, tag)) return *ratio;
    }
    return 1.0;
}

}  // namespace quorvex
