/// How the command tells its user what went wrong, and what it answers the shell.
#pragma once

#include "quorvex/ResultCodes.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvex::tools {

/// What the command answers the shell. Of several troubles the highest number counts.
enum ExitStatus : int {
    kAllDone = 0,
    kBadInput = 1,     ///< at least one input was bad; the others are done
    kWrongUsage = 2,   ///< the arguments make no sense
    kEnvironment = 3,  ///< disk, memory, input or output: worth another try
};

/// Arguments that make no sense together or by themselves.
struct WrongUsage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The disk, the memory or a device refused; nothing is wrong with the input.
struct EnvironmentFailure : std::runtime_error {
    explicit EnvironmentFailure(const std::string& sentence, int error = 0)
        : std::runtime_error(sentence), systemError(error) {}
    int systemError;  ///< errno of that moment, 0 where it was not the system
};

/// "`what`: <the system's sentence for errno>", to be thrown.
EnvironmentFailure SystemFailure(std::string_view what);
/// "`path`: <the sentence of that failure>", to be thrown.
EnvironmentFailure PathFailure(const std::filesystem::path& path, const std::error_code& failure);

/// One line on standard error: "quorvex: NAME: SENTENCE". Control characters of a name are shown,
/// never sent.
void Complain(std::string_view name, std::string_view sentence);

/// Why an operation failed: the sentence of the limit that this thread's input met, or the code's.
const char* SentenceOf(QUORVEX_MESSAGE result);
/// "NAME (NUMBER): sentence".
std::string NamedSentenceOf(QUORVEX_MESSAGE result);

/// One line on standard error that tells what is behind the result of an operation on a file (see
/// TroubleOf); answers kBadInput, or kEnvironment where the file itself is not to blame.
ExitStatus ReportBadInput(const std::string& path, QUORVEX_MESSAGE result);

/// UTF-8 text for one line of a terminal: control characters become \xNN, and bytes that are not
/// UTF-8 become U+FFFD.
std::string Printable(std::string_view text);

/// Sends text to standard output.
void WriteToStandardOutput(std::string_view text);

}  // namespace quorvex::tools
