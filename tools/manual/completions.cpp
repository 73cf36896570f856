// Completion of a command line by its shell.
#include "tools/manual/manual_page.h"

#include <algorithm>

namespace quorvex::tools {
namespace {

std::string Joined(const std::vector<std::string>& words, std::string_view between) {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : std::string(between)) + word;
    return text;
}

// In single quotes, as all three shells read them.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

// With a backslash ahead of each of the letters.
std::string Guarded(std::string_view text, std::string_view letters) {
    std::string guarded;
    for (const char c : text) {
        if (letters.find(c) != std::string_view::npos) guarded += '\\';
        guarded += c;
    }
    return guarded;
}

bool TakesPath(const ArgumentPage& argument) {
    return argument.takes.starts_with("FILE") || argument.takes.starts_with("OUT") ||
           argument.takes == "DIR";
}

std::string SpellingsOf(const std::vector<ArgumentPage>& options) {
    std::vector<std::string> all;
    for (const auto& option : options)
        all.insert(all.end(), option.names.begin(), option.names.end());
    return Joined(all, " ");
}

std::string NamesOf(const std::vector<VerbPage>& verbs) {
    std::vector<std::string> names;
    names.reserve(verbs.size());
    for (const auto& verb : verbs) names.emplace_back(verb.text.name);
    return Joined(names, " ");
}

// What may follow an option in bash: its words, or nothing, so that files are offered.
std::string BashCase(const VerbPage& verb) {
    std::string text =
        "        " + std::string(verb.text.name) + ")\n            case $previous in\n";
    for (const auto& option : verb.options) {
        if (option.takes.empty()) continue;
        const auto choices = option.Choices();
        if (choices.empty() && !TakesPath(option)) continue;
        text += "                " + Joined(option.names, "|") + ") ";
        if (!choices.empty() && !TakesPath(option))
            text +=
                "COMPREPLY=($(compgen -W " + Quoted(Joined(choices, " ")) + " -- \"$current\")); ";
        text += "return ;;\n";
    }
    return text + "            esac\n            words=" + Quoted(SpellingsOf(verb.options)) +
           " ;;\n";
}

std::string ZshOption(const ArgumentPage& option) {
    const auto choices = option.Choices();
    std::string action;
    if (!option.takes.empty()) {
        action = ':' + Guarded(option.takes, ":\\") + ':';
        if (TakesPath(option)) {
            action += "_files";
        } else if (!choices.empty()) {
            action += '(' + Joined(choices, " ") + ')';
        } else {
            action += ' ';
        }
    }
    const std::string rest = '[' + Guarded(option.help, "[]:\\") + ']' + action;
    std::string text;
    for (const auto& name : option.names) {
        const std::string others = option.isRepeated ? "*" : '(' + Joined(option.names, " ") + ')';
        text += " \\\n                ";
        text += Quoted(std::string(others).append(name).append(rest));
    }
    return text;
}

std::string ZshCase(const VerbPage& verb) {
    std::string text = "        " + std::string(verb.text.name) + ")\n            _arguments -s -S";
    for (const auto& option : verb.options) text += ZshOption(option);
    if (!verb.positionals.empty()) text += " \\\n                '*:FILE:_files'";
    return text + " ;;\n";
}

std::string FishOption(const std::string& condition, const ArgumentPage& option) {
    std::string text = "complete -c quorvex -n " + Quoted(condition);
    for (const auto& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    const auto choices = option.Choices();
    if (TakesPath(option)) {
        text += " -r -F";
    } else if (!choices.empty()) {
        text += " -x -a " + Quoted(Joined(choices, " "));
    } else if (!option.takes.empty()) {
        text += " -x";
    }
    return text + " -d " + Quoted(option.help) + '\n';
}

constexpr const char* kMadeFrom = "Made from the command's own options.\n";

}  // namespace

std::string BashCompletion(const Manual& manual) {
    std::string text = std::string("# Completion of quorvex for bash. ") + kMadeFrom +
                       "_quorvex() {\n"
                       "    local current=${COMP_WORDS[COMP_CWORD]}\n"
                       "    local previous=${COMP_WORDS[COMP_CWORD-1]}\n"
                       "    local verb= words=\n"
                       "    COMPREPLY=()\n"
                       "    [ \"$COMP_CWORD\" -gt 1 ] && verb=${COMP_WORDS[1]}\n"
                       "    case $verb in\n        '') words=" +
                       Quoted(NamesOf(manual.verbs) + ' ' + SpellingsOf(manual.options)) + " ;;\n";
    for (const auto& verb : manual.verbs) text += BashCase(verb);
    return text +
           "    esac\n"
           "    if [ -z \"$verb\" ] || [[ $current == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
           "    fi\n"
           "}\n"
           "complete -o bashdefault -o default -F _quorvex quorvex\n";
}

std::string ZshCompletion(const Manual& manual) {
    std::string text = std::string("#compdef quorvex\n# ") + kMadeFrom +
                       "_quorvex() {\n    local -a verbs\n    verbs=(\n";
    for (const auto& verb : manual.verbs)
        text += "        " +
                Quoted(std::string(verb.text.name) + ':' + Guarded(verb.text.summary, ":\\")) +
                '\n';
    text +=
        "    )\n"
        "    if (( CURRENT == 2 )); then\n"
        "        _describe -t verbs verb verbs\n"
        "        compadd -- " +
        SpellingsOf(manual.options) +
        "\n"
        "        return\n"
        "    fi\n"
        "    local verb=$words[2]\n"
        "    shift words\n"
        "    (( CURRENT-- ))\n"
        "    case $verb in\n";
    for (const auto& verb : manual.verbs) text += ZshCase(verb);
    return text +
           "    esac\n"
           "}\n"
           "if [[ ${funcstack[1]} == _quorvex ]]; then\n"
           "    _quorvex \"$@\"\n"
           "else\n"
           "    compdef _quorvex quorvex\n"
           "fi\n";
}

std::string FishCompletion(const Manual& manual) {
    const std::string names = NamesOf(manual.verbs);
    const std::string atVerb = "not __fish_seen_subcommand_from " + names;
    std::string text = std::string("# Completion of quorvex for fish. ") + kMadeFrom;
    for (const auto& option : manual.options) text += FishOption(atVerb, option);
    for (const auto& verb : manual.verbs) {
        const std::string name(verb.text.name);
        const std::string behind = "__fish_seen_subcommand_from " + name;
        text += "complete -c quorvex -n " + Quoted(atVerb) + " -f -a " + name + " -d " +
                Quoted(verb.text.summary) + '\n';
        for (const auto& option : verb.options) text += FishOption(behind, option);
    }
    return text;
}

}  // namespace quorvex::tools
