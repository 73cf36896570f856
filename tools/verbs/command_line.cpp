#include "tools/verbs/command_line.h"

#include "tools/capture/capture.h"
#include "tools/convert/convert.h"
#include "tools/frame/frame.h"
#include "tools/info/info.h"
#include "tools/manual/manual_page.h"
#include "tools/manual/write_manual.h"
#include "tools/phantom/phantom.h"
#include "tools/render/render.h"
#include "tools/state/state.h"
#include "tools/thumbnail/thumbnail.h"
#include "tools/verbs/nearest.h"
#include "tools/verbs/verb_options.h"

#include <algorithm>
#include <vector>

namespace quorvex::tools {
namespace {

constexpr const char* kVersion = "quorvex " QUORVEX_VERSION "\n";

std::vector<std::string> VerbsOf(const CLI::App& tree) {
    std::vector<std::string> names;
    for (const auto* verb :
         tree.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); }))
        names.push_back(verb->get_name());
    return names;
}

std::vector<std::string> OptionsOf(const CLI::App& verb) {
    std::vector<std::string> names;
    for (const auto* option : verb.get_options())
        for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

std::string Guess(std::string_view typed, const std::vector<std::string>& words) {
    const auto nearest = Nearest(typed, words);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace

CommandLine::CommandLine() : app_("Reads, decodes and renders medical images", "quorvex") {
    app_.require_subcommand(1);
    app_.set_help_flag("-h,--help", "Tells the verbs, or those of a verb its options, and exits");
    app_.set_version_flag("--version", kVersion, "Tells the version and exits");
    AddVerb("info", Info);
    AddVerb("frame", Frame);
    AddVerb("render", Render);
    AddVerb("thumbnail", Thumbnail);
    AddVerb("convert", Convert);
    AddVerb("capture", Capture);
    AddVerb("state", State);
    AddVerb("phantom", Phantom);
    AddManual();
}

// For the installation, not for users: without a group it stands in no help.
void CommandLine::AddManual() {
    auto* verb = app_.add_subcommand("write-manual")->group("");
    verb->set_help_flag();
    auto folder = std::make_shared<std::string>();
    verb->add_option("FOLDER", *folder, "Folder to write into")->required();
    verb->callback(
        [this, folder] { work_ = [this, folder] { return WriteManual(app_, *folder); }; });
}

template <class Arguments>
void CommandLine::AddVerb(const char* name, ExitStatus (*run)(const Arguments&)) {
    auto* verb = app_.add_subcommand(name, std::string(TextOfVerb(name).summary));
    verb->get_help_ptr()->description("Tells all this and exits");
    auto arguments = std::make_shared<Arguments>();
    AddOptions(*verb, *arguments);
    verb->callback(
        [this, arguments, run] { work_ = [arguments, run] { return run(*arguments); }; });
}

Work CommandLine::Read(int count, const char* const* texts) {
    std::vector<std::string> words(texts + std::min(count, 1), texts + count);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    RefuseUnknownVerb(words);
    try {
        std::ranges::reverse(words);  // as the parser wants them
        app_.parse(std::move(words));
    } catch (const CLI::CallForHelp&) {
        const auto chosen = app_.get_subcommands();
        WriteToStandardOutput(chosen.empty() ? HelpText(ManualOf(app_))
                                             : HelpText(PageOf(*chosen.front())));
        return [] { return kAllDone; };
    } catch (const CLI::CallForVersion&) {
        WriteToStandardOutput(kVersion);
        return [] { return kAllDone; };
    } catch (const CLI::ParseError& error) {
        Refuse(error);
    }
    return work_;
}

void CommandLine::RefuseUnknownVerb(const std::vector<std::string>& words) const {
    const auto verbs = VerbsOf(app_);
    if (words.empty())
        throw WrongUsage("a verb is missing: " + Joined(verbs) + "; see quorvex --help");
    const auto& verb = words.front();
    const auto every = app_.get_subcommands([](const CLI::App*) { return true; });
    const auto isIt = [&](const CLI::App* app) { return app->get_name() == verb; };
    if (verb.starts_with('-') || std::ranges::any_of(every, isIt)) return;
    const auto guess = Guess(verb, verbs);
    throw WrongUsage('\'' + verb + "' is no verb" +
                     (guess.empty() ? "; the verbs are " + Joined(verbs) : guess));
}

void CommandLine::Refuse(const CLI::ParseError& error) const {
    const auto chosen = app_.get_subcommands();
    const CLI::App& verb = chosen.empty() ? app_ : *chosen.front();
    const auto left = verb.remaining();
    std::string sentence = error.what();
    if (!left.empty())
        sentence =
            '\'' + left.front() + "' was not expected" + Guess(left.front(), OptionsOf(verb));
    throw WrongUsage(sentence + " (see quorvex " + (chosen.empty() ? "" : verb.get_name() + ' ') +
                     "--help)");
}

}  // namespace quorvex::tools
