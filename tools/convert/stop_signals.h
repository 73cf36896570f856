/// How often the user has asked the command to end: Ctrl-C, SIGTERM or a terminal that went away.
#pragma once

namespace quorvex::tools {

/// From now on these signals are counted; the third one ends the process.
void CountStopSignals();
[[nodiscard]] int StopSignals() noexcept;

}  // namespace quorvex::tools
