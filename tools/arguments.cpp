#include "tools/arguments.h"

#include "tools/json.h"
#include "tools/report.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace quorvex::tools {
namespace {

constexpr int kLongestSide = 65535;
constexpr double kLargestView = 1 << 28;  // pixels: no screen or printer has more
constexpr double kSmallestZoom = 0.001;
constexpr double kLargestZoom = 100.0;
constexpr double kLargestWindow = 1e15;
constexpr int kFarthestPan = 1 << 24;
constexpr int kFarthestCorner = 1 << 30;

template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc{} || stopped != end) return std::nullopt;
    return number;
}

template <class Number>
struct Pair {
    Number first;
    Number second;
};

template <class Number>
std::optional<Pair<Number>> ParsePair(std::string_view text, char separator) {
    const auto position = text.find(separator);
    if (position == std::string_view::npos) return std::nullopt;
    const auto first = ParseNumber<Number>(text.substr(0, position));
    const auto second = ParseNumber<Number>(text.substr(position + 1));
    if (!first || !second) return std::nullopt;
    return Pair<Number>{*first, *second};
}

bool IsWithin(double value, double limit) {
    return std::abs(value) <= limit;
}

}  // namespace

CSize ParseSize(const std::string& text) {
    const auto size = ParsePair<int>(text, 'x');
    if (!size || size->first < 1 || size->second < 1 || size->first > kLongestSide ||
        size->second > kLongestSide || 1.0 * size->first * size->second > kLargestView)
        throw WrongUsage("a size is WIDTHxHEIGHT, as in 800x600, not " + text);
    return {size->first, size->second};
}

Window ParseWindow(const std::string& text) {
    const auto window = ParsePair<double>(text, ',');
    if (!window || !IsWithin(window->first, kLargestWindow) ||
        !IsWithin(window->second, kLargestWindow) || !(window->second > 0))
        throw WrongUsage("a window is CENTER,WIDTH, as in 40,400, not " + text);
    return {window->first, window->second};
}

CPoint ParsePoint(const std::string& text) {
    const auto point = ParsePair<int>(text, ',');
    if (!point || !IsWithin(point->first, kFarthestPan) || !IsWithin(point->second, kFarthestPan))
        throw WrongUsage("a pan is X,Y in device pixels, as in -10,20, not " + text);
    return {point->first, point->second};
}

CRect ParseRegion(const std::string& text) {
    const auto size = text.find(',', text.find(',') + 1);
    const auto corner = ParsePair<int>(std::string_view(text).substr(0, size), ',');
    const auto extent = size == std::string::npos
                            ? std::nullopt
                            : ParsePair<int>(std::string_view(text).substr(size + 1), ',');
    const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
    if (!corner || !extent || !IsWithin(corner->first, kFarthestCorner) ||
        !IsWithin(corner->second, kFarthestCorner) || !isSide(extent->first) ||
        !isSide(extent->second) || 1.0 * extent->first * extent->second > kLargestView)
        throw WrongUsage("a region is X,Y,WIDTH,HEIGHT, as in 2048,1024,800,600, not " + text);
    return {corner->first, corner->second, corner->first + extent->first,
            corner->second + extent->second};
}

int ParseRotation(const std::string& text) {
    const auto degrees = ParseNumber<int>(text);
    if (!degrees || *degrees % 90 != 0)
        throw WrongUsage("a rotation is a multiple of 90 degrees, not " + text);
    return (*degrees % 360 + 360) % 360;
}

double ParseZoom(const std::string& text) {
    const auto zoom = ParseNumber<double>(text);
    if (!zoom || !(*zoom >= kSmallestZoom && *zoom <= kLargestZoom))
        throw WrongUsage("a zoom is a factor from " + JsonNumber(kSmallestZoom) + " to " +
                         JsonNumber(kLargestZoom) + ", not " + text);
    return *zoom;
}

}  // namespace quorvex::tools
