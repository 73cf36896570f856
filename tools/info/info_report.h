/// The two forms in which `quorvex info` shows a file.
#pragma once

#include "tools/info/image_summary.h"

#include <string>

namespace quorvex::tools {

/// Lines for a reader: the name, the summary, then every element ahead of the pixels.
std::string InfoAsText(const std::string& path, const ImageSummary& summary,
                       const CDcmObject& header);

/// One line with one JSON object for a program.
std::string InfoAsJson(const std::string& path, const ImageSummary& summary,
                       const CDcmObject& header);

/// The same for a file that could not be read.
std::string ErrorAsJson(const std::string& path, QUORVEX_MESSAGE result);

}  // namespace quorvex::tools
