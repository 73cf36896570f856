#include "tools/frame/frame.h"

#include "tools/output/output_file.h"
#include "tools/stored_image.h"

namespace quorvex::tools {
namespace {

QUORVEX_MESSAGE WriteFrame(CxDcmParser& parser, int index, OutputFile& output) {
    const auto frame = FetchFrame(parser, index);
    if (frame.result == QVM_SUCCESS) output.Write(frame.Bytes());
    return frame.result;
}

QUORVEX_MESSAGE WriteAllFrames(CxDcmParser& parser, OutputFile& output) {
    const int count = parser.GetFrameCount();
    if (count < 1) return QVM_ERROR_INVALID_FRAME_INDEX;
    for (int index = 0; index < count; ++index) {
        const auto result = WriteFrame(parser, index, output);
        if (result != QVM_SUCCESS) return result;
    }
    return QVM_SUCCESS;
}

}  // namespace

ExitStatus Frame(const FrameArguments& arguments) {
    CDcmApp app;
    CxDcmParser parser;
    auto result = parser.Initialize(&app, arguments.file, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    OutputFile output(arguments.output);
    result = arguments.all ? WriteAllFrames(parser, output)
                           : WriteFrame(parser, arguments.frame, output);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    output.Commit();
    return kAllDone;
}

}  // namespace quorvex::tools
