/// quorvex write-manual: man pages and completions for an installation.
#pragma once

#include "tools/report.h"

#include <CLI/CLI.hpp>
#include <string>

namespace quorvex::tools {

/// Writes them below a folder, each where a system keeps it below its "share": man/man1,
/// bash-completion/completions, zsh/site-functions, fish/vendor_completions.d.
ExitStatus WriteManual(const CLI::App& tree, const std::string& folder);

}  // namespace quorvex::tools
