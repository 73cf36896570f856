/// What stands behind a CxDcmParser.
#pragma once

#include "parser/frames/frame_index.h"
#include "parser/parsed_file.h"

#include <memory>

namespace quorvex {

struct ParserState {
    ParserState() = default;
    ParserState(const ParserState& other) : file(other.file), rules(other.rules) {}
    ParserState& operator=(const ParserState&) = delete;

    ParsedFile file;
    Rules rules = Rules::kEstablished;
    FrameQuality quality = FrameQuality::kNone;  ///< of the latest fetch
    std::unique_ptr<FrameIndex> frameIndex;      ///< of the latest fetch, or none
};

}  // namespace quorvex
