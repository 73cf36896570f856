// The presentation state that goes with the slice.
#include "quorvex/Tags.h"
#include "tools/phantom/phantom_objects.h"

#include <array>

namespace quorvex::tools {
namespace {

constexpr const char* kGreyscaleState = "1.2.840.10008.5.1.4.1.1.11.1";
constexpr const char* kLayer = "FINDINGS";

constexpr Attribute kState[] = {
    {tag::kModality, "PR"},
    {tag::kLongitudinalTemporalInformationModified, "MODIFIED"},
    {tag::kImageHorizontalFlip, "N"},
    {tag::kImageRotation, static_cast<unsigned short>(0)},
    {tag::kContentLabel, "LUNG NODULE"},
    {tag::kContentDescription, "Nodule in the right lung"},
    {tag::kPresentationCreationDate, "20260105"},
    {tag::kPresentationCreationTime, "103000"},
    {tag::kContentCreatorName, "Phantom^Reader"},
    {tag::kPresentationLUTShape, "IDENTITY"},
    {tag::kRescaleIntercept, "-1024"},
    {tag::kRescaleSlope, "1"},
    {tag::kRescaleType, "HU"},
};

CDcmItem ImageReference() {
    const auto slice = SliceIdentity();
    CDcmItem reference(1);
    SetText(reference, tag::kReferencedSOPClassUID, slice.sopClass);
    SetText(reference, tag::kReferencedSOPInstanceUID, slice.instance);
    return reference;
}

void AddImageReference(CDcmObjectCommon& target) {
    auto reference = ImageReference();
    AddItem(target, tag::kReferencedImageSequence, reference);
}

void AddRelationship(CDcmObject& state) {
    CDcmItem series(1);
    AddImageReference(series);
    SetText(series, tag::kSeriesInstanceUID, SliceIdentity().series);
    AddItem(state, tag::kReferencedSeriesSequence, series);
}

void AddWindow(CDcmObject& state) {
    CDcmItem window(1);
    AddImageReference(window);
    SetText(window, tag::kWindowCenter, "-500");
    SetText(window, tag::kWindowWidth, "1500");
    AddItem(state, tag::kSoftcopyVOILUTSequence, window);
}

void AddDisplayedArea(CDcmObject& state) {
    CDcmItem area(1);
    AddImageReference(area);
    SetWholeNumbers(area, tag::kDisplayedAreaTopLeftHandCorner, std::array{51, 101});
    SetWholeNumbers(area, tag::kDisplayedAreaBottomRightHandCorner, std::array{350, 400});
    SetText(area, tag::kPresentationSizeMode, "SCALE TO FIT");
    SetText(area, tag::kPresentationPixelSpacing, "0.78125\\0.78125");
    AddItem(state, tag::kDisplayedAreaSelectionSequence, area);
}

CDcmItem Words() {
    CDcmItem words(1);
    SetText(words, tag::kAnchorPointAnnotationUnits, "PIXEL");
    SetText(words, tag::kUnformattedTextValue, "Nodule, 12 mm");
    SetNumbers(words, tag::kAnchorPoint, std::array{123.0, 300.0});
    SetText(words, tag::kAnchorPointVisibility, "Y");
    return words;
}

CDcmItem Ring() {
    CDcmItem ring(1);
    SetText(ring, tag::kGraphicAnnotationUnits, "PIXEL");
    SetAttributes(
        ring, std::array{Attribute{tag::kGraphicDimensions, static_cast<unsigned short>(2)},
                         Attribute{tag::kNumberOfGraphicPoints, static_cast<unsigned short>(2)}});
    SetNumbers(ring, tag::kGraphicData, std::array{123.0, 289.0, 123.0, 303.0});
    SetText(ring, tag::kGraphicType, "CIRCLE");
    SetText(ring, tag::kGraphicFilled, "N");
    return ring;
}

void AddAnnotation(CDcmObject& state) {
    CDcmItem annotation(1);
    AddImageReference(annotation);
    SetText(annotation, tag::kGraphicLayer, kLayer);
    auto words = Words();
    AddItem(annotation, tag::kTextObjectSequence, words);
    auto ring = Ring();
    AddItem(annotation, tag::kGraphicObjectSequence, ring);
    AddItem(state, tag::kGraphicAnnotationSequence, annotation);
}

void AddLayer(CDcmObject& state) {
    CDcmItem layer(1);
    SetText(layer, tag::kGraphicLayer, kLayer);
    SetText(layer, tag::kGraphicLayerOrder, "1");
    AddItem(state, tag::kGraphicLayerSequence, layer);
}

}  // namespace

std::unique_ptr<CDcmObject> MakeSliceState() {
    auto state = std::make_unique<CDcmObject>();
    SetIdentity(*state, IdentityOf(kGreyscaleState, 1, 2));
    SetAttributes(*state, kState);
    AddRelationship(*state);
    AddWindow(*state);
    AddDisplayedArea(*state);
    AddAnnotation(*state);
    AddLayer(*state);
    return state;
}

}  // namespace quorvex::tools
