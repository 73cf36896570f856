#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/object_state.h"
#include "presentation/graphic_layers.h"
#include "presentation/presentation_reader.h"
#include "presentation/reference_matching.h"
#include "presentation/words.h"

#include <memory>
#include <span>
#include <vector>

namespace quorvex {
namespace {

/// Place of the attribute's word in the list, its last one for any other word; nothing without the
/// attribute.
template <std::size_t Count>
std::optional<std::int32_t> ReadPlace(const CDcmItem& item, std::uint32_t wordTag,
                                      const Words<Count>& words) {
    const auto text = Read<CString>(item, wordTag);
    if (!text) return std::nullopt;
    return PlaceOf(*text, words).value_or(static_cast<std::int32_t>(Count) - 1);
}

double* NewCoordinates(const ValuePair<float>& pair) {
    return new double[2]{static_cast<double>(pair.first), static_cast<double>(pair.second)};
}

void ReadBoundingBox(const CDcmItem& item, GSPSTextObject& text) {
    const auto bottomRight = ReadPair<float>(item, tag::kBoundingBoxBottomRightHandCorner);
    if (bottomRight) {
        const auto topLeft = ReadPair<float>(item, tag::kBoundingBoxTopLeftHandCorner);
        text.boundingBoxTopLeft = NewCoordinates(topLeft.value_or(ValuePair<float>{}));
        text.boundingBoxBottomRight = NewCoordinates(*bottomRight);
        text.hasBoundingBox = 1;
    }
    text.boundingBoxUnits =
        ReadPlace(item, tag::kBoundingBoxAnnotationUnits, kUnitWords).value_or(0);
    text.horizontalJustification =
        ReadPlace(item, tag::kBoundingBoxTextHorizontalJustification, kJustificationWords)
            .value_or(0);
}

void ReadAnchor(const CDcmItem& item, GSPSTextObject& text) {
    const auto anchor = ReadPair<float>(item, tag::kAnchorPoint);
    if (!anchor) return;
    text.anchorPoint = NewCoordinates(*anchor);
    text.hasAnchor = 1;
    text.anchorUnits = ReadPlace(item, tag::kAnchorPointAnnotationUnits, kUnitWords).value_or(0);
    text.anchorVisible = TextIs(item, tag::kAnchorPointVisibility, "Y") ? 1 : 0;
}

constexpr std::uint32_t kOfTexts[] = {tag::kBoundingBoxAnnotationUnits,
                                      tag::kAnchorPointAnnotationUnits,
                                      tag::kUnformattedTextValue,
                                      tag::kBoundingBoxTopLeftHandCorner,
                                      tag::kBoundingBoxBottomRightHandCorner,
                                      tag::kBoundingBoxTextHorizontalJustification,
                                      tag::kAnchorPoint,
                                      tag::kAnchorPointVisibility};
constexpr std::uint32_t kOfGraphics[] = {tag::kGraphicAnnotationUnits,
                                         tag::kGraphicDimensions,
                                         tag::kNumberOfGraphicPoints,
                                         tag::kGraphicData,
                                         tag::kGraphicType,
                                         tag::kGraphicFilled};

/// What an item has besides; no item where that is nothing.
std::vector<CDcmItem> OthersOf(const CDcmItem& item, std::span<const std::uint32_t> known) {
    CDcmItem others = item;
    for (const std::uint32_t tag : known) others.RemoveValue(tag);
    if (ObjectState::Of(others).Content().Elements().empty()) return {};
    return {others};
}

/// Hands an element to an array that owns its elements.
template <class Element>
void AddOwned(CPtrArray& elements, std::unique_ptr<Element> element) {
    elements.Add(element.get());
    static_cast<void>(element.release());
}

}  // namespace

void PresentationReader::GetAnnotation() {
    info_.graphicLayers = ReadGraphicLayers(object_);
    info_.graphicGroups.clear();
    ForEachItem(object_, tag::kGraphicGroupSequence,
                [&](const CDcmItem& group) { info_.graphicGroups.push_back(group); });
    ForEachItem(object_, tag::kGraphicAnnotationSequence, [&](const CDcmItem& item) {
        if (AppliesTo(item, imageUID_, frameNumber_)) ProcessAnnotationSequence(item);
    });
}

void PresentationReader::ProcessAnnotationSequence(const CDcmItem& item) {
    const CString layer = Read<CString>(item, tag::kGraphicLayer).value_or(CString());
    ForEachItem(item, tag::kTextObjectSequence,
                [&](const CDcmItem& text) { ProcessAnnotationText(text, layer); });
    ForEachItem(item, tag::kGraphicObjectSequence,
                [&](const CDcmItem& graphic) { ProcessAnnotationGraphic(graphic, layer); });
    ForEachItem(item, tag::kCompoundGraphicSequence, [&](const CDcmItem& compound) {
        info_.compoundGraphics.push_back({layer, compound});
    });
}

void PresentationReader::ProcessAnnotationText(const CDcmItem& item, const CString& layer) {
    auto text = std::make_unique<GSPSTextObject>();
    text->textValue = Read<CString>(item, tag::kUnformattedTextValue).value_or(CString());
    ReadBoundingBox(item, *text);
    ReadAnchor(item, *text);
    text->graphicLayer = layer;
    text->otherAttributes = OthersOf(item, kOfTexts);
    AddOwned(info_.textObjects, std::move(text));
}

void PresentationReader::ProcessAnnotationGraphic(const CDcmItem& item, const CString& layer) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    graphic->annotationUnits =
        ReadPlace(item, tag::kGraphicAnnotationUnits, kUnitWords).value_or(0);
    graphic->pointCount = Read<unsigned short>(item, tag::kNumberOfGraphicPoints).value_or(0);
    graphic->graphicType = ReadPlace(item, tag::kGraphicType, kGraphicTypeWords).value_or(0);
    graphic->filled = TextIs(item, tag::kGraphicFilled, "Y") ? 1 : 0;
    ForEachPair<float>(item, tag::kGraphicData, [&](const ValuePair<float>& pair) {
        const GSPSPoint point{static_cast<double>(pair.first), static_cast<double>(pair.second)};
        AddOwned(graphic->points, std::make_unique<GSPSPoint>(point));
    });
    graphic->graphicLayer = layer;
    graphic->otherAttributes = OthersOf(item, kOfGraphics);
    AddOwned(info_.graphicObjects, std::move(graphic));
}

}  // namespace quorvex
