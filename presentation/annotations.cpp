#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "presentation/reference_matching.h"
#include "quorvex/CXGSPSObject.h"

#include <memory>

namespace quorvex {
namespace {

struct Word {
    const char* text;
    std::int32_t number;
};
constexpr Word kUnits[] = {{"PIXEL", 0}};
constexpr std::int32_t kDisplayUnits = 1;
constexpr Word kJustifications[] = {{"LEFT", 0}, {"RIGHT", 1}};
constexpr std::int32_t kCentred = 2;
constexpr Word kGraphicTypes[] = {
    {"POINT", 1}, {"POLYLINE", 2}, {"INTERPOLATED", 3}, {"CIRCLE", 4}};
constexpr std::int32_t kEllipse = 5;

/// Sets `number` by the word of an attribute, `otherwise` for a word that is not listed. Without
/// the attribute it stays.
template <std::size_t N>
void ReadWord(const CDcmItem& item, std::uint32_t wordTag, const Word (&words)[N],
              std::int32_t otherwise, std::int32_t& number) {
    const auto text = Read<CString>(item, wordTag);
    if (!text) return;
    number = otherwise;
    for (const Word& word : words) {
        if (*text == CString(word.text)) number = word.number;
    }
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
    ReadWord(item, tag::kBoundingBoxAnnotationUnits, kUnits, kDisplayUnits, text.boundingBoxUnits);
    ReadWord(item, tag::kBoundingBoxTextHorizontalJustification, kJustifications, kCentred,
             text.horizontalJustification);
}

void ReadAnchor(const CDcmItem& item, GSPSTextObject& text) {
    const auto anchor = ReadPair<float>(item, tag::kAnchorPoint);
    if (!anchor) return;
    text.anchorPoint = NewCoordinates(*anchor);
    text.hasAnchor = 1;
    ReadWord(item, tag::kAnchorPointAnnotationUnits, kUnits, kDisplayUnits, text.anchorUnits);
    text.anchorVisible = TextIs(item, tag::kAnchorPointVisibility, "Y") ? 1 : 0;
}

/// Hands an element to an array that owns its elements.
template <class Element>
void AddOwned(CPtrArray& elements, std::unique_ptr<Element> element) {
    elements.Add(element.get());
    static_cast<void>(element.release());
}

}  // namespace

int CXGSPSObject::GetAnnotation(CDcmObject* object, CXGSPSInfo* info) {
    ForEachItem(*object, tag::kGraphicAnnotationSequence, [&](const CDcmItem& item) {
        if (AppliesTo(item, imageUID, frameNumber)) ProcessAnnotationSequence(item, info);
    });
    return 1;
}

int CXGSPSObject::ProcessAnnotationSequence(CDcmItem item, CXGSPSInfo* info) {
    ForEachItem(item, tag::kTextObjectSequence,
                [&](const CDcmItem& text) { ProcessAnnotationText(text, info); });
    ForEachItem(item, tag::kGraphicObjectSequence,
                [&](const CDcmItem& graphic) { ProcessAnnotationGraphic(graphic, info); });
    return 1;
}

int CXGSPSObject::ProcessAnnotationText(CDcmItem item, CXGSPSInfo* info) {
    auto text = std::make_unique<GSPSTextObject>();
    text->textValue = Read<CString>(item, tag::kUnformattedTextValue).value_or(CString());
    ReadBoundingBox(item, *text);
    ReadAnchor(item, *text);
    AddOwned(info->textObjects, std::move(text));
    return 1;
}

int CXGSPSObject::ProcessAnnotationGraphic(CDcmItem item, CXGSPSInfo* info) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    ReadWord(item, tag::kGraphicAnnotationUnits, kUnits, kDisplayUnits, graphic->annotationUnits);
    graphic->pointCount = Read<unsigned short>(item, tag::kNumberOfGraphicPoints).value_or(0);
    ReadWord(item, tag::kGraphicType, kGraphicTypes, kEllipse, graphic->graphicType);
    graphic->filled = TextIs(item, tag::kGraphicFilled, "Y") ? 1 : 0;
    ForEachPair<float>(item, tag::kGraphicData, [&](const ValuePair<float>& pair) {
        const GSPSPoint point{static_cast<double>(pair.first), static_cast<double>(pair.second)};
        AddOwned(graphic->points, std::make_unique<GSPSPoint>(point));
    });
    AddOwned(info->graphicObjects, std::move(graphic));
    return 1;
}

}  // namespace quorvex
