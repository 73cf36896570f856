/// What the command can do: the arguments of each verb, and the verb itself.
///
/// A verb answers an exit status, complains about bad inputs itself, and throws WrongUsage or
/// EnvironmentFailure for the rest.
#pragma once

#include "quorvex/Types.h"
#include "tools/file_list.h"
#include "tools/report.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

struct InfoArguments {
    std::vector<std::string> files;
    bool asJson = false;  ///< one JSON object a file, one a line
};
ExitStatus Info(const InfoArguments& arguments);

struct FrameArguments {
    std::string file;
    std::string output;
    int frame = 0;
    bool all = false;
};
ExitStatus Frame(const FrameArguments& arguments);

struct Window {
    int centre = 0;
    int width = 0;
};
struct RenderArguments {
    std::string file;
    std::string output;
    int frame = 0;
    std::optional<CSize> view;  ///< device pixels
    std::optional<Window> window;
    std::optional<double> zoom;  ///< device pixels for one image pixel
    CPoint pan;                  ///< device pixels
    int rotation = 0;            ///< degrees clockwise: 0, 90, 180 or 270
    bool flip = false;
    bool invert = false;
    bool overlays = false;     ///< burns in all overlay planes
    std::string state;         ///< presentation state; empty for none
    bool shutter = false;      ///< paints the shutter over what it hides
    bool annotations = false;  ///< draws the annotations over the view
    bool result = false;       ///< the rendered result itself, not the view
};
ExitStatus Render(const RenderArguments& arguments);

struct ThumbnailArguments {
    std::vector<std::string> files;  ///< files and folders
    std::string output;              ///< a folder when there are several
    CSize size{128, 128};            ///< pixels that the picture has to fit into
    std::string format = "png";      ///< png, jpeg or jpeg-lossless
    int frame = 0;
    bool dataRange = false;  ///< window by the range of the data, not by the header
};
ExitStatus Thumbnail(const ThumbnailArguments& arguments);

struct ConvertArguments {
    std::vector<std::string> files;  ///< files and folders
    std::string output;              ///< a folder when there may be several
    std::string target;              ///< as ConvertTargetOf has it
    std::optional<int> quality;
    unsigned jobs = 1;  ///< 0: one for each core
    std::string list;   ///< a file of paths, - for standard input; empty for none
    bool isNulSeparated = false;
    Shard shard;
    std::string manifest;  ///< empty for none
    bool isUnverified = false;
};
ExitStatus Convert(const ConvertArguments& arguments);

struct CaptureArguments {
    std::string source;                 ///< whose patient and study the pictures belong to
    std::vector<std::string> pictures;  ///< PNG files of one size, a frame each
    std::string output;
    std::string target = "explicit";  ///< as ConvertTargetOf has it
};
ExitStatus Capture(const CaptureArguments& arguments);

/// Positions of a presentation state: columns and rows of the image, counted from 1.
struct Position {
    double x = 0.0;
    double y = 0.0;
};
struct ShutterWish {
    enum class Shape { kNone, kRectangle, kCircle, kPolygon };
    Shape shape = Shape::kNone;
    std::vector<int> numbers;  ///< left, upper, right, lower; or centre row, column, radius
    std::vector<CPoint> vertices;
};
struct TextWish {
    Position anchor;
    std::string text;
};
struct StateArguments {
    std::vector<std::string> images;  ///< of one series
    std::string output;
    std::string label = "QUORVEX";
    std::optional<Window> window;
    bool invert = false;
    int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
    bool flip = false;
    std::optional<CRect> area;  ///< left, top, right, bottom, the last ones included
    ShutterWish shutter;
    std::vector<TextWish> texts;
    std::vector<std::vector<Position>> polylines;
};
ExitStatus State(const StateArguments& arguments);

struct PhantomArguments {
    std::string folder;
    bool small = false;
};
ExitStatus Phantom(const PhantomArguments& arguments);

}  // namespace quorvex::tools
