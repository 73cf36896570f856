/// quorvex thumbnail: small pictures of images.
#pragma once

#include "quorvex/Types.h"
#include "tools/report.h"

#include <string>
#include <vector>

namespace quorvex::tools {

struct ThumbnailArguments {
    std::vector<std::string> files;  ///< files and folders
    std::string output;              ///< a folder when there are several
    CSize size{128, 128};            ///< pixels that the picture has to fit into
    std::string format;              ///< png, jpeg or jpeg-lossless; empty: by the output's name
    int frame = 0;
    bool dataRange = false;  ///< window by the range of the data, not by the header
};
ExitStatus Thumbnail(const ThumbnailArguments& arguments);

}  // namespace quorvex::tools
