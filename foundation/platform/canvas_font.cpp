#include "foundation/platform/canvas_font.h"

#include <cairo-ft.h>
#include <memory>
#include <new>

namespace quorvex {

namespace {

// The file is named outright: a search for fonts would read the environment and write caches.
constexpr const char* kFontFile = QUORVEX_CANVAS_FONT;

void ThrowWithoutMemory(FT_Error error) {
    if (error == FT_Err_Out_Of_Memory) throw std::bad_alloc();
}

struct Release {
    void operator()(FT_Library library) const noexcept { FT_Done_FreeType(library); }
};

/// Null without a usable file; without memory it throws, and the next one who asks tries again.
cairo_font_face_t* LoadFont() {
    FT_Library opened = nullptr;
    ThrowWithoutMemory(FT_Init_FreeType(&opened));
    std::unique_ptr<FT_LibraryRec_, Release> library(opened);
    FT_Face face = nullptr;
    const FT_Error error = library ? FT_New_Face(opened, kFontFile, 0, &face) : 1;
    ThrowWithoutMemory(error);
    if (error != 0) return nullptr;
    cairo_font_face_t* const font = cairo_ft_font_face_create_for_ft_face(face, 0);
    if (cairo_font_face_status(font) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    static_cast<void>(library.release());  // for the life of the process, like the font
    return font;
}

}  // namespace

cairo_font_face_t* CanvasFont() {
    static cairo_font_face_t* const font = LoadFont();
    return font;
}

}  // namespace quorvex
