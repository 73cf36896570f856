#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"
#include "states/attribute_writing.h"

#include <span>

namespace quorvex {
namespace {

const char* SizeModeWord(std::int32_t mode) {
    return mode == 1 ? "TRUE SIZE" : mode == 2 ? "MAGNIFY" : "SCALE TO FIT";
}

void WriteArea(const CXGSPSInfo& info, CDcmItem& item) {
    WritePair(item, tag::kDisplayedAreaTopLeftHandCorner, info.displayedAreaLeft,
              info.displayedAreaTop);
    WritePair(item, tag::kDisplayedAreaBottomRightHandCorner, info.displayedAreaRight,
              info.displayedAreaBottom);
    item.SetValue(tag::kPresentationSizeMode, SizeModeWord(info.presentationSizeMode));
    WritePair(item, tag::kPresentationPixelSpacing, info.pixelSpacingY, info.pixelSpacingX);
    WritePair(item, tag::kPresentationPixelAspectRatio, info.pixelAspectVertical,
              info.pixelAspectHorizontal);
    item.SetValue(tag::kPresentationPixelMagnificationRatio, info.presentationMagnification);
}

void WriteRectangle(const CXGSPSInfo& info, CDcmObject& target) {
    target.SetValue(tag::kShutterShape, "RECTANGULAR");
    target.SetValue(tag::kShutterLeftVerticalEdge, info.shutterLeft);
    target.SetValue(tag::kShutterRightVerticalEdge, info.shutterRight);
    target.SetValue(tag::kShutterUpperHorizontalEdge, info.shutterUpper);
    target.SetValue(tag::kShutterLowerHorizontalEdge, info.shutterLower);
}

void WriteCircle(const CXGSPSInfo& info, CDcmObject& target) {
    target.SetValue(tag::kShutterShape, "CIRCULAR");
    WritePair(target, tag::kCenterOfCircularShutter, info.shutterCenterRow,
              info.shutterCenterColumn);
    target.SetValue(tag::kRadiusOfCircularShutter, info.shutterRadius);
}

void WritePolygon(const CXGSPSInfo& info, CDcmObject& target) {
    target.SetValue(tag::kShutterShape, "POLYGONAL");
    bool isFirst = true;
    for (const CPoint& vertex : info.shutterVertices) {
        if (std::exchange(isFirst, false)) {
            WritePair(target, tag::kVerticesOfThePolygonalShutter, vertex.y, vertex.x);
        } else {
            target.SetNextValue(tag::kVerticesOfThePolygonalShutter, vertex.y);
            target.SetNextValue(tag::kVerticesOfThePolygonalShutter, vertex.x);
        }
    }
}

void WriteNoShape(const CXGSPSInfo&, CDcmObject& target) {
    target.SetValue(tag::kShutterShape, "");
}

using ShutterWriter = void (*)(const CXGSPSInfo&, CDcmObject&);
constexpr ShutterWriter kShutterWriters[] = {WriteRectangle, WriteCircle, WritePolygon};
constexpr std::int32_t kNoShutter = -1;

}  // namespace

int CXGSPSObject::SetDisplayedAreaModule(CXGSPSInfo** infos, int count, CDcmObject* target) {
    SequenceWriter areas(*target, tag::kDisplayedAreaSelectionSequence);
    for (const CXGSPSInfo* info : std::span(infos, static_cast<std::size_t>(count))) {
        CDcmItem item = ItemForImage(*info);
        WriteArea(*info, item);
        areas.Add(item);
    }
    return 1;
}

int CXGSPSObject::SetDisplayShutterModule(CXGSPSInfo* info, CDcmObject* target) {
    if (info->shutterType == kNoShutter) return 0;
    const auto type = static_cast<std::size_t>(info->shutterType);
    (type < std::size(kShutterWriters) ? kShutterWriters[type] : WriteNoShape)(*info, *target);
    target->SetValue(tag::kShutterPresentationValue, info->shutterPresentationValue);
    return 1;
}

int CXGSPSObject::SetBitmapDisplayShutterModule(CXGSPSInfo*, CDcmObject*) {
    return 1;
}

int CXGSPSObject::SetSpatialTransformationModule(CXGSPSInfo* info, CDcmObject* target) {
    target->SetValue(tag::kImageRotation, info->imageRotation);
    target->SetValue(tag::kImageHorizontalFlip, info->imageHorizontalFlip != 0 ? "Y" : "N");
    return 1;
}

}  // namespace quorvex
