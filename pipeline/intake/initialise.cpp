#include "foundation/types/answer.h"
#include "pipeline/intake/functional_groups.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/modality_stage.h"
#include "pipeline/pixel_header.h"
#include "pipeline/layers/overlay_layer.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr int kColourBytes = 3;

}  // namespace

// Tables are prepared on a copy: those of the image on show stay until all is done.
void CXDIPP::Prepare(IncomingImage& incoming) const {
    incoming.windowing = std::make_unique<CXWindowing>(*windowing);
    incoming.windowing->SetRescale(incoming.scale.step, incoming.scale.offset);
    incoming.windowing->PrepareGSPSProcessing2(incoming.record.get(), incoming.range.domainLow,
                                               incoming.range.domainHigh);
}

void CXDIPP::Commit(IncomingImage& incoming) noexcept {
    imageSize = incoming.imageSize;
    viewSize = incoming.viewSize;
    pixelRepresentation = incoming.pixelRepresentation;
    bytesPerPixel = incoming.bytesPerPixel;
    resultPixelSize = bytesPerPixel >= kColourBytes ? kColourBytes : 1;
    bitsStored = incoming.bitsStored;
    pixels = std::move(incoming.pixels);
    headerOverlays = std::move(incoming.headerOverlays);
    presentation = std::move(incoming.record);
    windowing = std::move(incoming.windowing);
    valueRange = incoming.range;
    minValue = incoming.minValue;
    maxValue = incoming.maxValue;
    rotation = presentation->imageRotation;
    horizontalFlip = presentation->imageHorizontalFlip;
    PrepareDisplayAreaTransform();
}

QUORVEX_MESSAGE CXDIPP::ShowFrame(CxDcmParser& source, CSize newViewSize, int frameIndex) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = source.GetAFrame(frameIndex, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    PixelBlock frame{std::unique_ptr<unsigned char[]>(data), size};
    const auto header = ReadPixelHeader(*source.GetHeader());
    if (!header || !frame.data) return kNoPixels;

    IncomingImage incoming;
    incoming.viewSize = newViewSize;
    incoming.minValue = minValue;
    incoming.maxValue = maxValue;
    auto ofFrame = HeaderOfFrame(*source.GetHeader(), frameIndex);
    incoming.TakeHeader(*header, ofFrame ? *ofFrame : *source.GetHeader());
    incoming.headerOverlays = HeaderOverlays(*source.GetHeader(), {frame.data.get(), frame.size},
                                             header->size, header->IsGrey() ? 1 : kColourBytes);
    if (header->IsGrey()) {
        StoredLayout layout = header->Layout();
        layout.extendsSign = incoming.record->modalityLUTData == nullptr;
        incoming.TakeGrey(ApplyModalityStage(
            std::move(frame), layout, ModalityTransform(*incoming.record), {minValue, maxValue}));
    } else {
        incoming.TakeColour(std::move(frame), *header);
    }
    Prepare(incoming);
    Commit(incoming);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CString path, CSize newViewSize, int frameIndex) {
    return Answer(kNoPixels, [&] {
        auto opened = std::make_unique<CxDcmParser>();
        auto result = opened->Initialize(app, std::move(path), 0);
        if (result == QVM_SUCCESS) result = ShowFrame(*opened, newViewSize, frameIndex);
        if (result == QVM_SUCCESS) parser = std::move(opened);
        return result;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CDcmObject* object, CSize newViewSize,
                                   int frameIndex) {
    return Answer(kNoPixels, [&] {
        auto opened = std::make_unique<CxDcmParser>();
        auto result = opened->Initialize(app, object, nullptr, 0, 0);
        if (result == QVM_SUCCESS) result = ShowFrame(*opened, newViewSize, frameIndex);
        if (result == QVM_SUCCESS) parser = std::move(opened);
        return result;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CSize newViewSize, int frameIndex) {
    return Answer(kNoPixels, [&] { return ShowFrame(*parser, newViewSize, frameIndex); });
}

}  // namespace quorvex
