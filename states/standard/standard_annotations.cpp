// Annotations, in the layers in which they were read.
#include "foundation/dicom/model/attributes.h"
#include "presentation/words.h"
#include "states/attribute_writing.h"
#include "states/standard/standard_state.h"

#include <algorithm>
#include <span>
#include <utility>

namespace quorvex {
namespace {

/// Of annotations that name no layer.
constexpr const char* kOwnLayer = "LAYER1";

enum GraphicTypePlace : std::int32_t { kPoint = 1, kPolyline, kInterpolated, kCircle, kEllipse };

/// What of one image lies in one layer.
struct LayerContent {
    CString layer;
    std::vector<const GSPSTextObject*> texts = {};
    std::vector<const GSPSGraphicObject*> graphics = {};
    std::vector<const GSPSCompoundGraphic*> compounds = {};
};

CString NameOf(const CString& layer) {
    return layer.IsEmpty() ? CString(kOwnLayer) : layer;
}

/// Objects of one kind keep their order: a layer that comes up again gets another item.
template <class Object>
void Place(std::vector<LayerContent>& items, std::span<const Object* const> objects,
           std::vector<const Object*> LayerContent::*list) {
    std::size_t at = 0;
    for (const Object* object : objects) {
        const CString layer = NameOf(object->graphicLayer);
        while (at < items.size() && items[at].layer != layer) ++at;
        if (at == items.size()) items.push_back({.layer = layer});
        (items[at].*list).push_back(object);
    }
}

bool IsUsable(const GSPSTextObject& text) {
    return !text.textValue.IsEmpty();
}

bool IsUsable(const GSPSGraphicObject& graphic) {
    return graphic.graphicType >= kPoint && graphic.graphicType <= kEllipse &&
           graphic.points.GetSize() > 0;
}

template <class Object>
std::vector<const Object*> UsableIn(const CPtrArray& array) {
    std::vector<const Object*> objects;
    for (int i = 0; i < array.GetSize(); ++i) {
        const auto* object = static_cast<const Object*>(array[i]);
        if (IsUsable(*object)) objects.push_back(object);
    }
    return objects;
}

std::vector<LayerContent> ContentOf(const CXGSPSInfo& info) {
    std::vector<const GSPSCompoundGraphic*> compounds = {};
    for (const auto& compound : info.compoundGraphics) compounds.push_back(&compound);
    const auto texts = UsableIn<GSPSTextObject>(info.textObjects);
    const auto graphics = UsableIn<GSPSGraphicObject>(info.graphicObjects);
    std::vector<LayerContent> items;
    Place(items, std::span(texts), &LayerContent::texts);
    Place(items, std::span(graphics), &LayerContent::graphics);
    Place(items, std::span(std::as_const(compounds)), &LayerContent::compounds);
    return items;
}

CDcmItem Begun(const std::vector<CDcmItem>& others) {
    return others.empty() ? NewItem() : others.front();
}

void WriteAnchor(const GSPSTextObject& text, CDcmItem& item) {
    item.SetValue(tag::kAnchorPointAnnotationUnits, WordAt(text.anchorUnits, kUnitWords));
    WritePair(item, tag::kAnchorPoint, text.anchorPoint[0], text.anchorPoint[1]);
    item.SetValue(tag::kAnchorPointVisibility, YesOrNo(text.anchorVisible));
}

void WriteBox(const GSPSTextObject& text, CDcmItem& item) {
    item.SetValue(tag::kBoundingBoxAnnotationUnits, WordAt(text.boundingBoxUnits, kUnitWords));
    WritePair(item, tag::kBoundingBoxTopLeftHandCorner, text.boundingBoxTopLeft[0],
              text.boundingBoxTopLeft[1]);
    WritePair(item, tag::kBoundingBoxBottomRightHandCorner, text.boundingBoxBottomRight[0],
              text.boundingBoxBottomRight[1]);
    item.SetValue(tag::kBoundingBoxTextHorizontalJustification,
                  WordAt(text.horizontalJustification, kJustificationWords, "LEFT"));
}

/// A text has to have a place: one that has none stands in the first pixel.
void WriteFirstPixel(CDcmItem& item) {
    item.SetValue(tag::kAnchorPointAnnotationUnits, kUnitWords[0]);
    WritePair(item, tag::kAnchorPoint, 1.0, 1.0);
    item.SetValue(tag::kAnchorPointVisibility, "N");
}

CDcmItem TextItem(const GSPSTextObject& text) {
    CDcmItem item = Begun(text.otherAttributes);
    const bool hasAnchor = text.hasAnchor != 0 && text.anchorPoint != nullptr;
    const bool hasBox = text.hasBoundingBox != 0 && text.boundingBoxTopLeft != nullptr &&
                        text.boundingBoxBottomRight != nullptr;
    if (hasAnchor) WriteAnchor(text, item);
    if (hasBox) WriteBox(text, item);
    if (!hasAnchor && !hasBox) WriteFirstPixel(item);
    item.SetValue(tag::kUnformattedTextValue, text.textValue);
    return item;
}

const GSPSPoint& PointAt(const GSPSGraphicObject& graphic, int index) {
    return *static_cast<const GSPSPoint*>(graphic.points[index]);
}

/// Only what encloses something can be filled.
bool IsClosed(const GSPSGraphicObject& graphic) {
    if (graphic.graphicType >= kCircle) return true;
    const GSPSPoint& first = PointAt(graphic, 0);
    const GSPSPoint& last = PointAt(graphic, graphic.points.GetSize() - 1);
    return graphic.graphicType != kPoint && graphic.points.GetSize() > 1 && first.x == last.x &&
           first.y == last.y;
}

CDcmItem GraphicItem(const GSPSGraphicObject& graphic) {
    CDcmItem item = Begun(graphic.otherAttributes);
    item.SetValue(tag::kGraphicAnnotationUnits, WordAt(graphic.annotationUnits, kUnitWords));
    item.SetValue(tag::kGraphicDimensions, 2);
    item.SetValue(tag::kNumberOfGraphicPoints, graphic.points.GetSize());
    ValueWriter values(item, tag::kGraphicData);
    for (int i = 0; i < graphic.points.GetSize(); ++i) {
        values.Add(PointAt(graphic, i).x);
        values.Add(PointAt(graphic, i).y);
    }
    item.SetValue(tag::kGraphicType, WordAt(graphic.graphicType, kGraphicTypeWords));
    if (IsClosed(graphic)) item.SetValue(tag::kGraphicFilled, YesOrNo(graphic.filled));
    return item;
}

CDcmItem CompoundItem(const GSPSCompoundGraphic& compound) {
    return compound.item;
}

template <class Object>
void WriteObjects(CDcmItem& item, std::uint32_t tag, const std::vector<const Object*>& objects,
                  CDcmItem (*itemOf)(const Object&)) {
    ValueWriter items(item, tag);
    for (const Object* object : objects) items.Add(itemOf(*object));
}

CDcmItem LayerItem(const GSPSGraphicLayer& layer) {
    constexpr std::uint16_t kWhite = 65535;
    CDcmItem item = NewItem();
    item.SetValue(tag::kGraphicLayer, layer.name);
    item.SetValue(tag::kGraphicLayerOrder, layer.order);
    if (layer.greyValue != kWhite)
        item.SetValue(tag::kGraphicLayerRecommendedDisplayGrayscaleValue, layer.greyValue);
    if (layer.hasColour != 0) {
        ValueWriter lab(item, tag::kGraphicLayerRecommendedDisplayCIELabValue);
        for (const unsigned short value : layer.cieLab) lab.Add(value);
    }
    if (!layer.description.IsEmpty())
        item.SetValue(tag::kGraphicLayerDescription, layer.description);
    return item;
}

/// The layers of all records, and those that annotations name besides, above them.
class Layers {
public:
    void Know(const GSPSGraphicLayer& layer) {
        if (!Has(layer.name)) layers_.push_back(layer);
    }
    void Need(const CString& name) {
        if (Has(name)) return;
        std::int32_t highest = 0;
        for (const auto& layer : layers_) highest = std::max(highest, layer.order);
        GSPSGraphicLayer layer;
        layer.name = name;
        layer.order = highest + 1;
        layers_.push_back(layer);
    }
    void Write(CDcmObject& target) const {
        ValueWriter items(target, tag::kGraphicLayerSequence);
        for (const auto& layer : layers_) items.Add(LayerItem(layer));
    }

private:
    [[nodiscard]] bool Has(const CString& name) const {
        return std::ranges::find(layers_, name, &GSPSGraphicLayer::name) != layers_.end();
    }
    std::vector<GSPSGraphicLayer> layers_;
};

/// The layers in which overlays and curves are drawn.
std::vector<CString> ActivationLayers(const CDcmObject& target) {
    std::vector<CString> names;
    for (const auto first : {tag::kFirstCurveGroup, tag::kFirstOverlayGroup}) {
        constexpr auto kSpan = tag::kLastOverlayGroup - tag::kFirstOverlayGroup;
        for (auto group = first; group <= first + kSpan; group += 2) {
            auto name = Read<CString>(target, tag::InGroup(group, tag::kOverlayActivationLayer));
            if (name && !name->IsEmpty()) names.push_back(*std::move(name));
        }
    }
    return names;
}

}  // namespace

void WriteAnnotations(const StateDraft& draft) {
    Layers layers;
    for (const ImageState& image : draft.images) {
        for (const auto& layer : image.record->graphicLayers) layers.Know(layer);
    }
    ValueWriter annotations(draft.target, tag::kGraphicAnnotationSequence);
    for (const ImageState& image : draft.images) {
        for (const LayerContent& content : ContentOf(*image.record)) {
            CDcmItem item = image.Item();
            item.SetValue(tag::kGraphicLayer, content.layer);
            WriteObjects(item, tag::kTextObjectSequence, content.texts, TextItem);
            WriteObjects(item, tag::kGraphicObjectSequence, content.graphics, GraphicItem);
            WriteObjects(item, tag::kCompoundGraphicSequence, content.compounds, CompoundItem);
            annotations.Add(std::move(item));
            layers.Need(content.layer);
        }
    }
    for (const CString& layer : ActivationLayers(draft.target)) layers.Need(layer);
    layers.Write(draft.target);
    ValueWriter groups(draft.target, tag::kGraphicGroupSequence);
    for (const CDcmItem& group : draft.First().graphicGroups) groups.Add(CDcmItem(group));
}

}  // namespace quorvex
