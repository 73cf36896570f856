/// Where annotations lie on a surface, and what lines they are.
#pragma once

#include "foundation/platform/canvas.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/Types.h"

#include <optional>
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

/// From image coordinates to a surface: the way that a render job takes the pixels, and then `Draw`.
///
/// A job scales by what its whole output size makes of the zoom, keeps the image's lower left corner,
/// cuts the width to a multiple of 4, mirrors what is left, and turns it.
class ImageToSurface {
public:
    /// @param result  size of the rendered image, none of it 0
    /// @param corner  where its upper left corner lies on the surface
    ImageToSurface(const RenderedView& view, CSize result, CPoint corner) noexcept;

    /// (0, 0) is the upper left corner of the upper left pixel.
    [[nodiscard]] CanvasPoint operator()(CanvasPoint image) const noexcept;

private:
    RenderedView view_;
    CanvasPoint scale_;
    CSize upright_;  ///< the result before it is turned
    CPoint corner_;
};

/// Where a record's displayed area lies when it has just been laid out in the view.
[[nodiscard]] SurfaceArea DisplayedArea(const CXGSPSInfo& record, const RenderedView& image,
                                        CSize viewSize) noexcept;

/// Both kinds of annotation coordinates.
struct AnnotationPlace {
    ImageToSurface image;
    SurfaceArea displayed;

    /// @param units  as annotations have it: 0 image coordinates, else fractions of the displayed area
    [[nodiscard]] CanvasPoint operator()(CanvasPoint point, int units) const noexcept;
};

/// One graphic object as lines.
struct DrawnShape {
    std::vector<CanvasPoint>
        outline;            ///< one point alone is a mark; a closed one ends where it began
    bool isFilled = false;  ///< only where it is closed
};

/// Points without a place are passed over, and so are those past the 65,535th. Circles and ellipses
/// are round on the surface. An outline without points where too few are left.
[[nodiscard]] DrawnShape ShapeOf(const GSPSGraphicObject& graphic, const AnnotationPlace& place);

}  // namespace quorvex
