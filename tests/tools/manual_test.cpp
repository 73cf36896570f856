// Help, man pages and completions: all are made from the tree of verbs and options.
#include "tests/tools/run_command.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr const char* kVerbs[] = {"info",    "frame",   "render", "thumbnail",
                                  "convert", "capture", "state",  "phantom"};

bool IsInstalled(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// What a line of the shell prints on either output; a failure is part of it.
std::string ShellSays(const std::string& line) {
    const ScratchFolder folder;
    const auto said = folder.Path("said");
    const int status = std::system(("(" + line + ") >" + said + " 2>&1 </dev/null").c_str());
    return ReadAll(said) + (status == 0 ? "" : "failed\n");
}

TEST(Manual, HelpOfEachVerbHasExamplesFormatsAndExitStatuses) {
    for (const auto* verb : kVerbs) {
        const auto help = OutputOf({verb, "--help"});
        for (const auto* part : {"Usage: quorvex ", "Options:\n", "Formats:\n", "Examples:\n",
                                 "Exit status:\n", "--help"})
            EXPECT_TRUE(Has(help, part)) << verb << ' ' << part;
        EXPECT_EQ(help, OutputOf({"help", verb}));
        EXPECT_TRUE(Has(OutputOf({"--help"}), std::string("\n  ") + verb + ' ')) << verb;
    }
    EXPECT_TRUE(OutputOf({"--version"}).starts_with("quorvex "));
}

TEST(Manual, NamesWhatWasProbablyMeant) {
    const std::pair<Arguments, const char*> kCases[] = {
        {{"rendr"}, "'rendr' is no verb; did you mean render?"},
        {{"thumb"}, "did you mean thumbnail?"},
        {{"fraem", kSlice}, "did you mean frame?"},
        {{"paint"}, "'paint' is no verb; the verbs are info, frame"},
        {{"render", kSlice, "--windwo", "1,2", "-o", "x"}, "did you mean --window?"},
        {{}, "a verb is missing: info, frame"},
    };
    for (const auto& [arguments, part] : kCases) ExpectStatus(2, arguments, part);
}

TEST(Manual, PagesAreCleanRoff) {
    if (!IsInstalled("groff")) GTEST_SKIP() << "groff is not installed";
    const ScratchFolder folder;
    OutputOf({"write-manual", folder.Path("share")});
    const auto pages = folder.Path("share/man/man1/");
    EXPECT_EQ(FilesBelow(pages).size(), std::size(kVerbs) + 1);
    for (const auto& page : FilesBelow(pages)) {
        EXPECT_EQ(ShellSays("groff -man -ww -Tutf8 " + pages + page + " >/dev/null"), "") << page;
        const auto shown = ShellSays("groff -man -Tascii -P-cbou " + pages + page);
        EXPECT_TRUE(Has(shown, "EXIT STATUS") && Has(shown, "--help")) << page << shown;
    }
}

TEST(Manual, CompletionsWorkInTheirShells) {
    const ScratchFolder folder;
    const auto share = folder.Path("share");
    OutputOf({"write-manual", share});
    const auto bash = [&](const std::string& words, const char* number) {
        return "bash -c '. " + share + "/bash-completion/completions/quorvex; COMP_WORDS=(" +
               words + "); COMP_CWORD=" + number + "; _quorvex; echo ${COMPREPLY[*]}'";
    };
    const auto fish = [&](const std::string& line) {
        return "HOME=" + folder.Path("home") + " fish --no-config -c 'source " + share +
               "/fish/vendor_completions.d/quorvex.fish; complete -C \"" + line +
               "\"' | cut -f1 | tr '\\n' ' '";
    };
    struct {
        const char* shell;
        std::string line;
        const char* said;
    } const kCases[] = {
        {"bash", bash("quorvex rend", "1"), "render\n"},
        {"bash", bash("quorvex thumbnail --format j", "3"), "jpeg jpeg-lossless\n"},
        {"bash", bash("quorvex convert --no", "2"), "--no-verify\n"},
        {"bash", bash("quorvex render x.d", "2"), "\n"},  // the shell's own files then
        {"zsh", "zsh -f -n " + share + "/zsh/site-functions/_quorvex", ""},
        {"zsh",
         "zsh -f -c 'autoload -U compinit; compinit -D -u; . " + share +
             "/zsh/site-functions/_quorvex; echo ${_comps[quorvex]}'",
         "_quorvex\n"},
        {"fish", fish("quorvex rend"), "render "},
        {"fish", fish("quorvex thumbnail --format j"), "jpeg jpeg-lossless "},
    };
    for (const auto& c : kCases) {
        if (!IsInstalled(c.shell)) continue;
        EXPECT_EQ(ShellSays(c.line), c.said) << c.line;
    }
}

}  // namespace
}  // namespace quorvex::test
