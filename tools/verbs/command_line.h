/// The command line: its verbs, their options, and what the user wants.
#pragma once

#include "tools/report.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::tools {

/// What the chosen verb is to do once the whole line has been read.
using Work = std::function<ExitStatus()>;

/// The tree of all verbs and options. Help, manual and completions are made from it.
class CommandLine {
public:
    CommandLine();

    /// Reads a line and answers what to do: run a verb, or show help or the version. Throws
    /// WrongUsage, which names what is wrong and the nearest that would be right.
    Work Read(int count, const char* const* texts);

    [[nodiscard]] const CLI::App& Tree() const { return app_; }

private:
    template <class Arguments>
    void AddVerb(const char* name, ExitStatus (*run)(const Arguments&));
    void AddManual();
    void RefuseUnknownVerb(const std::vector<std::string>& words) const;
    [[noreturn]] void Refuse(const CLI::ParseError& error) const;

    CLI::App app_;
    Work work_;
};

}  // namespace quorvex::tools
