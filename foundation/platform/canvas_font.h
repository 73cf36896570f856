/// The font that a canvas writes with.
#pragma once

#include <cairo.h>

namespace quorvex {

/// Null where the font's file is not there. It lasts as long as the process, and any number of
/// threads may use it.
[[nodiscard]] cairo_font_face_t* CanvasFont();

}  // namespace quorvex
