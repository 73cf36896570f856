/// Reads back the lines that the command writes: JSON objects with no objects inside.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::tools {

/// The members of one object: strings decoded to UTF-8, everything else, arrays too, as it
/// stands. Nothing for a
/// text that is not one whole object of this kind.
std::optional<std::map<std::string, std::string>> ReadFlatJson(std::string_view text);

}  // namespace quorvex::tools
