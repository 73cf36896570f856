#include "tools/manual/manual_page.h"

#include <sstream>

namespace quorvex::tools {
namespace {

ArgumentPage PageOf(const CLI::Option& option) {
    ArgumentPage page;
    for (const auto& name : option.get_snames()) page.names.push_back('-' + name);
    for (const auto& name : option.get_lnames()) page.names.push_back("--" + name);
    if (page.names.empty()) page.names.push_back(option.get_name(true));
    if (option.get_type_size() != 0) page.takes = option.get_type_name();
    page.help = option.get_description();
    page.byDefault = option.get_default_str();
    page.isRequired = option.get_required();
    page.isRepeated = option.get_expected_max() > 1 ||
                      option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    return page;
}

}  // namespace

std::vector<std::string> ArgumentPage::Choices() const {
    std::vector<std::string> choices;
    if (takes.find('|') == std::string::npos || takes.find(':') != std::string::npos)
        return choices;
    std::istringstream text(takes);
    for (std::string choice; std::getline(text, choice, '|');) choices.push_back(choice);
    return choices;
}

std::string ArgumentPage::WholeHelp() const {
    std::string text = help;
    if (isRequired && names.front().starts_with('-')) text += " (required)";
    if (!byDefault.empty()) text += " (default " + byDefault + ')';
    return text;
}

VerbPage PageOf(const CLI::App& verb) {
    VerbPage page{.text = TextOfVerb(verb.get_name()), .positionals = {}, .options = {}};
    for (const auto* option : verb.get_options())
        (option->get_positional() ? page.positionals : page.options).push_back(PageOf(*option));
    return page;
}

Manual ManualOf(const CLI::App& tree) {
    Manual manual;
    for (const auto* option : tree.get_options()) manual.options.push_back(PageOf(*option));
    for (const auto* verb :
         tree.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); }))
        manual.verbs.push_back(PageOf(*verb));
    return manual;
}

}  // namespace quorvex::tools
