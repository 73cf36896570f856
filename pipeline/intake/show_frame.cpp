// EstablishedRules: a frame of a file or data set comes in.
#include "foundation/dicom/object/functional_groups.h"
#include "pipeline/intake/fetched_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/modality_stage.h"
#include "pipeline/layers/overlay_layer.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/established_rules.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;

void TakeFrame(IncomingImage& incoming, PixelBlock frame, const PixelHeader& header) {
    if (!header.IsGrey()) return incoming.TakeColour(std::move(frame), header);
    incoming.TakeGrey(ApplyModalityStage(std::move(frame), header.Layout(),
                                         ModalityTransform(*incoming.record),
                                         {incoming.minValue, incoming.maxValue}));
}

}  // namespace

QUORVEX_MESSAGE EstablishedRules::ShowFrame(DisplayedImage& image, CxDcmParser& source,
                                            CSize viewSize, int frameIndex) const {
    if (source.GetSampleType() != SampleType::kInteger) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    FetchedFrame fetched;
    const auto result = FetchFrame(source, frameIndex, fetched);
    if (result != QVM_SUCCESS) return result;
    PixelBlock& frame = fetched.pixels;
    const PixelHeader& header = fetched.header;
    CDcmObject& object = *source.GetHeader();

    IncomingImage incoming;
    incoming.viewSize = viewSize;
    incoming.minValue = image.minValue;
    incoming.maxValue = image.maxValue;
    const bool isSameObject = &source == &*image.parser;
    if (isSameObject && image.valueScale.IsFractional()) incoming.fullRange = image.fullRange;
    auto ofFrame = HeaderOfFrame(object, frameIndex);
    incoming.TakeHeader(header, ofFrame ? *ofFrame : object);
    incoming.headerOverlays =
        HeaderOverlays(object, frame.Bytes(), header.size, header.IsGrey() ? 1 : kColourBytes);
    TakeFrame(incoming, std::move(frame), header);
    incoming.Replace(image);
    image.minValue = incoming.minValue;
    image.maxValue = incoming.maxValue;
    return QVM_SUCCESS;
}

}  // namespace quorvex
