#include "foundation/types/answer.h"
#include "pipeline/intake/functional_groups.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/modality_stage.h"
#include "pipeline/layers/overlay_layer.h"
#include "pipeline/pixel_header.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr int kColourBytes = 3;

void TakeFrame(IncomingImage& incoming, PixelBlock frame, const PixelHeader& header) {
    if (!header.IsGrey()) return incoming.TakeColour(std::move(frame), header);
    StoredLayout layout = header.Layout();
    layout.extendsSign = incoming.record->modalityLUTData == nullptr;
    incoming.TakeGrey(ApplyModalityStage(std::move(frame), layout,
                                         ModalityTransform(*incoming.record),
                                         {incoming.minValue, incoming.maxValue}));
}

QUORVEX_MESSAGE ShowFrame(DisplayedImage& image, CxDcmParser& source, CSize viewSize,
                          int frameIndex) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = source.GetAFrame(frameIndex, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    PixelBlock frame{std::unique_ptr<unsigned char[]>(data), size};
    CDcmObject& object = *source.GetHeader();
    const auto header = ReadPixelHeader(object);
    if (!header || !frame.data) return kNoPixels;

    IncomingImage incoming;
    incoming.viewSize = viewSize;
    incoming.minValue = image.minValue;
    incoming.maxValue = image.maxValue;
    auto ofFrame = HeaderOfFrame(object, frameIndex);
    incoming.TakeHeader(*header, ofFrame ? *ofFrame : object);
    incoming.headerOverlays =
        HeaderOverlays(object, frame.Bytes(), header->size, header->IsGrey() ? 1 : kColourBytes);
    TakeFrame(incoming, std::move(frame), *header);
    incoming.Replace(image);
    image.minValue = incoming.minValue;
    image.maxValue = incoming.maxValue;
    return QVM_SUCCESS;
}

/// Shows a frame of what `open` makes a parser open. The parser of the image on show stays until
/// that is done.
template <class Open>
QUORVEX_MESSAGE OpenAndShow(DisplayedImage& image, CSize viewSize, int frameIndex, Open open) {
    auto parser = std::make_unique<CxDcmParser>();
    auto result = open(*parser);
    if (result == QVM_SUCCESS) result = ShowFrame(image, *parser, viewSize, frameIndex);
    if (result == QVM_SUCCESS) image.parser = std::move(parser);
    return result;
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CString path, CSize viewSize, int frameIndex) {
    return Answer(kNoPixels, [&] {
        return OpenAndShow(*image_, viewSize, frameIndex, [&](CxDcmParser& parser) {
            return parser.Initialize(app, std::move(path), 0);
        });
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CDcmObject* object, CSize viewSize,
                                   int frameIndex) {
    return Answer(kNoPixels, [&] {
        return OpenAndShow(*image_, viewSize, frameIndex, [&](CxDcmParser& parser) {
            return parser.Initialize(app, object, nullptr, 0, 0);
        });
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CSize viewSize, int frameIndex) {
    return Answer(kNoPixels,
                  [&] { return ShowFrame(*image_, *image_->parser, viewSize, frameIndex); });
}

}  // namespace quorvex
