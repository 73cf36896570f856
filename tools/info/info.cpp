#include "tools/info/info.h"

#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "tools/cause_summary.h"
#include "tools/file_list.h"
#include "tools/info/dicom_json.h"
#include "tools/info/info_report.h"
#include "tools/info/spooled_input.h"
#include "tools/output/output_place.h"
#include "tools/progress.h"
#include "tools/trouble.h"

#include <optional>

namespace quorvex::tools {
namespace {

constexpr const char* kStandardInput = "-";

/// All inputs, one after the other.
class InfoRun {
public:
    explicit InfoRun(const InfoArguments& arguments)
        : arguments_(arguments),
          source_{.arguments = arguments.files, .list = {}, .shard = {}, .leftOutFolder = {}} {}

    ExitStatus Run() {
        FileList files(source_);
        Progress progress(Progress::IsPossible() ? FileList::Count(source_).value_or(0) : 1);
        while (const auto input = files.Next()) {
            ForgetLimit();
            Show(*input);
            progress.Step();
        }
        if (summary_.Failures() > 1) TellFailures();
        return std::max(summary_.Status(), files.Status());
    }

private:
    void Show(const InputFile& input) {
        RefuseToReplace("-", {input.path});
        if (input.path != kStandardInput || !input.isNamed)
            return ShowFile(input.path, input.path, input.isNamed);
        const SpooledInput spooled;
        ShowFile("standard input", spooled.Path(), true);
    }

    void ShowFile(const std::string& name, const std::string& path, bool isNamed) {
        if (arguments_.asDicomJson && ShowAsStored(name, path)) return;
        CDcmApp app;
        CxDcmParser parser;
        const auto result = parser.Initialize(&app, path, arguments_.asDicomJson ? 1 : 0);
        if (result != QVM_SUCCESS) {
            const auto trouble = TroubleOf(path, result, parser.GetHeader());
            const bool isMeant = isNamed || !IsOtherKindOfFile(path, trouble);
            return isMeant ? Refuse(name, trouble) : summary_.AddNotDicom();
        }
        const auto& header = *parser.GetHeader();
        if (arguments_.asDicomJson) return Give(ModelOf(name, path, header));
        const auto show = arguments_.asJson ? InfoAsJson : InfoAsText;
        Give(show(name, Summarise(parser, path), header, arguments_.tags));
    }

    // A Part 10 file as it is: a parser would make Samples per Pixel agree with the colours.
    bool ShowAsStored(const std::string& name, const std::string& path) {
        CDcmApp app;
        CDcmObject object;
        object.Open(path);
        if (object.ReadFile(&app, nullptr, nullptr) != kDcmSuccess) return false;
        Give(ModelOf(name, path, object));
        return true;
    }

    [[nodiscard]] std::string ModelOf(const std::string& name, const std::string& path,
                                      const CDcmObject& object) const {
        return DicomJson(name == path ? path : std::string(), object, arguments_.tags);
    }

    void Give(const std::string& text) {
        WriteToStandardOutput(text);
        summary_.AddDone();
    }

    void Refuse(const std::string& name, const Trouble& trouble) {
        if (arguments_.asJson) WriteToStandardOutput(ErrorAsJson(name, trouble));
        summary_.Add(ReportTrouble(name, trouble), trouble.Text());
    }

    // Standard output is for what the files hold.
    void TellFailures() const {
        HideProgress();
        const auto text = summary_.Text("shown");
        std::fwrite(text.data(), 1, text.size(), stderr);
    }

    const InfoArguments& arguments_;
    FileListSource source_;
    CauseSummary summary_;
};

}  // namespace

ExitStatus Info(const InfoArguments& arguments) {
    return InfoRun(arguments).Run();
}

}  // namespace quorvex::tools
