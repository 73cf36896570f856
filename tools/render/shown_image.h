/// The image that a pipeline is to show.
#pragma once

#include "quorvex/CXDIPP.h"
#include "tools/render/render.h"

namespace quorvex::tools {

/// A side of a view that never limits the fit.
inline constexpr int kNoLimit = 1 << 30;

/// Opens the file and the frame that are asked for, in a view without limits. Palette indices are
/// shown in their colours; under a presentation state, which is about grey values, as they are.
QUORVEX_MESSAGE OpenImage(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments);

/// The size of the opened image at a zoom of 1, in pixels of its own shape.
CSize DisplayedSize(CXDIPP& pipeline);

}  // namespace quorvex::tools
