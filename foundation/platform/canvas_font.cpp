#include "foundation/platform/canvas_font.h"

#include <cairo-ft.h>

namespace quorvex {

namespace {

// The file is named outright: a search for fonts would read the environment and write caches.
constexpr const char* kFontFile = QUORVEX_CANVAS_FONT;

cairo_font_face_t* LoadFont() {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return nullptr;
    FT_Face face = nullptr;
    if (FT_New_Face(library, kFontFile, 0, &face) == 0) {
        return cairo_ft_font_face_create_for_ft_face(face, 0);
    }
    FT_Done_FreeType(library);
    return nullptr;
}

}  // namespace

cairo_font_face_t* CanvasFont() {
    static cairo_font_face_t* const font = LoadFont();
    return font;
}

}  // namespace quorvex
