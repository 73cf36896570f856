// The presentation state that goes with the slice.
#include "quorvex/Tags.h"
#include "tools/phantom/phantom_objects.h"

#include <array>

namespace quorvex::tools {
namespace {

constexpr const char* kGreyscaleState = "1.2.840.10008.5.1.4.1.1.11.1";
constexpr const char* kLayerName = "FINDINGS";

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

constexpr Attribute kWindow[] = {
    {tag::kWindowCenter, "-500"},
    {tag::kWindowWidth, "1500"},
};
constexpr Attribute kArea[] = {
    {tag::kPresentationSizeMode, "SCALE TO FIT"},
    {tag::kPresentationPixelSpacing, "0.78125\\0.78125"},
};
constexpr Attribute kWords[] = {
    {tag::kAnchorPointAnnotationUnits, "PIXEL"},
    {tag::kUnformattedTextValue, "Nodule, 12 mm"},
    {tag::kAnchorPointVisibility, "Y"},
};
constexpr Attribute kRing[] = {
    {tag::kGraphicAnnotationUnits, "PIXEL"},
    {tag::kGraphicDimensions, static_cast<unsigned short>(2)},
    {tag::kNumberOfGraphicPoints, static_cast<unsigned short>(2)},
    {tag::kGraphicType, "CIRCLE"},
    {tag::kGraphicFilled, "N"},
};
constexpr Attribute kAnnotation[] = {
    {tag::kGraphicLayer, kLayerName},
};
constexpr Attribute kLayer[] = {
    {tag::kGraphicLayer, kLayerName},
    {tag::kGraphicLayerOrder, "1"},
};

void ReferToSlice(CDcmItem& item) {
    const auto slice = SliceIdentity();
    CDcmItem reference(1);
    SetText(reference, tag::kReferencedSOPClassUID, slice.sopClass);
    SetText(reference, tag::kReferencedSOPInstanceUID, slice.instance);
    AddItem(item, tag::kReferencedImageSequence, reference);
}

CDcmItem Series() {
    CDcmItem series(1);
    ReferToSlice(series);
    SetText(series, tag::kSeriesInstanceUID, SliceIdentity().series);
    return series;
}

CDcmItem Window() {
    auto window = ItemOf(kWindow);
    ReferToSlice(window);
    return window;
}

CDcmItem DisplayedArea() {
    auto area = ItemOf(kArea);
    ReferToSlice(area);
    SetWholeNumbers(area, tag::kDisplayedAreaTopLeftHandCorner, std::array{51, 101});
    SetWholeNumbers(area, tag::kDisplayedAreaBottomRightHandCorner, std::array{350, 400});
    return area;
}

CDcmItem Annotation() {
    auto words = ItemOf(kWords);
    SetNumbers(words, tag::kAnchorPoint, std::array{123.0, 300.0});
    auto ring = ItemOf(kRing);
    SetNumbers(ring, tag::kGraphicData, std::array{123.0, 289.0, 123.0, 303.0});
    auto annotation = ItemOf(kAnnotation);
    ReferToSlice(annotation);
    AddItem(annotation, tag::kTextObjectSequence, words);
    AddItem(annotation, tag::kGraphicObjectSequence, ring);
    return annotation;
}

}  // namespace

std::unique_ptr<CDcmObject> MakeSliceState() {
    auto state = std::make_unique<CDcmObject>();
    SetIdentity(*state, IdentityOf(kGreyscaleState, 1, 2));
    SetAttributes(*state, kState);
    AddItem(*state, tag::kReferencedSeriesSequence, Series());
    AddItem(*state, tag::kSoftcopyVOILUTSequence, Window());
    AddItem(*state, tag::kDisplayedAreaSelectionSequence, DisplayedArea());
    AddItem(*state, tag::kGraphicAnnotationSequence, Annotation());
    AddItem(*state, tag::kGraphicLayerSequence, ItemOf(kLayer));
    return state;
}

}  // namespace quorvex::tools
