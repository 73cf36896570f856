/// What a pipeline shows, as a picture.
#pragma once

#include "quorvex/CXDIPP.h"
#include "tools/png_writer.h"

namespace quorvex::tools {

/// The rendered image as it lies in a view of that size, on black. One channel where `isGrey`.
Picture DrawView(CXDIPP& pipeline, CSize view, bool isGrey);

/// The rendered result itself. Size and channels are those of GetResultImageInfo.
Picture CopyResult(CXDIPP& pipeline, CSize size, int channels);

}  // namespace quorvex::tools
