/// Where annotations lie on a surface, and what lines they are.
#pragma once

#include "foundation/platform/canvas.h"
#include "pipeline/rendered_view.h"
#include "quorvex/Types.h"

#include <vector>

namespace quorvex {

class CXGSPSInfo;
struct GSPSGraphicObject;

/// A rectangle on a surface, in device pixels.
struct SurfaceArea {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
};

/// From image coordinates to a surface: the way that a render job takes the pixels, and then
/// `Draw`.
class ImageToSurface {
public:
    /// The way of a job by the established rules, which scales by the ratio of its whole output
    /// size to the image, keeps the image's lower left corner, cuts the width to a multiple of 4,
    /// mirrors what is left, and turns it.
    /// @param result  size of the rendered image, none of it 0
    /// @param corner  where its upper left corner lies on the surface
    ImageToSurface(const RenderedView& view, CSize result, CPoint corner) noexcept;

    /// The way of an image that is scaled to exactly `scaled`, turned clockwise by quarters, and
    /// mirrored after that. `corner` is where the upper left corner of all that comes to lie.
    [[nodiscard]] static ImageToSurface Placed(CSize image, CSize scaled, int quarterTurns,
                                               bool isMirrored, CPoint corner) noexcept;

    /// (0, 0) is the upper left corner of the upper left pixel.
    [[nodiscard]] CanvasPoint operator()(CanvasPoint image) const noexcept;

private:
    RenderedView view_;
    CanvasPoint scale_;
    CSize upright_;  ///< the result before it is turned
    CPoint corner_;
    bool isMirroredLast_ = false;
};

/// Where a record's displayed area lies when it has just been laid out in the view.
[[nodiscard]] SurfaceArea DisplayedArea(const CXGSPSInfo& record, const RenderedView& image,
                                        CSize viewSize) noexcept;

/// Both kinds of annotation coordinates.
struct AnnotationPlace {
    ImageToSurface image;
    SurfaceArea displayed;

    /// @param units  as annotations state it: 0 image coordinates, else fractions of the displayed
    ///               area
    [[nodiscard]] CanvasPoint operator()(CanvasPoint point, int units) const noexcept;
};

/// One graphic object as lines.
struct DrawnShape {
    /// A single point is a mark. A closed outline ends at its first point.
    std::vector<CanvasPoint> outline;
    bool isFilled = false;  ///< only where the outline is closed
};

/// Skips points that have no finite place, and those past the 65,535th. Circles and ellipses are
/// round on the surface. The outline is empty where too few points are left.
[[nodiscard]] DrawnShape ShapeOf(const GSPSGraphicObject& graphic, const AnnotationPlace& place);

}  // namespace quorvex
