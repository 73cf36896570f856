/// What somebody may have meant to type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::tools {

/// The word that takes the fewest letters to change, add, take away or swap with their neighbours;
/// empty where none is near enough to be meant.
std::string Nearest(std::string_view typed, const std::vector<std::string>& words);

}  // namespace quorvex::tools
