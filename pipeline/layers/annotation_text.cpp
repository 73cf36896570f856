#include "pipeline/layers/annotation_text.h"

#include "foundation/types/limits.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace quorvex {

namespace {

constexpr double kFontSize = 14.0;
constexpr double kSmallestFont = 10.0;
constexpr double kLargestFont = 24.0;
constexpr double kLineHeight = 1.2;  // of the font size
constexpr double kAscent = 0.95;     // likewise
constexpr double kGapToAnchor = 16.0;

enum Justification { kLeft = 0, kRight = 1, kCentre = 2 };

std::string Printable(std::string_view line) {
    std::string printable;
    for (const char c : line.substr(0, kLongestTextLine)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) printable += c;
        if (c == '\t') printable += ' ';
    }
    return printable;
}

std::vector<std::string> LinesOf(const CString& text) {
    const std::string whole = text.ToValidUtf8();
    std::vector<std::string> lines;
    std::string_view rest = whole;
    while (lines.size() < kMostTextLines) {
        const std::size_t end = std::min(rest.find_first_of("\r\n\f"), rest.size());
        lines.push_back(Printable(rest.substr(0, end)));
        if (end == rest.size()) break;
        const bool isPair = rest[end] == '\r' && end + 1 < rest.size() && rest[end + 1] == '\n';
        rest.remove_prefix(end + (isPair ? 2 : 1));
    }
    return lines;
}

bool IsFinite(const SurfaceArea& area) {
    return std::isfinite(area.left) && std::isfinite(area.top) && std::isfinite(area.right) &&
           std::isfinite(area.bottom);
}

// A turn exchanges the corners that a box is given by.
std::optional<SurfaceArea> BoxOf(const GSPSTextObject& text, const AnnotationPlace& place) {
    if (text.boundingBoxTopLeft == nullptr || text.boundingBoxBottomRight == nullptr) {
        return std::nullopt;
    }
    const double* const one = text.boundingBoxTopLeft;
    const double* const other = text.boundingBoxBottomRight;
    const CanvasPoint a = place({one[0], one[1]}, text.boundingBoxUnits);
    const CanvasPoint b = place({other[0], other[1]}, text.boundingBoxUnits);
    const SurfaceArea box{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x),
                          std::max(a.y, b.y)};
    if (!IsFinite(box)) return std::nullopt;
    return box;
}

double LineStart(const SurfaceArea& box, double width, int justification) {
    if (justification == kRight) return box.right - width;
    if (justification == kCentre) return (box.left + box.right - width) / 2;
    return box.left;
}

PlacedText InBox(const GSPSTextObject& text, const SurfaceArea& box, double fontSize,
                 Canvas& canvas) {
    PlacedText placed;
    placed.fontSize = fontSize;
    placed.area = {box.right, box.top, box.left, box.top};
    for (std::string& line : LinesOf(text.textValue)) {
        const double width = canvas.TextWidth(line, fontSize);
        const double start = LineStart(box, width, text.horizontalJustification);
        placed.area.left = std::min(placed.area.left, start);
        placed.area.right = std::max(placed.area.right, start + width);
        placed.lines.push_back({std::move(line), {start, placed.area.bottom + kAscent * fontSize}});
        placed.area.bottom += kLineHeight * fontSize;
    }
    return placed;
}

double FontSizeFor(const GSPSTextObject& text, const SurfaceArea& box) {
    const auto lines = static_cast<double>(LinesOf(text.textValue).size());
    return std::clamp((box.bottom - box.top) / (lines * kLineHeight), kSmallestFont, kLargestFont);
}

}  // namespace

std::optional<PlacedText> PlaceText(const GSPSTextObject& text, const AnnotationPlace& place,
                                    Canvas& canvas) {
    if (const auto box = BoxOf(text, place)) {
        return InBox(text, *box, FontSizeFor(text, *box), canvas);
    }
    if (text.anchorPoint == nullptr) return std::nullopt;
    const CanvasPoint anchor = place({text.anchorPoint[0], text.anchorPoint[1]}, text.anchorUnits);
    const double left = anchor.x + kGapToAnchor;
    const double top = anchor.y - kLineHeight * kFontSize / 2;
    const SurfaceArea beside{left, top, left, top};
    if (!IsFinite(beside)) return std::nullopt;
    return InBox(text, beside, kFontSize, canvas);
}

}  // namespace quorvex
