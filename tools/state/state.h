/// quorvex state: how images are to be shown, as an object of its own.
#pragma once

#include "quorvex/Types.h"
#include "tools/arguments.h"
#include "tools/report.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

/// A position in an image: column and row, counted from 1.
struct Position {
    double x = 0.0;
    double y = 0.0;
};
struct ShutterShape {
    enum class Kind { kNone, kRectangle, kCircle, kPolygon };
    Kind kind = Kind::kNone;
    std::vector<int> numbers;  ///< left, upper, right, lower; or centre row, column, radius
    std::vector<CPoint> vertices;
};
struct PlacedText {
    Position anchor;
    std::string text;
};
struct StateArguments {
    std::vector<std::string> images;  ///< of one study
    std::string output;
    std::string label = "QUORVEX";
    std::optional<Window> window;
    bool invert = false;
    int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
    bool flip = false;
    std::optional<CRect> area;  ///< left, top, right, bottom, the last ones included
    ShutterShape shutter;
    std::vector<PlacedText> texts;
    std::vector<std::vector<Position>> polylines;
};
ExitStatus State(const StateArguments& arguments);

}  // namespace quorvex::tools
