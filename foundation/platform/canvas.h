/// Lines, areas and text laid over a host's pixels, with soft edges.
#pragma once

#include "quorvex/Types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quorvex {

/// A place on a surface in device pixels; the centre of the upper left pixel is (0.5, 0.5).
struct CanvasPoint {
    double x = 0.0;
    double y = 0.0;
};

/// Collects what is drawn and puts it onto a surface in one go: with a rim, dark or light, so
/// that it can be read on any ground.
///
/// Coordinates may lie anywhere: NaN is skipped, and what lies beyond a million pixels counts as
/// a million. Once a million pixels of line have been drawn, the rest is left out, so
/// that a wild object cannot keep a host waiting. A canvas that cannot work (a build without the
/// drawing library, a side below 1 or above 32,767 pixels, no memory) draws nothing. Text needs the
/// font that the build found; without it no text is drawn, and it has no width.
///
/// One canvas serves one thread at a time, different ones may work at once.
class Canvas {
public:
    /// Whether this build has the drawing library.
    [[nodiscard]] static bool IsAvailable() noexcept;

    explicit Canvas(CSize size);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    /// Red, green, blue of what is drawn from now on; white at first.
    void SetInk(const std::array<std::uint8_t, 3>& ink) noexcept;
    /// A line through the points.
    void Line(std::span<const CanvasPoint> points);
    /// A tint over what the points enclose; none for more than 4,096 points.
    void Area(std::span<const CanvasPoint> points);
    /// A mark that a line of one point would be.
    void Dot(CanvasPoint place);

    /// A line of text that starts at `baseline`; `size` is that of the font in pixels.
    void Text(const std::string& utf8, CanvasPoint baseline, double size);
    /// Pixels that the line of text takes.
    [[nodiscard]] double TextWidth(const std::string& utf8, double size);

    /// Lays all that was drawn over the surface's pixels.
    void PutOnto(const DrawingSurface& surface);

private:
    struct Sheet;
    std::unique_ptr<Sheet> sheet_;  ///< null where the canvas cannot work
};

}  // namespace quorvex
