/// The tree of verbs and options as data, for help, man pages and completions alike.
#pragma once

#include "tools/verbs/verb_texts.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace quorvex::tools {

/// One option, or one positional argument.
struct ArgumentPage {
    std::vector<std::string> names;  ///< "-o", "--output"; "FILE" for a positional
    std::string takes;               ///< "WxH", "png|jpeg"; empty for a flag
    std::string help;
    std::string byDefault;  ///< empty for none
    bool isRequired = false;
    bool isRepeated = false;

    /// "png" and "jpeg" of "png|jpeg"; empty where it takes any text.
    [[nodiscard]] std::vector<std::string> Choices() const;
    /// Help, and the default behind it.
    [[nodiscard]] std::string WholeHelp() const;
};

struct VerbPage {
    VerbText text;
    std::vector<ArgumentPage> positionals;
    std::vector<ArgumentPage> options;
};

struct Manual {
    std::vector<ArgumentPage> options;  ///< of the command itself
    std::vector<VerbPage> verbs;
};

/// Verbs without a group are left out.
[[nodiscard]] Manual ManualOf(const CLI::App& tree);
[[nodiscard]] VerbPage PageOf(const CLI::App& verb);

// What is made of it.

/// For a terminal of 80 columns.
[[nodiscard]] std::string HelpText(const Manual& manual);
[[nodiscard]] std::string HelpText(const VerbPage& verb);
/// Sources of quorvex.1 and quorvex-VERB.1.
[[nodiscard]] std::string ManPage(const Manual& manual);
[[nodiscard]] std::string ManPage(const VerbPage& verb);
[[nodiscard]] std::string BashCompletion(const Manual& manual);
[[nodiscard]] std::string ZshCompletion(const Manual& manual);
[[nodiscard]] std::string FishCompletion(const Manual& manual);

}  // namespace quorvex::tools
