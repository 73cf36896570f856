/// The two forms in which `quorvex info` shows a file.
#pragma once

#include "tools/info/element_filter.h"
#include "tools/info/image_summary.h"
#include "tools/trouble.h"

#include <string>
#include <vector>

namespace quorvex::tools {

/// Lines for a reader: the name, the summary, then every element ahead of the pixels; where tags
/// are wanted, the name and those elements.
std::string InfoAsText(const std::string& name, const ImageSummary& summary,
                       const CDcmObject& header, const std::vector<WantedTag>& wanted);

/// One line with one JSON object for a program.
std::string InfoAsJson(const std::string& name, const ImageSummary& summary,
                       const CDcmObject& header, const std::vector<WantedTag>& wanted);

/// The same for a file that could not be read.
std::string ErrorAsJson(const std::string& name, const Trouble& trouble);

}  // namespace quorvex::tools
