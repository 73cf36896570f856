/// quorvex render: an image as a viewer would show it.
#pragma once

#include "quorvex/Types.h"
#include "tools/arguments.h"
#include "tools/report.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

struct RenderArguments {
    std::vector<std::string> files;  ///< one, unless a region is asked for
    std::string output;
    int frame = 0;
    bool allFrames = false;     ///< each into a numbered file
    std::optional<CSize> view;  ///< device pixels; by default the image's own size
    std::optional<Window> window;
    std::optional<VoiFunction> function;  ///< of `window`; by default the file's
    std::optional<int> voi;  ///< which of the file's tables and windows, counted from 1
    Interpolation interpolation = Interpolation::kLinear;
    std::optional<double> zoom;  ///< device pixels for one image pixel
    CPoint pan;                  ///< device pixels
    int rotation = 0;            ///< degrees clockwise: 0, 90, 180 or 270
    bool flip = false;
    bool invert = false;
    bool overlays = false;        ///< burns in all overlay planes
    std::string state;            ///< presentation state; empty for none
    bool shutter = false;         ///< paints the shutter over what it hides
    bool annotations = false;     ///< draws the annotations over the view
    std::optional<CRect> region;  ///< of a picture in tiles, instead of a frame
    int level = 0;                ///< of that picture
    int opticalPath = 0;
    int focalPlane = 0;
    bool result = false;  ///< the rendered result itself, not the view
};
ExitStatus Render(const RenderArguments& arguments);

}  // namespace quorvex::tools
