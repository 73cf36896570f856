#include "tools/frame/frame_stream.h"

#include "quorvex/DicomObject.h"
#include "quorvex/Tags.h"
#include "quorvex/TransferSyntaxes.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/stored_image.h"
#include "tools/trouble.h"

#include <exception>
#include <utility>

namespace quorvex::tools {
namespace {

/// The walk over the fragments on its way into a file; no exception of the file's crosses it.
struct Writing {
    OutputFile& output;
    std::size_t bytes = 0;
    std::exception_ptr failure;

    static MC_STATUS Take(int, std::uint32_t, void* user, int item, unsigned long length,
                          unsigned char* data, int, int) {
        auto& writing = *static_cast<Writing*>(user);
        if (item == 0) return kMcContinue;  // the offset table
        try {
            writing.output.Write({data, length});
        } catch (...) {
            writing.failure = std::current_exception();
            return kMcRefuse;
        }
        writing.bytes += length;
        return kMcContinue;
    }
};

ExitStatus Refuse(const std::string& file, QUORVEX_MESSAGE code, std::string sentence) {
    return ReportTrouble(file, {kBadInput, code, std::move(sentence)});
}

bool IsEncapsulated(const CDcmObject& object) {
    const auto* syntax = TransferSyntaxOfUid(TextOf(object, tag::kTransferSyntaxUID));
    return syntax != nullptr && syntax->isEncapsulated;
}

}  // namespace

ExitStatus WriteStream(const std::string& file, const std::string& output) {
    CDcmApp app;
    CDcmObject object;
    object.Open(file);
    if (object.ReadFile(&app, nullptr, nullptr) != kDcmSuccess)
        return ReportTrouble(file, TroubleOf(file, QVM_ERROR_FAILED_TO_PARSE_DICOM, nullptr));
    if (!IsEncapsulated(object))
        return Refuse(file, QVM_ERROR_INVALID_TRANSFER_SYNTAX,
                      "its pixels are not coded, and so are no stream");
    RefuseToReplace(output, {file});
    OutputFile stream(output);
    Writing writing{stream, 0, nullptr};
    object.GetValueEx(tag::kPixelData, &writing, &Writing::Take);
    if (writing.failure) std::rethrow_exception(writing.failure);
    if (writing.bytes == 0)
        return Refuse(file, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, "it has no coded frames");
    stream.Commit();
    if (output != kStandardOutput) {
        const auto* syntax = TransferSyntaxOfUid(TextOf(object, tag::kTransferSyntaxUID));
        WriteToStandardOutput(Printable(output) + ": " + std::to_string(writing.bytes) +
                              " bytes of " + std::string(syntax->name) + '\n');
    }
    return kAllDone;
}

}  // namespace quorvex::tools
