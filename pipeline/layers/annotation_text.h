/// Where the lines of an annotation's text stand.
#pragma once

#include "pipeline/layers/annotation_geometry.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex {

struct GSPSTextObject;

/// One line of text, and where its baseline begins.
struct PlacedLine {
    std::string utf8;
    CanvasPoint baseline;
};

struct PlacedText {
    std::vector<PlacedLine> lines;
    double fontSize = 0.0;
    SurfaceArea area;  ///< that the lines take
};

/// The text upright: in its box, from the top of it, justified as it says; or, without a box, to the
/// right of its anchor. Nothing without a usable box or anchor. Lines past the 64th are left out.
///
/// @param canvas  measures the lines
[[nodiscard]] std::optional<PlacedText> PlaceText(const GSPSTextObject& text,
                                                  const AnnotationPlace& place, Canvas& canvas);

}  // namespace quorvex
