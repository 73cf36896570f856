/// Annotations drawn over an image.
#pragma once

#include "pipeline/layers/annotation_geometry.h"

namespace quorvex {

class CXGSPSInfo;
struct DrawingSurface;

/// Draws the graphics of a record, then its texts, all in white. What cannot be placed is left out,
/// and so are all in a build without a drawing library.
void DrawAnnotations(const CXGSPSInfo& record, const AnnotationPlace& place,
                     const DrawingSurface& surface);

/// The same layer by layer, each in its colour; what lies in none of the record's layers comes
/// last, in white.
void DrawAnnotationLayers(const CXGSPSInfo& record, const AnnotationPlace& place,
                          const DrawingSurface& surface);

}  // namespace quorvex
