#include "pipeline/layers/annotation_drawing.h"

#include "foundation/platform/canvas.h"
#include "foundation/platform/surface.h"
#include "pipeline/layers/annotation_text.h"
#include "presentation/graphic_layers.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

void DrawGraphic(Canvas& canvas, const GSPSGraphicObject& graphic, const AnnotationPlace& place) {
    const DrawnShape shape = ShapeOf(graphic, place);
    if (shape.outline.empty()) return;
    if (shape.isFilled) canvas.Area(shape.outline);
    if (shape.outline.size() == 1) {
        canvas.Dot(shape.outline.front());
    } else {
        canvas.Line(shape.outline);
    }
}

CanvasPoint NearestIn(const SurfaceArea& area, CanvasPoint point) {
    return {std::clamp(point.x, area.left, area.right), std::clamp(point.y, area.top, area.bottom)};
}

void DrawAnchorLine(Canvas& canvas, CanvasPoint anchor, const SurfaceArea& text) {
    if (!std::isfinite(anchor.x) || !std::isfinite(anchor.y)) return;
    const CanvasPoint line[] = {anchor, NearestIn(text, anchor)};
    if (line[0].x != line[1].x || line[0].y != line[1].y) canvas.Line(line);
}

void DrawText(Canvas& canvas, const GSPSTextObject& text, const AnnotationPlace& place) {
    const auto placed = PlaceText(text, place, canvas);
    if (!placed) return;
    if (text.anchorVisible != 0 && text.anchorPoint != nullptr) {
        const CanvasPoint anchor{text.anchorPoint[0], text.anchorPoint[1]};
        DrawAnchorLine(canvas, place(anchor, text.anchorUnits), placed->area);
    }
    for (const PlacedLine& line : placed->lines) {
        canvas.Text(line.utf8, line.baseline, placed->fontSize);
    }
}

/// Calls `draw` with each element of one of a record's arrays.
template <class Element, class Draw>
void ForEach(const CPtrArray& elements, Draw&& draw) {
    for (int i = 0; i < elements.GetSize(); ++i) {
        draw(*static_cast<const Element*>(elements.GetAt(i)));
    }
}

bool HasAnnotations(const CXGSPSInfo& record) {
    return record.textObjects.GetSize() != 0 || record.graphicObjects.GetSize() != 0;
}

/// Where a layer lies among a record's layers; behind them all for one that is not there.
class LayerRanks {
public:
    explicit LayerRanks(const CXGSPSInfo& record) : count_(record.graphicLayers.size()) {
        for (std::size_t i = 0; i < count_; ++i) {
            ranks_.try_emplace(record.graphicLayers[i].name, i);
        }
    }
    [[nodiscard]] std::size_t Of(const CString& name) const {
        const auto found = ranks_.find(name);
        return found != ranks_.end() ? found->second : count_;
    }

private:
    std::size_t count_;
    std::map<CString, std::size_t> ranks_;
};

/// The elements of one of a record's arrays, layer by layer.
template <class Element>
class ByLayer {
public:
    ByLayer(const CPtrArray& elements, const LayerRanks& ranks) {
        ForEach<Element>(elements, [&](const Element& element) {
            elements_.emplace_back(ranks.Of(element.graphicLayer), &element);
        });
        std::ranges::stable_sort(elements_, {}, &Ranked::first);
    }
    /// Hands over, once for each layer and in rising order, those that lie in layer `rank`.
    template <class Draw>
    void Take(std::size_t rank, Draw&& draw) {
        for (; next_ < elements_.size() && elements_[next_].first == rank; ++next_) {
            draw(*elements_[next_].second);
        }
    }

private:
    using Ranked = std::pair<std::size_t, const Element*>;
    std::vector<Ranked> elements_;
    std::size_t next_ = 0;
};

}  // namespace

void DrawAnnotations(const CXGSPSInfo& record, const AnnotationPlace& place,
                     const DrawingSurface& surface) {
    if (!HasAnnotations(record)) return;
    Canvas canvas({surface.width, surface.height});
    ForEach<GSPSGraphicObject>(record.graphicObjects,
                               [&](const auto& graphic) { DrawGraphic(canvas, graphic, place); });
    ForEach<GSPSTextObject>(record.textObjects,
                            [&](const auto& text) { DrawText(canvas, text, place); });
    canvas.PutOnto(surface);
}

void DrawAnnotationLayers(const CXGSPSInfo& record, const AnnotationPlace& place,
                          const DrawingSurface& surface) {
    if (!HasAnnotations(record)) return;
    const LayerRanks ranks(record);
    ByLayer<GSPSGraphicObject> graphics(record.graphicObjects, ranks);
    ByLayer<GSPSTextObject> texts(record.textObjects, ranks);
    Canvas canvas({surface.width, surface.height});
    for (std::size_t rank = 0; rank <= record.graphicLayers.size(); ++rank) {
        const bool isLayer = rank < record.graphicLayers.size();
        canvas.SetInk(ColourOf(isLayer ? record.graphicLayers[rank] : GSPSGraphicLayer()));
        graphics.Take(rank, [&](const auto& graphic) { DrawGraphic(canvas, graphic, place); });
        texts.Take(rank, [&](const auto& text) { DrawText(canvas, text, place); });
    }
    canvas.PutOnto(surface);
}

}  // namespace quorvex
