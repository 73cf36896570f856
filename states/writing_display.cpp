#include "foundation/dicom/model/tags.h"
#include "presentation/words.h"
#include "states/attribute_writing.h"
#include "states/shutter_writing.h"
#include "states/state_writer.h"

#include <cstddef>
#include <iterator>
#include <utility>

namespace quorvex {
namespace {

void WriteArea(const CXGSPSInfo& info, CDcmItem& item) {
    WritePair(item, tag::kDisplayedAreaTopLeftHandCorner, info.displayedAreaLeft,
              info.displayedAreaTop);
    WritePair(item, tag::kDisplayedAreaBottomRightHandCorner, info.displayedAreaRight,
              info.displayedAreaBottom);
    item.SetValue(tag::kPresentationSizeMode,
                  WordAt(info.presentationSizeMode, kSizeModeWords, kSizeModeWords[0]));
    WritePair(item, tag::kPresentationPixelSpacing, info.pixelSpacingY, info.pixelSpacingX);
    WritePair(item, tag::kPresentationPixelAspectRatio, info.pixelAspectVertical,
              info.pixelAspectHorizontal);
    item.SetValue(tag::kPresentationPixelMagnificationRatio, info.presentationMagnification);
}

/// By `shutterType`, in the order of the shapes' words. A bitmap is not written.
constexpr void (*kShutterWriters[])(const CXGSPSInfo&, CDcmObject&) = {WriteRectangle, WriteCircle,
                                                                       WritePolygon};
constexpr std::int32_t kNoShutter = -1;

}  // namespace

void StateWriter::SetDisplayedAreaModule() {
    ValueWriter areas(target_, tag::kDisplayedAreaSelectionSequence);
    for (const CXGSPSInfo* info : infos_) {
        CDcmItem item = ItemForImage(*info);
        WriteArea(*info, item);
        areas.Add(std::move(item));
    }
}

void StateWriter::SetDisplayShutterModule() {
    if (first_.shutterType == kNoShutter) return;
    const auto type = static_cast<std::size_t>(first_.shutterType);
    const bool isShape = type < std::size(kShutterWriters);
    target_.SetValue(tag::kShutterShape, isShape ? kShutterWords[type] : "");
    if (isShape) kShutterWriters[type](first_, target_);
    target_.SetValue(tag::kShutterPresentationValue, first_.shutterPresentationValue);
}

void StateWriter::SetSpatialTransformationModule() {
    target_.SetValue(tag::kImageRotation, first_.imageRotation);
    target_.SetValue(tag::kImageHorizontalFlip, YesOrNo(first_.imageHorizontalFlip));
}

}  // namespace quorvex
