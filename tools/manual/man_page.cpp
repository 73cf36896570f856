// Man pages, in the macros of man(7).
#include "tools/manual/manual_page.h"
#include "tools/manual/synopsis.h"

#include <sstream>

namespace quorvex::tools {
namespace {

// Text as it is to be read: no macro at the start of a line, hyphens that can be copied.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else if (c == '|') {
            escaped += "|\\:";  // a line may end there
        } else {
            escaped += c;
        }
    }
    return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Italic(std::string_view text) {
    return "\\fI" + Escaped(text) + "\\fR";
}

std::string Section(const char* title, const std::string& text) {
    return std::string(".SH ") + title + '\n' + text;
}

std::string Head(const std::string& page, std::string_view summary) {
    std::string name = page;
    for (char& c : name)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    // Long words of choices would tear a line apart, and be hyphenated.
    return ".\\\" Made from the command's own options.\n.TH " + Escaped(name) +
           " 1 \"\" \"quorvex " QUORVEX_VERSION "\" \"QuorvexU\"\n.ad l\n.nh\n" +
           Section("NAME", Escaped(page) + " \\- " + Escaped(summary) + '\n');
}

std::string Row(const std::string& head, std::string_view text) {
    return ".TP\n" + head + '\n' + Escaped(text) + '\n';
}

std::string Rows(const std::vector<ArgumentPage>& arguments) {
    std::string text;
    for (const auto& argument : arguments) {
        const bool isOption = argument.names.front().starts_with('-');
        std::string head;
        for (const auto& name : argument.names)
            head += (head.empty() ? "" : ", ") + (isOption ? Bold(name) : Italic(name));
        if (isOption && !argument.takes.empty()) head += ' ' + Italic(argument.takes);
        text += Row(head, argument.WholeHelp());
    }
    return text;
}

std::string ExitStatus() {
    std::string text;
    for (const auto& status : kStatusTexts)
        text += Row(Bold(std::to_string(status.status)), status.meaning);
    return Section("EXIT STATUS", text);
}

std::string Examples(const VerbPage& verb) {
    std::string text;
    for (const auto& example : verb.text.examples)
        text += ".TP\n" + Bold(example.line) + '\n' + Escaped(example.what) + '\n';
    return Section("EXAMPLES", text);
}

std::string LowerFirst(std::string_view summary) {
    std::string text(summary);
    text.front() = static_cast<char>(text.front() - 'A' + 'a');
    return text;
}

}  // namespace

std::string ManPage(const VerbPage& verb) {
    const std::string name = "quorvex-" + std::string(verb.text.name);
    return Head(name, LowerFirst(verb.text.summary)) +
           Section("SYNOPSIS", Escaped(SynopsisOf(verb)) + '\n') +
           Section("DESCRIPTION", Escaped(verb.text.about) + '\n') +
           Section("ARGUMENTS", Rows(verb.positionals)) + Section("OPTIONS", Rows(verb.options)) +
           Section("FORMATS", Escaped(verb.text.formats) + '\n') + Examples(verb) + ExitStatus() +
           Section("SEE ALSO", ".BR quorvex (1)\n");
}

std::string ManPage(const Manual& manual) {
    std::string verbs;
    std::string others;
    for (const auto& verb : manual.verbs) {
        verbs += Row(Bold(verb.text.name), verb.text.summary);
        others += (others.empty() ? "" : " ,\n") + std::string(".BR quorvex\\-") +
                  std::string(verb.text.name) + " (1)";
    }
    return Head("quorvex", kCommandSummary) +
           Section("SYNOPSIS", Bold("quorvex") + ' ' + Italic("VERB") + " [" + Italic("OPTION") +
                                   "...] ...\n") +
           Section("DESCRIPTION", Escaped(kCommandAbout) + '\n') + Section("VERBS", verbs) +
           Section("OPTIONS", Rows(manual.options)) + ExitStatus() +
           Section("SEE ALSO", others + '\n');
}

}  // namespace quorvex::tools
