#include "tools/frame/frame.h"

#include "quorvex/CxDcmParser.h"
#include "tools/frame/frame_warnings.h"
#include "tools/output/output_file.h"

#include <memory>

namespace quorvex::tools {
namespace {

QUORVEX_MESSAGE WriteFrame(CxDcmParser& parser, int index, OutputFile& output,
                           FrameWarnings& warnings) {
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const auto result = parser.GetAFrameUnpacked(index, bytes, size);
    const std::unique_ptr<unsigned char[]> owner(bytes);
    if (result != QVM_SUCCESS) return result;
    warnings.Note(index, parser.GetFrameQuality());
    output.Write({bytes, size});
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE WriteAllFrames(CxDcmParser& parser, OutputFile& output, FrameWarnings& warnings) {
    const int count = parser.GetFrameCount();
    if (count < 1) return QVM_ERROR_INVALID_FRAME_INDEX;
    for (int index = 0; index < count; ++index) {
        const auto result = WriteFrame(parser, index, output, warnings);
        if (result != QVM_SUCCESS) return result;
    }
    return QVM_SUCCESS;
}

}  // namespace

ExitStatus Frame(const FrameArguments& arguments) {
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    auto result = parser.Initialize(&app, arguments.file, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    OutputFile output(arguments.output);
    FrameWarnings warnings;
    result = arguments.all ? WriteAllFrames(parser, output, warnings)
                           : WriteFrame(parser, arguments.frame, output, warnings);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    output.Commit();
    warnings.Complain(arguments.file);
    return kAllDone;
}

}  // namespace quorvex::tools
