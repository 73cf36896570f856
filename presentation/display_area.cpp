#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "presentation/reference_matching.h"
#include "quorvex/CXGSPSObject.h"

namespace quorvex {
namespace {

struct SizeMode {
    const char* word;
    std::int32_t mode;
};
constexpr SizeMode kSizeModes[] = {{"SCALE TO FIT", 0}, {"TRUE SIZE", 1}, {"MAGNIFY", 2}};

void ReadSizeMode(const CDcmItem& item, CXGSPSInfo& info) {
    for (const SizeMode& known : kSizeModes) {
        if (TextIs(item, tag::kPresentationSizeMode, known.word)) {
            info.presentationSizeMode = known.mode;
        }
    }
}

void ReadSpacing(const CDcmObjectCommon& object, std::uint32_t spacingTag, CXGSPSInfo& info) {
    const auto spacing = ReadPair<double>(object, spacingTag);
    info.pixelSpacingX = spacing ? spacing->second : 0.0;
    if (spacing) info.pixelSpacingY = spacing->first;
}

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

int CXGSPSObject::GetSpatialTransformation(CDcmObject* object, CXGSPSInfo* info) {
    const auto flip = Read<CString>(*object, tag::kImageHorizontalFlip);
    if (!flip) {
        info->imageRotation = 0;
        info->imageHorizontalFlip = 0;
        return 0;
    }
    info->imageRotation = Read<unsigned short>(*object, tag::kImageRotation).value_or(0);
    info->imageHorizontalFlip = *flip == CString("Y") ? 1 : 0;
    return 1;
}

int CXGSPSObject::GetDisplayTransformation(CDcmObject* object, CXGSPSInfo* info) {
    if (imageUID.IsEmpty()) {
        ShowWholeImage(*info);
        ReadSpacing(*object, tag::kPixelSpacing, *info);
        if (!ReadAspect<int>(*object, tag::kPixelAspectRatio, *info)) SetEvenAspect(*info);
        return 1;
    }
    if (!Read<CDcmItem>(*object, tag::kDisplayedAreaSelectionSequence)) {
        ShowWholeImage(*info);
        SetEvenAspect(*info);
        info->pixelSpacingX = 0.0;
        return 0;
    }
    ForEachItem(*object, tag::kDisplayedAreaSelectionSequence, [&](const CDcmItem& item) {
        if (AppliesTo(item, imageUID, frameNumber)) ProcessDisplaySequence(item, info);
    });
    return 1;
}

int CXGSPSObject::ProcessDisplaySequence(CDcmItem item, CXGSPSInfo* info) {
    if (const auto topLeft = ReadPair<int>(item, tag::kDisplayedAreaTopLeftHandCorner)) {
        info->displayedAreaLeft = topLeft->first;
        info->displayedAreaTop = topLeft->second;
    }
    if (const auto bottomRight = ReadPair<int>(item, tag::kDisplayedAreaBottomRightHandCorner)) {
        info->displayedAreaRight = bottomRight->first;
        info->displayedAreaBottom = bottomRight->second;
    }
    ReadSizeMode(item, *info);
    ReadSpacing(item, tag::kPresentationPixelSpacing, *info);
    ReadAspect<double>(item, tag::kPresentationPixelAspectRatio, *info);
    if (const auto ratio = Read<double>(item, tag::kPresentationPixelMagnificationRatio)) {
        info->presentationMagnification = *ratio;
    }
    return 1;
}

}  // namespace quorvex
