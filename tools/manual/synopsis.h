/// How a verb and its options are typed.
#pragma once

#include "tools/manual/manual_page.h"

#include <string>

namespace quorvex::tools {

/// "-o, --output OUT"
inline std::string HeadOf(const ArgumentPage& argument) {
    std::string head;
    for (const auto& name : argument.names) head += (head.empty() ? "" : ", ") + name;
    if (!argument.names.front().starts_with('-')) return head + (argument.isRepeated ? "..." : "");
    return argument.takes.empty() ? head : head + ' ' + argument.takes;
}

/// "quorvex info [OPTION...] FILE..."
inline std::string SynopsisOf(const VerbPage& verb) {
    std::string text = "quorvex " + std::string(verb.text.name) + " [OPTION...]";
    for (const auto& argument : verb.positionals)
        text += argument.isRequired ? ' ' + HeadOf(argument) : " [" + HeadOf(argument) + ']';
    for (const auto& option : verb.options)
        if (option.isRequired) text += ' ' + option.names.front() + ' ' + option.takes;
    return text;
}

}  // namespace quorvex::tools
