#include "pipeline/recipe/callers_pixels.h"

#include "foundation/dicom/model/attributes.h"
#include "pipeline/displayed_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/recipe/standard_incoming.h"
#include "pipeline/recipe/standard_overlays.h"
#include "quorvex/CLData.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

bool IsUsable(double length) {
    return length > 0.0;
}

double AspectOf(const CLData& data) {
    if (IsUsable(data.aspectRatioHorizontal) && IsUsable(data.aspectRatioVertical)) {
        return data.aspectRatioVertical / data.aspectRatioHorizontal;
    }
    const bool hasSpacing = IsUsable(data.pixelSpacingX) && IsUsable(data.pixelSpacingY);
    return hasSpacing ? data.pixelSpacingY / data.pixelSpacingX : 1.0;
}

void DescribeVolume(StandardIncoming& incoming, const CLData& data) {
    StandardImage& image = incoming.image;
    const auto window = MakeWindow(data.windowCenter, data.windowWidth, VoiFunction::kLinear);
    if (window) image.own.voi.windows.push_back({*window, CString()});
    image.own.presentation.isInverse =
        data.photometricInterpretation.CompareNoCase("MONOCHROME1") == 0;
    image.aspect = AspectOf(data);
    auto record = NewRecord(incoming.size);
    record->pixelSpacingX = data.pixelSpacingX;
    record->pixelSpacingY = data.pixelSpacingY;
    incoming.record = std::move(record);
}

void DescribeObject(StandardIncoming& incoming, const CDcmObject& object) {
    StandardImage& image = incoming.image;
    image.own = ReadImageStages(object, image.form);
    image.own.modality = {};
    image.padding = ReadPadding(object, image.form);
    image.aspect = ReadPixelAspect(object);
    incoming.record = ReadViewRecord(object, incoming.size, CString(), image.frameNumber);
}

PixelBlock FrameOf(const CallersPixels& callers) {
    return CopyOf(callers.pixels);
}

void TakePixels(StandardIncoming& incoming, const CallersPixels& callers) {
    PixelHeader header = callers.header;
    if (!header.IsGrey()) {
        header.bitsAllocated = 8;
        header.bitsStored = 8;
        return incoming.TakeColour(FrameOf(callers), header);
    }
    const bool isPalette = callers.kind == ImageKind::kPalette && callers.object != nullptr;
    if (isPalette && incoming.TakePalette(FrameOf(callers), header, *callers.object)) return;
    incoming.TakeGrey(FrameOf(callers), header);
    if (callers.kind == ImageKind::kSupplemental && callers.object != nullptr) {
        incoming.TakeSupplement(*callers.object);
    }
}

/// Overlays of the data set, and those that a volume keeps in a plane of its own.
std::vector<OwnedMarks> OverlaysOf(const CallersPixels& callers) {
    std::vector<OwnedMarks> marks;
    if (callers.object != nullptr) {
        marks = ImageOverlays(*callers.object, callers.pixels, callers.header.size, 1,
                              !callers.header.IsGrey());
    }
    const CLData* const data = callers.data;
    if (data == nullptr || data->overlayPlane == nullptr) return marks;
    const std::size_t bytes = (callers.header.PixelCount() + 7) / 8;
    std::vector<unsigned char> bits(bytes);
    std::copy_n(data->overlayPlane, std::min<std::size_t>(bytes, data->overlayPlaneSize),
                bits.begin());
    marks.push_back({0, std::move(bits), {255, 255, 255}});
    return marks;
}

}  // namespace

void ShowPixelsByStandard(DisplayedImage& image, const CallersPixels& callers, CSize viewSize) {
    StandardIncoming incoming;
    incoming.size = callers.header.size;
    incoming.image.form = FormOf(callers.header);
    incoming.image.bitsAllocated = callers.header.bitsAllocated;
    incoming.image.statedRange = callers.range;
    if (callers.data != nullptr) {
        DescribeVolume(incoming, *callers.data);
    } else if (callers.object != nullptr) {
        DescribeObject(incoming, *callers.object);
    } else {
        incoming.record = NewRecord(incoming.size);
    }
    incoming.image.overlays = OverlaysOf(callers);
    TakePixels(incoming, callers);
    incoming.Commit(image, viewSize);
    if (callers.kind == ImageKind::kOverlays) image.overlaysShown = 1;
}

}  // namespace quorvex
