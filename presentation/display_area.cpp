#include "foundation/dicom/model/attributes.h"
#include "presentation/displayed_area.h"
#include "presentation/presentation_reader.h"
#include "presentation/reference_matching.h"
#include "presentation/words.h"

namespace quorvex {
namespace {

/// A word that is not known leaves the mode as it is.
void ReadSizeMode(const CDcmItem& item, CXGSPSInfo& info) {
    const auto word = Read<CString>(item, tag::kPresentationSizeMode);
    if (!word) return;
    info.presentationSizeMode = PlaceOf(*word, kSizeModeWords).value_or(info.presentationSizeMode);
}

void ReadSpacing(const CDcmObjectCommon& object, std::uint32_t spacingTag, CXGSPSInfo& info) {
    const auto spacing = ReadPair<double>(object, spacingTag);
    info.pixelSpacingX = spacing ? spacing->second : 0.0;
    if (spacing) info.pixelSpacingY = spacing->first;
}

/// False without the attribute; the record then stays as it is.
template <class Number>
bool ReadAspect(const CDcmObjectCommon& object, std::uint32_t aspectTag, CXGSPSInfo& info) {
    const auto aspect = ReadPair<Number>(object, aspectTag);
    if (!aspect) return false;
    info.pixelAspectHorizontal = aspect->second;
    info.pixelAspectVertical = aspect->first;
    return true;
}

void SetEvenAspect(CXGSPSInfo& info) noexcept {
    info.pixelAspectHorizontal = 1.0;
    info.pixelAspectVertical = 1.0;
}

void ShowWholeImage(CXGSPSInfo& info) noexcept {
    info.displayedAreaLeft = 0;
    info.displayedAreaTop = 0;
    info.displayedAreaRight = 0;
    info.displayedAreaBottom = 0;
    info.presentationSizeMode = 0;
    info.presentationMagnification = 1.0;
}

}  // namespace

/// A rotation without a flip attribute is not taken.
void PresentationReader::GetSpatialTransformation() {
    info_.imageRotation = 0;
    info_.imageHorizontalFlip = 0;
    const auto flip = Read<CString>(object_, tag::kImageHorizontalFlip);
    if (!flip) return;
    info_.imageRotation = Read<unsigned short>(object_, tag::kImageRotation).value_or(0);
    info_.imageHorizontalFlip = *flip == CString("Y") ? 1 : 0;
}

void PresentationReader::GetDisplayTransformation() {
    if (IsForImage()) {
        ShowWholeImage(info_);
        ReadSpacing(object_, tag::kPixelSpacing, info_);
        if (!ReadAspect<int>(object_, tag::kPixelAspectRatio, info_)) SetEvenAspect(info_);
        return;
    }
    if (!Read<CDcmItem>(object_, tag::kDisplayedAreaSelectionSequence)) {
        ShowWholeImage(info_);
        SetEvenAspect(info_);
        info_.pixelSpacingX = 0.0;
        return;
    }
    ForEachItem(object_, tag::kDisplayedAreaSelectionSequence, [&](const CDcmItem& item) {
        if (AppliesTo(item, imageUID_, frameNumber_)) ProcessDisplaySequence(item);
    });
}

void PresentationReader::GetPixelShape() {
    GetDisplayTransformation();
    const bool hasSpacing = info_.pixelSpacingX > 0.0 && info_.pixelSpacingY > 0.0;
    const bool isEven = info_.pixelAspectVertical == info_.pixelAspectHorizontal;
    if (hasSpacing || !isEven) return;
    info_.pixelAspectVertical = ReadPixelAspect(object_);
    info_.pixelAspectHorizontal = 1.0;
}

void PresentationReader::ProcessDisplaySequence(const CDcmItem& item) {
    if (const auto topLeft = ReadPair<int>(item, tag::kDisplayedAreaTopLeftHandCorner)) {
        info_.displayedAreaLeft = topLeft->first;
        info_.displayedAreaTop = topLeft->second;
    }
    if (const auto bottomRight = ReadPair<int>(item, tag::kDisplayedAreaBottomRightHandCorner)) {
        info_.displayedAreaRight = bottomRight->first;
        info_.displayedAreaBottom = bottomRight->second;
    }
    ReadSizeMode(item, info_);
    ReadSpacing(item, tag::kPresentationPixelSpacing, info_);
    ReadAspect<double>(item, tag::kPresentationPixelAspectRatio, info_);
    info_.presentationMagnification = Read<double>(item, tag::kPresentationPixelMagnificationRatio)
                                          .value_or(info_.presentationMagnification);
}

}  // namespace quorvex
