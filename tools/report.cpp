#include "tools/report.h"

#include "quorvex/Limits.h"
#include "quorvex/Types.h"
#include "tools/progress.h"
#include "tools/trouble.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quorvex::tools {
namespace {

bool IsControl(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

}  // namespace

EnvironmentFailure SystemFailure(std::string_view what) {
    const int error = errno;
    return EnvironmentFailure(std::string(what) + ": " + std::strerror(error), error);
}

EnvironmentFailure PathFailure(const std::filesystem::path& path, const std::error_code& failure) {
    return EnvironmentFailure(path.string() + ": " + failure.message());
}

std::string Printable(std::string_view text) {
    const CString decoded(text);
    CString printable;
    for (const char16_t c : decoded.View()) {
        if (IsControl(c)) {
            std::array<char, 8> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<unsigned>(c));
            printable += CString(escaped.data());
        } else {
            printable += CString(std::u16string_view(&c, 1));
        }
    }
    return printable.ToValidUtf8();
}

void Complain(std::string_view name, std::string_view sentence) {
    HideProgress();
    const std::string line = "quorvex: " + Printable(name) + ": " + Printable(sentence) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

const char* SentenceOf(QUORVEX_MESSAGE result) {
    const auto limit = LatestLimit();
    return limit == Limit::kNone ? ResultSentence(result) : LimitSentence(limit);
}

std::string NamedSentenceOf(QUORVEX_MESSAGE result) {
    return std::string(ResultName(result)) + " (" + std::to_string(result) +
           "): " + SentenceOf(result);
}

ExitStatus ReportBadInput(const std::string& path, QUORVEX_MESSAGE result) {
    return ReportTrouble(path, TroubleOf(path, result));
}

void WriteToStandardOutput(std::string_view text) {
    HideProgress();
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw SystemFailure("standard output");
}

}  // namespace quorvex::tools
