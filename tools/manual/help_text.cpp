// Help on a terminal.
#include "tools/manual/manual_page.h"
#include "tools/manual/synopsis.h"

#include <sstream>

namespace quorvex::tools {
namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kHelpColumn = 28;

std::string Spaces(std::size_t count) {
    std::string spaces;
    spaces.append(count, ' ');
    return spaces;
}

// Words in lines that begin at a column; `used` columns of the first one are taken already.
std::string Wrapped(std::string_view text, std::size_t column, std::size_t used = 0) {
    std::string lines;
    std::size_t length = used;
    std::istringstream words{std::string(text)};
    for (std::string word; words >> word;) {
        if (length > column && length + 1 + word.size() > kColumns) {
            lines += '\n';
            length = 0;
        }
        const auto gap = length <= column ? column - length : std::size_t{1};
        lines += Spaces(gap) + word;
        length += gap + word.size();
    }
    return lines + '\n';
}

std::string Row(const std::string& head, std::string_view text) {
    const std::string start = "  " + head;
    const bool isShort = start.size() + 2 <= kHelpColumn;
    return start + (isShort ? "" : "\n") + Wrapped(text, kHelpColumn, isShort ? start.size() : 0);
}

std::string Rows(const char* title, const std::vector<ArgumentPage>& arguments) {
    if (arguments.empty()) return {};
    std::string text = std::string("\n") + title + ":\n";
    for (const auto& argument : arguments) text += Row(HeadOf(argument), argument.WholeHelp());
    return text;
}

std::string StatusRows() {
    std::string text = "\nExit status:\n";
    for (const auto& status : kStatusTexts)
        text += Row(std::to_string(status.status), status.meaning);
    return text;
}

}  // namespace

std::string HelpText(const VerbPage& verb) {
    std::string text = std::string(verb.text.summary) + "\n\nUsage: " + SynopsisOf(verb) + "\n\n" +
                       Wrapped(verb.text.about, 0) + Rows("Arguments", verb.positionals) +
                       Rows("Options", verb.options) + "\nFormats:\n" +
                       Wrapped(verb.text.formats, 2) + "\nExamples:\n";
    for (const auto& example : verb.text.examples)
        text += "  " + std::string(example.line) + '\n' + Wrapped(example.what, 6);
    return text + StatusRows();
}

std::string HelpText(const Manual& manual) {
    std::string text = "quorvex " + std::string(kCommandSummary) +
                       "\n\nUsage: quorvex VERB [OPTION...] ...\n\n" + Wrapped(kCommandAbout, 0) +
                       "\nVerbs:\n";
    for (const auto& verb : manual.verbs)
        text += Row(std::string(verb.text.name), verb.text.summary);
    return text + Rows("Options", manual.options) + StatusRows() +
           "\nquorvex VERB --help tells the options of a verb, and so does man quorvex-VERB.\n";
}

}  // namespace quorvex::tools
