#include "tools/manual/write_manual.h"

#include "tools/manual/manual_page.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"

namespace quorvex::tools {
namespace {

void WriteText(const std::string& path, const std::string& text) {
    MakeFolderOf(path);
    OutputFile file(path);
    file.Write({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    file.Commit();
}

}  // namespace

ExitStatus WriteManual(const CLI::App& tree, const std::string& folder) {
    const auto manual = ManualOf(tree);
    WriteText(folder + "/man/man1/quorvex.1", ManPage(manual));
    for (const auto& verb : manual.verbs)
        WriteText(folder + "/man/man1/quorvex-" + std::string(verb.text.name) + ".1",
                  ManPage(verb));
    WriteText(folder + "/bash-completion/completions/quorvex", BashCompletion(manual));
    WriteText(folder + "/zsh/site-functions/_quorvex", ZshCompletion(manual));
    WriteText(folder + "/fish/vendor_completions.d/quorvex.fish", FishCompletion(manual));
    return kAllDone;
}

}  // namespace quorvex::tools
