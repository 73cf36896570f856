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
    double fontSize = 0.0;  ///< in device pixels
    SurfaceArea area;       ///< what the lines cover
};

/// The text upright: in its box, from the top, with the justification that it states; without a
/// box, to the right of its anchor. Nothing without a usable box or anchor. Lines past the 64th are
/// left out.
///
/// @param canvas  measures the lines
[[nodiscard]] std::optional<PlacedText> PlaceText(const GSPSTextObject& text,
                                                  const AnnotationPlace& place, Canvas& canvas);

}  // namespace quorvex
