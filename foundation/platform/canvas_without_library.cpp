// The canvas of a build without the drawing library: it draws nothing.
#include "foundation/platform/canvas.h"

namespace quorvex {

struct Canvas::Sheet {};

bool Canvas::IsAvailable() noexcept {
    return false;
}

Canvas::Canvas(CSize) {}
Canvas::~Canvas() = default;

void Canvas::SetInk(const std::array<std::uint8_t, 3>&) noexcept {}
void Canvas::Line(std::span<const CanvasPoint>) {}
void Canvas::Area(std::span<const CanvasPoint>) {}
void Canvas::Dot(CanvasPoint) {}
void Canvas::Text(const std::string&, CanvasPoint, double) {}
double Canvas::TextWidth(const std::string&, double) {
    return 0.0;
}
void Canvas::PutOnto(const DrawingSurface&) {}

}  // namespace quorvex
