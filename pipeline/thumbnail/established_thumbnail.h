/// Thumbnails by the established rules: a window of their own, the frame stretched to the size.
#pragma once

#include "parser/parser_state.h"
#include "pipeline/thumbnail/thumbnail_image.h"

namespace quorvex {

/// The frame at its full size as bytes, then at the size of the thumbnail; colour as R, G, B.
/// Results: those of `GetAFrame`, `ReduceToBytes` and `CxImageProcessor::ResizeImage`.
[[nodiscard]] ThumbnailImage MakeEstablishedThumbnail(ParserState& parser,
                                                      const ThumbnailForm& form);

}  // namespace quorvex
