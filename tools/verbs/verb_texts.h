/// What help and manual say of each verb, beside its options.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace quorvex::tools {

/// A line to type, and what it does.
struct Example {
    std::string_view line;
    std::string_view what;
};

struct VerbText {
    std::string_view name;
    std::string_view summary;  ///< one line, without a full stop
    std::string_view about;
    std::string_view formats;  ///< what it reads and writes
    std::array<Example, 2> examples;
};

/// All verbs, in the order in which help shows them.
[[nodiscard]] std::span<const VerbText> VerbTexts();
/// One of them; the verb must be there.
[[nodiscard]] const VerbText& TextOfVerb(std::string_view name);

/// What the command as a whole is.
inline constexpr std::string_view kCommandSummary = "reads, decodes and renders medical images";
inline constexpr std::string_view kCommandAbout =
    "Shows what DICOM files hold, draws them as a viewer would, brings them into other codings, "
    "and "
    "makes new objects. Pictures are those that the DICOM standard defines. An output is written "
    "under a temporary name and takes its place when it is whole; an input is never written over.";

/// An exit status and its meaning, for every verb.
struct StatusText {
    int status;
    std::string_view meaning;
};
inline constexpr std::array kStatusTexts = {
    StatusText{0, "all was done"},
    StatusText{1,
               "at least one input was bad; one line each on standard error tells why, and the "
               "others are done"},
    StatusText{2, "the command line makes no sense; nothing was done"},
    StatusText{3,
               "a file or folder could not be opened, the disk or the memory refused, or the "
               "command was stopped: worth another try"},
};

}  // namespace quorvex::tools
