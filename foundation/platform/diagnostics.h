/// Lines of diagnostics, to the sink that the host has set or to the system log.
#pragma once

#include <string_view>

namespace quorvex {

/// Writes one line (UTF-8) unchanged. Never throws and may be called from any thread.
void WriteDebugLine(std::string_view line) noexcept;

}  // namespace quorvex
