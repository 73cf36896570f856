// quorvex frame: decoded frames as raw pixels.
#include "quorvex/CxDcmParser.h"
#include "tools/output_file.h"
#include "tools/verbs.h"

#include <memory>
#include <span>

namespace quorvex::tools {
namespace {

QUORVEX_MESSAGE WriteFrame(CxDcmParser& parser, int index, OutputFile& output) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = parser.GetAFrame(index, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    const std::unique_ptr<unsigned char[]> frame(data);
    output.Write({frame.get(), size});
    return QVM_SUCCESS;
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
