#include "foundation/dicom/model/tags.h"
#include "presentation/words.h"
#include "states/attribute_writing.h"
#include "states/state_writer.h"

#include <utility>

namespace quorvex {
namespace {

/// All annotations of an object lie in one layer.
constexpr const char* kLayer = "LAYER1";

void WritePlace(CDcmItem& item, std::uint32_t tag, const double* place) {
    if (place != nullptr) WritePair(item, tag, place[0], place[1]);
}

CDcmItem TextItem(const GSPSTextObject& text) {
    CDcmItem item = NewItem();
    if (text.hasAnchor != 0) {
        item.SetValue(tag::kAnchorPointAnnotationUnits, WordAt(text.anchorUnits, kUnitWords));
        WritePlace(item, tag::kAnchorPoint, text.anchorPoint);
        item.SetValue(tag::kAnchorPointVisibility, YesOrNo(text.anchorVisible));
    }
    if (text.hasBoundingBox != 0) {
        item.SetValue(tag::kBoundingBoxAnnotationUnits, WordAt(text.boundingBoxUnits, kUnitWords));
        WritePlace(item, tag::kBoundingBoxTopLeftHandCorner, text.boundingBoxTopLeft);
        WritePlace(item, tag::kBoundingBoxBottomRightHandCorner, text.boundingBoxBottomRight);
        item.SetValue(tag::kBoundingBoxTextHorizontalJustification,
                      WordAt(text.horizontalJustification, kJustificationWords));
    }
    item.SetValue(tag::kUnformattedTextValue, text.textValue);
    return item;
}

void WritePoints(CDcmItem& item, const CPtrArray& points) {
    ValueWriter values(item, tag::kGraphicData);
    for (int i = 0; i < points.GetSize(); ++i) {
        const auto& point = *static_cast<const GSPSPoint*>(points[i]);
        values.Add(point.x);
        values.Add(point.y);
    }
}

CDcmItem GraphicItem(const GSPSGraphicObject& graphic) {
    CDcmItem item = NewItem();
    item.SetValue(tag::kGraphicAnnotationUnits, WordAt(graphic.annotationUnits, kUnitWords));
    item.SetValue(tag::kGraphicDimensions, "2");
    item.SetValue(tag::kNumberOfGraphicPoints, graphic.pointCount);
    WritePoints(item, graphic.points);
    item.SetValue(tag::kGraphicType, WordAt(graphic.graphicType, kGraphicTypeWords));
    item.SetValue(tag::kGraphicFilled, YesOrNo(graphic.filled));
    return item;
}

template <class Object>
void WriteObjects(CDcmItem& annotation, std::uint32_t tag, const CPtrArray& objects,
                  CDcmItem (*itemOf)(const Object&)) {
    ValueWriter items(annotation, tag);
    for (int i = 0; i < objects.GetSize(); ++i) {
        items.Add(itemOf(*static_cast<const Object*>(objects[i])));
    }
}

bool HasAnnotations(const CXGSPSInfo& info) {
    return info.textObjects.GetSize() > 0 || info.graphicObjects.GetSize() > 0;
}

}  // namespace

void StateWriter::SetGraphicAnnotationModule() {
    ValueWriter annotations(target_, tag::kGraphicAnnotationSequence);
    for (const CXGSPSInfo* info : infos_) {
        if (!HasAnnotations(*info)) continue;
        CDcmItem item = ItemForImage(*info);
        item.SetValue(tag::kGraphicLayer, kLayer);
        WriteObjects(item, tag::kTextObjectSequence, info->textObjects, TextItem);
        WriteObjects(item, tag::kGraphicObjectSequence, info->graphicObjects, GraphicItem);
        annotations.Add(std::move(item));
    }
}

void StateWriter::SetGraphicLayerModule() {
    CDcmItem layer = NewItem();
    layer.SetValue(tag::kGraphicLayer, kLayer);
    layer.SetValue(tag::kGraphicLayerOrder, "1");
    target_.SetValue(tag::kGraphicLayerSequence, &layer);
}

}  // namespace quorvex
