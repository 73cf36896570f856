/// A frame as the parser hands it over.
#pragma once

#include "pipeline/pixel_block.h"
#include "pipeline/pixel_header.h"
#include "quorvex/ResultCodes.h"

#include <optional>

namespace quorvex {

class CxDcmParser;

struct FetchedFrame {
    PixelBlock pixels;
    PixelHeader header;
    std::optional<CSize> whole;  ///< columns and rows of a frame that came with less of them
};

/// @return what the parser answers, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA where its header's image
///         is not usable; `frame` is as it was then
/// @param least  the frame may have less than its columns and rows, but at least these, as
///               CxDcmParser::GetAReducedFrame() has it; its header says what came. Nothing for all
[[nodiscard]] QUORVEX_MESSAGE FetchFrame(CxDcmParser& source, int frameIndex, FetchedFrame& frame,
                                         std::optional<CSize> least = std::nullopt);

}  // namespace quorvex
