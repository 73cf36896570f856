#include "foundation/platform/canvas.h"

#include "foundation/platform/canvas_font.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <cairo.h>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <numbers>

namespace quorvex {

namespace {

constexpr int kLongestCanvasSide = 32767;
constexpr double kFarthest = 1e6;
constexpr double kLineWidth = 1.5;
constexpr double kRimWidth = 3.5;
constexpr double kDotRadius = 3.0;
constexpr double kRimOpacity = 0.7;
constexpr double kTint = 0.35;
constexpr double kLargestFont = 1000.0;

// What things cost, in pixels of line.
constexpr std::size_t kPiece = 128;  // bends of a line that are drawn at once
constexpr double kCostOfBend = 8.0;
constexpr double kCostOfDot = 20.0;
constexpr double kCostOfCharacter = 2.0;  // times the font size

struct Release {
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};

/// After its first error the library draws nothing more.
void ThrowWithoutMemory(cairo_t* context) {
    if (cairo_status(context) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
}

bool IsPlace(CanvasPoint point) {
    return !std::isnan(point.x) && !std::isnan(point.y);
}

CanvasPoint Clamped(CanvasPoint point) {
    return {std::clamp(point.x, -kFarthest, kFarthest), std::clamp(point.y, -kFarthest, kFarthest)};
}

/// Of a line between two places, as far as it crosses the rows and columns of a surface.
double CostOf(CanvasPoint from, CanvasPoint to, CSize surface) {
    const auto clamped = [](double value, int most) {
        return value > 0.0 ? std::min<double>(value, most) : 0.0;  // NaN is 0
    };
    return kCostOfBend + std::abs(clamped(to.x, surface.cx) - clamped(from.x, surface.cx)) +
           std::abs(clamped(to.y, surface.cy) - clamped(from.y, surface.cy));
}

void Trace(cairo_t* context, std::span<const CanvasPoint> points) {
    cairo_new_path(context);
    for (const CanvasPoint point : points) {
        if (!IsPlace(point)) continue;
        const auto [x, y] = Clamped(point);
        cairo_line_to(context, x, y);
    }
}

// A long line goes in pieces: the work grows faster than the number of points that are on a row.
void StrokePieces(cairo_t* context, std::span<const CanvasPoint> points) {
    for (; points.size() > 1; points = points.subspan(std::min(kPiece, points.size() - 1))) {
        Trace(context, points.first(std::min(kPiece + 1, points.size())));
        cairo_stroke(context);
    }
}

bool IsUsable(const DrawingSurface& surface) {
    return surface.pixels != nullptr && (surface.bytesPerPixel == 3 || surface.bytesPerPixel == 4);
}

// A sheet's pixel is 0xAARRGGBB with its colours multiplied by its opacity.
void BlendPixel(std::uint32_t drawn, unsigned char* pixel) {
    const std::uint32_t clear = 255 - (drawn >> 24);
    for (unsigned channel = 0; channel < 3; ++channel) {
        const std::uint32_t colour = drawn >> (8 * channel) & 0xFF;
        const std::uint32_t ground = (pixel[channel] * clear + 127) / 255;
        pixel[channel] = static_cast<unsigned char>(std::min(colour + ground, 255U));
    }
}

void BlendRow(const unsigned char* drawn, unsigned char* pixels, int count, int pixelBytes) {
    for (int x = 0; x < count; ++x, drawn += 4, pixels += pixelBytes) {
        std::uint32_t value = 0;
        std::memcpy(&value, drawn, sizeof(value));
        if (value != 0) BlendPixel(value, pixels);
    }
}

}  // namespace

struct Canvas::Sheet {
    std::unique_ptr<cairo_surface_t, Release> surface;
    std::unique_ptr<cairo_t, Release> context;

    CSize extent;
    double budget = kMostDrawnPixels;
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;

    void TakeInk(const std::array<std::uint8_t, 3>& ink) noexcept {
        red = ink[0] / 255.0;
        green = ink[1] / 255.0;
        blue = ink[2] / 255.0;
    }
    /// Black around what is lighter than mid-grey, else white.
    void UseRim() const {
        const double rim = 0.299 * red + 0.587 * green + 0.114 * blue < 0.5 ? 1.0 : 0.0;
        cairo_set_source_rgba(context.get(), rim, rim, rim, kRimOpacity);
        cairo_set_line_width(context.get(), kRimWidth);
    }
    void UseInk(double opacity = 1.0) const {
        cairo_set_source_rgba(context.get(), red, green, blue, opacity);
        cairo_set_line_width(context.get(), kLineWidth);
    }
    void FillPath() const {
        UseRim();
        cairo_stroke_preserve(context.get());
        UseInk();
        cairo_fill(context.get());
    }

    [[nodiscard]] bool Spend(double cost) {
        if (cost > budget) return false;
        budget -= cost;
        return true;
    }
    /// As many of the points as there is budget for a line through.
    [[nodiscard]] std::span<const CanvasPoint> Affordable(std::span<const CanvasPoint> points) {
        std::size_t count = std::min<std::size_t>(points.size(), 1);
        while (count < points.size() && Spend(CostOf(points[count - 1], points[count], extent))) {
            ++count;
        }
        return points.first(count);
    }
    [[nodiscard]] bool Choose(double size) const {
        if (CanvasFont() == nullptr || !(size > 0.0)) return false;
        cairo_set_font_face(context.get(), CanvasFont());
        cairo_set_font_size(context.get(), std::min(size, kLargestFont));
        return true;
    }
};

bool Canvas::IsAvailable() noexcept {
    return true;
}

Canvas::Canvas(CSize size) {
    if (size.cx < 1 || size.cy < 1 || size.cx > kLongestCanvasSide || size.cy > kLongestCanvasSide)
        return;
    auto sheet = std::make_unique<Sheet>();
    sheet->extent = size;
    sheet->surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.cx, size.cy));
    sheet->context.reset(cairo_create(sheet->surface.get()));
    ThrowWithoutMemory(sheet->context.get());
    if (cairo_status(sheet->context.get()) != CAIRO_STATUS_SUCCESS) return;
    cairo_set_line_join(sheet->context.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(sheet->context.get(), CAIRO_LINE_CAP_ROUND);
    sheet_ = std::move(sheet);
}

Canvas::~Canvas() = default;

void Canvas::SetInk(const std::array<std::uint8_t, 3>& ink) noexcept {
    if (sheet_) sheet_->TakeInk(ink);
}

void Canvas::Line(std::span<const CanvasPoint> points) {
    if (!sheet_) return;
    const auto line = sheet_->Affordable(points);
    sheet_->UseRim();
    StrokePieces(sheet_->context.get(), line);
    sheet_->UseInk();
    StrokePieces(sheet_->context.get(), line);
}

void Canvas::Area(std::span<const CanvasPoint> points) {
    if (!sheet_ || points.size() > kMostAreaCorners) return;
    if (sheet_->Affordable(points).size() < points.size()) return;
    cairo_t* const context = sheet_->context.get();
    Trace(context, points);
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_EVEN_ODD);
    sheet_->UseInk(kTint);
    cairo_fill(context);
}

void Canvas::Dot(CanvasPoint place) {
    if (!sheet_ || !IsPlace(place) || !sheet_->Spend(kCostOfDot)) return;
    const auto [x, y] = Clamped(place);
    cairo_new_path(sheet_->context.get());
    cairo_arc(sheet_->context.get(), x, y, kDotRadius, 0.0, 2 * std::numbers::pi);
    sheet_->FillPath();
}

void Canvas::Text(const std::string& utf8, CanvasPoint baseline, double size) {
    if (!sheet_ || !IsPlace(baseline) || !sheet_->Choose(size)) return;
    if (!sheet_->Spend(kCostOfCharacter * size * static_cast<double>(utf8.size()))) return;
    const auto [x, y] = Clamped(baseline);
    cairo_t* const context = sheet_->context.get();
    cairo_new_path(context);
    cairo_move_to(context, x, y);
    cairo_text_path(context, utf8.c_str());
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_WINDING);
    sheet_->FillPath();
}

double Canvas::TextWidth(const std::string& utf8, double size) {
    if (!sheet_ || !sheet_->Choose(size)) return 0.0;
    cairo_text_extents_t extents{};
    cairo_text_extents(sheet_->context.get(), utf8.c_str(), &extents);
    return extents.x_advance;
}

void Canvas::PutOnto(const DrawingSurface& surface) {
    if (!sheet_ || !IsUsable(surface)) return;
    ThrowWithoutMemory(sheet_->context.get());
    cairo_surface_t* const sheet = sheet_->surface.get();
    cairo_surface_flush(sheet);
    const unsigned char* const drawn = cairo_image_surface_get_data(sheet);
    if (drawn == nullptr) return;
    const std::ptrdiff_t step = cairo_image_surface_get_stride(sheet);
    const int columns = std::min(surface.width, cairo_image_surface_get_width(sheet));
    const int rows = std::min(surface.height, cairo_image_surface_get_height(sheet));
    for (int y = 0; y < rows; ++y) {
        BlendRow(drawn + y * step, surface.pixels + y * surface.rowBytes, columns,
                 surface.bytesPerPixel);
    }
}

}  // namespace quorvex
