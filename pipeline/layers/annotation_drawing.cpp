#include "pipeline/layers/annotation_drawing.h"

#include "foundation/platform/canvas.h"
#include "foundation/platform/surface.h"
#include "pipeline/layers/annotation_text.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>

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

}  // namespace quorvex
