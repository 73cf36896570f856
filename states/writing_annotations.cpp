#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"
#include "states/attribute_writing.h"

#include <array>
#include <span>
#include <string>
#include <utility>

namespace quorvex {
namespace {

/// All annotations of an object lie in one layer.
constexpr const char* kLayer = "LAYER1";

constexpr std::array kUnits = {"PIXEL", "DISPLAY"};
constexpr std::array kJustifications = {"LEFT", "RIGHT", "CENTER"};
constexpr std::array kTypes = {"", "POINT", "POLYLINE", "INTERPOLATED", "CIRCLE", "ELLIPSE"};

/// Empty for a number that has no word.
template <std::size_t Count>
const char* Word(const std::array<const char*, Count>& words, std::int32_t number) {
    const auto index = static_cast<std::size_t>(number);
    return index < Count ? words[index] : "";
}

const char* YesOrNo(std::int32_t flag) {
    return flag != 0 ? "Y" : "N";
}

void WritePlace(CDcmItem& item, std::uint32_t tag, const double* place) {
    if (place != nullptr) WritePair(item, tag, place[0], place[1]);
}

CDcmItem TextItem(const GSPSTextObject& text) {
    CDcmItem item = NewItem();
    if (text.hasAnchor != 0) {
        item.SetValue(tag::kAnchorPointAnnotationUnits, Word(kUnits, text.anchorUnits));
        WritePlace(item, tag::kAnchorPoint, text.anchorPoint);
        item.SetValue(tag::kAnchorPointVisibility, YesOrNo(text.anchorVisible));
    }
    if (text.hasBoundingBox != 0) {
        item.SetValue(tag::kBoundingBoxAnnotationUnits, Word(kUnits, text.boundingBoxUnits));
        WritePlace(item, tag::kBoundingBoxTopLeftHandCorner, text.boundingBoxTopLeft);
        WritePlace(item, tag::kBoundingBoxBottomRightHandCorner, text.boundingBoxBottomRight);
        item.SetValue(tag::kBoundingBoxTextHorizontalJustification,
                      Word(kJustifications, text.horizontalJustification));
    }
    item.SetValue(tag::kUnformattedTextValue, text.textValue, -1);
    return item;
}

void WritePoints(CDcmItem& item, const CPtrArray& points) {
    bool isFirst = true;
    for (int i = 0; i < points.GetSize(); ++i) {
        const auto& point = *static_cast<const GSPSPoint*>(points[i]);
        if (std::exchange(isFirst, false)) {
            item.SetValue(tag::kGraphicData, point.x);
        } else {
            item.SetNextValue(tag::kGraphicData, point.x);
        }
        item.SetNextValue(tag::kGraphicData, point.y);
    }
}

CDcmItem GraphicItem(const GSPSGraphicObject& graphic) {
    CDcmItem item = NewItem();
    item.SetValue(tag::kGraphicAnnotationUnits, Word(kUnits, graphic.annotationUnits));
    item.SetValue(tag::kGraphicDimensions, "2");
    item.SetValue(tag::kNumberOfGraphicPoints, graphic.pointCount);
    WritePoints(item, graphic.points);
    item.SetValue(tag::kGraphicType, Word(kTypes, graphic.graphicType));
    item.SetValue(tag::kGraphicFilled, YesOrNo(graphic.filled));
    return item;
}

template <class Object>
void WriteObjects(CDcmItem& annotation, std::uint32_t tag, const CPtrArray& objects,
                  CDcmItem (*itemOf)(const Object&)) {
    SequenceWriter items(annotation, tag);
    for (int i = 0; i < objects.GetSize(); ++i) {
        CDcmItem item = itemOf(*static_cast<const Object*>(objects[i]));
        items.Add(item);
    }
}

bool HasAnnotations(const CXGSPSInfo& info) {
    return info.textObjects.GetSize() > 0 || info.graphicObjects.GetSize() > 0;
}

}  // namespace

int CXGSPSObject::SetGraphicAnnotationModule(CXGSPSInfo** infos, int count, CDcmObject* target) {
    SequenceWriter annotations(*target, tag::kGraphicAnnotationSequence);
    for (const CXGSPSInfo* info : std::span(infos, static_cast<std::size_t>(count))) {
        if (!HasAnnotations(*info)) continue;
        CDcmItem item = ItemForImage(*info);
        item.SetValue(tag::kGraphicLayer, kLayer);
        WriteObjects(item, tag::kTextObjectSequence, info->textObjects, TextItem);
        WriteObjects(item, tag::kGraphicObjectSequence, info->graphicObjects, GraphicItem);
        annotations.Add(item);
    }
    return 1;
}

int CXGSPSObject::SetGraphicLayerModule(CXGSPSInfo*, CDcmObject* target) {
    CDcmItem layer = NewItem();
    layer.SetValue(tag::kGraphicLayer, kLayer);
    layer.SetValue(tag::kGraphicLayerOrder, "1");
    target->SetValue(tag::kGraphicLayerSequence, &layer);
    return 1;
}

}  // namespace quorvex
