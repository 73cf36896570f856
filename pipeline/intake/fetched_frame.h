/// A frame as the parser hands it over.
#pragma once

#include "pipeline/pixel_block.h"
#include "pipeline/pixel_header.h"
#include "quorvex/ResultCodes.h"

namespace quorvex {

class CxDcmParser;

struct FetchedFrame {
    PixelBlock pixels;
    PixelHeader header;
};

/// @return what the parser answers, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA where its header's image
///         is not usable; `frame` is as it was then
[[nodiscard]] QUORVEX_MESSAGE FetchFrame(CxDcmParser& source, int frameIndex, FetchedFrame& frame);

}  // namespace quorvex
