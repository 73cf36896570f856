// StandardRules: frames and presentation states come in.
#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/functional_groups.h"
#include "pipeline/intake/fetched_frame.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/preview.h"
#include "pipeline/recipe/standard_incoming.h"
#include "pipeline/recipe/standard_overlays.h"
#include "pipeline/recipe/standard_rules.h"
#include "presentation/exact_shutter.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

namespace {

constexpr int kQuarter = 90;
constexpr int kMostShownSamples = 3;  ///< four are inks, which have no colours without a profile

std::optional<OwnedShutter> ShutterOf(const CDcmObject& object, CSize size) {
    auto shutter = ReadExactShutter(object, size);
    if (!shutter) return std::nullopt;
    return OwnedShutter{std::move(shutter->mask), shutter->colour};
}

/// What a header says of a frame, pixels and layers apart.
void Describe(StandardImage& image, const CDcmObject& object, const PixelHeader& header,
              int frameIndex) {
    image.form = FormOf(header);
    image.sampleType = header.sampleType;
    image.bitsAllocated = header.bitsAllocated;
    image.frameNumber = frameIndex + 1;
    image.uid = Read<CString>(object, tag::kSOPInstanceUID).value_or(CString());
    if (header.IsReal()) {
        image.realPadding = ReadRealPadding(object, header.sampleType);
    } else {
        image.padding = ReadPadding(object, image.form);
    }
    image.own = ReadImageStages(object, image.form);
    image.aspect = ReadPixelAspect(object);
}

/// What a preview needs of a frame at least; nothing for all of it.
std::optional<CSize> LeastSizeOf(const DisplayedImage& image, const CxDcmParser& source,
                                 CSize viewSize, int frameIndex) {
    const CDcmObject* const object = source.GetHeader();
    const bool hasState = &source == &*image.parser && image.standard && image.standard->state;
    if (!image.isPreview || hasState || object == nullptr) return std::nullopt;
    const auto header = ReadPixelHeader(*object, source.GetSampleType());
    if (!header) return std::nullopt;
    const auto ofFrame = HeaderOfFrame(*object, frameIndex);
    const CDcmObject& described = ofFrame ? *ofFrame : *object;
    StandardImage next;
    Describe(next, described, *header, frameIndex);
    return LeastPreviewSize(next, *header, described, viewSize);
}

/// Layers count in pixels of the whole image.
void TakeLayers(StandardIncoming& incoming, CDcmObject& described, const CDcmObject& object,
                const FetchedFrame& fetched) {
    StandardImage& image = incoming.image;
    image.whole = fetched.whole;
    if (image.whole) return;
    const CSize size = fetched.header.size;
    image.shutter = ShutterOf(described, size);
    image.overlays = ImageOverlays(object, fetched.pixels.Bytes(), size, image.frameNumber,
                                   !fetched.header.IsGrey());
}

QUORVEX_MESSAGE TakePixels(StandardIncoming& incoming, PixelBlock frame, const PixelHeader& header,
                           CDcmObject& object) {
    const CString photometric =
        Read<CString>(object, tag::kPhotometricInterpretation).value_or(CString());
    if (header.IsReal()) {
        if (photometric.CompareNoCase("PALETTE COLOR") == 0) return QVM_ERROR_INVALID_PHOTOMETRIC;
        return incoming.TakeReal(std::move(frame), header) ? QVM_SUCCESS
                                                           : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    }
    if (photometric.CompareNoCase("PALETTE COLOR") == 0) {
        const bool isTaken = incoming.TakePalette(std::move(frame), header, object);
        return isTaken ? QVM_SUCCESS : QVM_ERROR_INVALID_PHOTOMETRIC;
    }
    if (header.samplesPerPixel > kMostShownSamples) return QVM_ERROR_INVALID_PHOTOMETRIC;
    if (header.IsGrey()) {
        incoming.TakeGrey(std::move(frame), header);
        incoming.TakeSupplement(object);
    } else {
        incoming.TakeColour(std::move(frame), header);
    }
    return QVM_SUCCESS;
}

int TurnsOf(const CDcmObject& object) {
    const int degrees = Read<int>(object, tag::kImageRotation).value_or(0);
    return degrees % kQuarter == 0 ? (degrees / kQuarter % 4 + 4) % 4 : 0;
}

bool IsFlipped(const CDcmObject& object) {
    const auto flip = Read<CString>(object, tag::kImageHorizontalFlip);
    return flip && flip->CompareNoCase("Y") == 0;
}

/// What a state says of a frame; nothing where it does not speak of it.
std::optional<AppliedState> StateFor(const CDcmObject& state, const StandardImage& image,
                                     CSize size) {
    if (!RefersTo(state, image.uid, image.frameNumber)) return std::nullopt;
    AppliedState applied;
    applied.stages = ReadStateStages(state, image.uid, image.frameNumber, image.form);
    applied.quarterTurns = TurnsOf(state);
    applied.isFlipped = IsFlipped(state);
    applied.area = ReadDisplayedArea(state, image.uid, image.frameNumber);
    applied.shutter = ShutterOf(state, size);
    applied.overlays = StateOverlays(state, image.overlays, size, image.frameNumber);
    return applied;
}

}  // namespace

QUORVEX_MESSAGE StandardRules::ShowFrame(DisplayedImage& image, CxDcmParser& source, CSize viewSize,
                                         int frameIndex) const {
    FetchedFrame fetched;
    const auto least = LeastSizeOf(image, source, viewSize, frameIndex);
    const auto result = FetchFrame(source, frameIndex, fetched, least);
    if (result != QVM_SUCCESS) return result;
    const PixelHeader& header = fetched.header;
    CDcmObject& object = *source.GetHeader();

    auto ofFrame = HeaderOfFrame(object, frameIndex);
    CDcmObject& described = ofFrame ? *ofFrame : object;
    StandardIncoming incoming;
    incoming.size = header.size;
    Describe(incoming.image, described, header, frameIndex);
    incoming.record = ReadViewRecord(described, header.size, CString(), frameIndex + 1);
    TakeLayers(incoming, described, object, fetched);
    const auto taken = TakePixels(incoming, std::move(fetched.pixels), header, described);
    if (taken != QVM_SUCCESS) return taken;
    const bool isSameImage = &source == &*image.parser && image.standard.has_value();
    if (isSameImage && image.standard->state) {
        incoming.image.state = image.standard->state;
        incoming.image.applied = StateFor(*incoming.image.state, incoming.image, header.size);
        if (incoming.image.applied) {
            incoming.record = ReadViewRecord(*incoming.image.state, header.size, incoming.image.uid,
                                             frameIndex + 1);
        }
    }
    incoming.Commit(image, viewSize);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE StandardRules::ShowWhole(DisplayedImage& image) const {
    const bool isPreview = std::exchange(image.isPreview, false);
    const auto result =
        ShowFrame(image, *image.parser, image.viewSize, image.standard->frameNumber - 1);
    image.isPreview = isPreview;
    return result;
}

QUORVEX_MESSAGE StandardRules::ApplyState(DisplayedImage& image, CDcmObject* state) const {
    if (state == nullptr || !image.presentation) return QVM_SUCCESS;
    if (image.standard->whole) {
        const auto shown = ShowWhole(image);
        if (shown != QVM_SUCCESS) return shown;
    }
    StandardImage next = *image.standard;
    auto kept = std::make_shared<const CDcmObject>(*state);
    next.applied = StateFor(*kept, next, image.imageSize);
    next.state = std::move(kept);
    next.userWindow.reset();
    image.shrunk.reset();
    next.voiChoice = 0;
    next.isToggled = false;
    if (!next.applied) {
        image.standard = std::move(next);
        return QVM_SUCCESS;
    }
    auto record = ReadViewRecord(*next.state, image.imageSize, next.uid, next.frameNumber);
    TakeAttitude(image, next, *record);
    image.presentation = std::move(record);
    image.standard = std::move(next);
    LayOutByStandard(image);
    return QVM_SUCCESS;
}

}  // namespace quorvex
