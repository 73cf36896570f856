#include "tools/info/info.h"

#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "tools/info/info_report.h"
#include "tools/progress.h"

namespace quorvex::tools {
namespace {

ExitStatus ShowFile(const std::string& path, bool asJson) {
    ForgetLimit();
    CDcmApp app;
    CxDcmParser parser;
    const auto result = parser.Initialize(&app, path, 0);
    if (result != QVM_SUCCESS) {
        if (asJson) WriteToStandardOutput(ErrorAsJson(path, result));
        return ReportBadInput(path, result);
    }
    const auto summary = Summarise(parser, path);
    const auto& header = *parser.GetHeader();
    WriteToStandardOutput(asJson ? InfoAsJson(path, summary, header)
                                 : InfoAsText(path, summary, header));
    return kAllDone;
}

}  // namespace

ExitStatus Info(const InfoArguments& arguments) {
    Progress progress(arguments.files.size());
    auto status = kAllDone;
    for (const auto& path : arguments.files) {
        status = std::max(status, ShowFile(path, arguments.asJson));
        progress.Step();
    }
    return status;
}

}  // namespace quorvex::tools
