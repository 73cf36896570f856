#include "tools/state/state_arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace quorvex::tools {
namespace {

constexpr double kFarthest = 1 << 20;  // no image reaches that far

std::vector<std::string_view> SplitAt(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

// Nothing unless all parts are numbers that an image can have.
template <class Number>
std::vector<Number> NumbersIn(std::string_view text) {
    std::vector<Number> numbers;
    for (const auto part : SplitAt(text, ',')) {
        Number number{};
        const auto read = std::from_chars(part.data(), part.data() + part.size(), number);
        if (read.ec != std::errc{} || read.ptr != part.data() + part.size() ||
            !(std::abs(static_cast<double>(number)) <= kFarthest))
            return {};
        numbers.push_back(number);
    }
    return numbers;
}

ShutterShape PolygonOf(std::string_view text) {
    constexpr std::size_t kFewestVertices = 3;
    ShutterShape polygon{.kind = ShutterShape::Kind::kPolygon, .numbers = {}, .vertices = {}};
    for (const auto part : SplitAt(text, ';')) {
        const auto vertex = NumbersIn<int>(part);
        if (vertex.size() != 2) return {};
        polygon.vertices.push_back({vertex[1], vertex[0]});
    }
    return polygon.vertices.size() < kFewestVertices ? ShutterShape{} : polygon;
}

ShutterShape ShapeOf(ShutterShape::Kind kind, std::size_t count, std::string_view text) {
    ShutterShape shape{.kind = kind, .numbers = NumbersIn<int>(text), .vertices = {}};
    return shape.numbers.size() == count ? shape : ShutterShape{};
}

}  // namespace

CRect ParseArea(const std::string& text) {
    const auto numbers = NumbersIn<int>(text);
    if (numbers.size() != 4 || numbers[0] > numbers[2] || numbers[1] > numbers[3])
        throw WrongUsage("an area is LEFT,TOP,RIGHT,BOTTOM, as in 1,1,512,512, not " + text);
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

ShutterShape ParseShutter(const std::string& text) {
    const std::string_view all = text;
    const auto colon = std::min(all.find(':'), all.size());
    const auto kind = all.substr(0, colon);
    const auto numbers = all.substr(std::min(colon + 1, all.size()));
    ShutterShape shutter;
    if (kind == "rect") shutter = ShapeOf(ShutterShape::Kind::kRectangle, 4, numbers);
    if (kind == "circle") shutter = ShapeOf(ShutterShape::Kind::kCircle, 3, numbers);
    if (kind == "polygon") shutter = PolygonOf(numbers);
    if (shutter.kind == ShutterShape::Kind::kNone)
        throw WrongUsage(
            "a shutter is rect:LEFT,UPPER,RIGHT,LOWER, circle:ROW,COLUMN,RADIUS or "
            "polygon:ROW,COLUMN;ROW,COLUMN;..., not " +
            text);
    return shutter;
}

PlacedText ParseText(const std::string& text) {
    const auto first = text.find(',');
    const auto second = first == std::string::npos ? first : text.find(',', first + 1);
    const auto anchor = NumbersIn<double>(std::string_view(text).substr(0, second));
    if (second == std::string::npos || anchor.size() != 2 || second + 1 == text.size())
        throw WrongUsage("a text is X,Y,TEXT, as in 100,80,Nodule, not " + text);
    return {.anchor = {anchor[0], anchor[1]}, .text = text.substr(second + 1)};
}

std::vector<Position> ParsePolyline(const std::string& text) {
    std::vector<Position> points;
    for (const auto part : SplitAt(text, ';')) {
        const auto point = NumbersIn<double>(part);
        if (point.size() != 2)
            throw WrongUsage("a polyline is X,Y;X,Y;..., as in 1,1;20,30;40,1, not " + text);
        points.push_back({point[0], point[1]});
    }
    if (points.size() < 2) throw WrongUsage("a polyline has at least two points, not " + text);
    return points;
}

std::string ParseLabel(const std::string& text) {
    constexpr std::size_t kLongest = 16;
    constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _";
    if (text.empty() || text.size() > kLongest ||
        text.find_first_not_of(kAllowed) != std::string::npos)
        throw WrongUsage(
            "a label is up to 16 capital letters, digits, spaces and underscores, not " + text);
    return text;
}

}  // namespace quorvex::tools
