/// The standard's storage classes.
#pragma once

#include <string_view>

namespace quorvex::tools {

/// "CT Image Storage" for its UID; empty for a UID that is no storage class of the standard.
[[nodiscard]] std::string_view SopClassName(std::string_view uid) noexcept;

}  // namespace quorvex::tools
