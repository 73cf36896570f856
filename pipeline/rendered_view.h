/// How an image lay when it was rendered.
#pragma once

#include "quorvex/Types.h"

namespace quorvex {

struct RenderedView {
    CSize imageSize;
    double aspectRatio = 1.0;  ///< pixel height over pixel width; above 0
    int rotation = 0;          ///< 0, 90, 180 or 270 degrees clockwise
    bool isFlipped = false;    ///< left to right, before the rotation
};

}  // namespace quorvex
