#include "tools/frame/frame.h"

#include "quorvex/CxDcmParser.h"
#include "tools/frame/frame_shape.h"
#include "tools/frame/frame_stream.h"
#include "tools/frame/frame_warnings.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/output/picture_file.h"
#include "tools/trouble.h"

#include <memory>
#include <optional>

namespace quorvex::tools {
namespace {

enum class Form { kPlain, kNumpy, kPng };

Form FormOf(const std::string& output) {
    if (output == kStandardOutput) return Form::kPlain;
    const auto extension = std::filesystem::path(output).extension();
    if (extension == ".npy" || extension == ".NPY") return Form::kNumpy;
    const bool isPng = extension == ".png" || extension == ".PNG";
    return isPng ? Form::kPng : Form::kPlain;
}

std::span<const unsigned char> BytesOf(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// The frames of one file on their way out.
class FrameRun {
public:
    explicit FrameRun(const FrameArguments& arguments) : arguments_(arguments) {
        parser_.SetRules(Rules::kStandard);
    }

    ExitStatus Run() {
        auto result = parser_.Initialize(&app_, arguments_.file, 0);
        if (result != QVM_SUCCESS) return Refuse(result);
        const auto shape = ReadFrameShape(parser_);
        if (!shape) return Refuse(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
        shape_ = *shape;
        first_ = arguments_.all ? 0 : arguments_.frame;
        count_ = arguments_.all ? shape_.frames : 1;
        if (first_ < 0 || count_ < 1 || first_ >= shape_.frames)
            return Refuse(QVM_ERROR_INVALID_FRAME_INDEX);
        if (arguments_.describe) return Describe();
        const auto form = FormOf(arguments_.output);
        if (form == Form::kPng && (shape_.isSigned || shape_.isFloat || shape_.sampleBytes > 2)) {
            Complain(arguments_.file, "PNG has no room for such values: " + shape_.Text(1) +
                                          "; write them as .npy or .raw");
            return kBadInput;
        }
        result = form == Form::kPng ? WritePictures() : WriteNumbers(form);
        if (result != QVM_SUCCESS) return Refuse(result);
        warnings_.Complain(arguments_.file);
        if (arguments_.output != kStandardOutput)
            WriteToStandardOutput(Printable(arguments_.output) + ": " + shape_.Text(count_) + '\n');
        return kAllDone;
    }

private:
    ExitStatus Refuse(QUORVEX_MESSAGE result) {
        return ReportTrouble(arguments_.file,
                             TroubleOf(arguments_.file, result, parser_.GetHeader()));
    }

    ExitStatus Describe() {
        WriteToStandardOutput(shape_.Text(count_) + '\n');
        return kAllDone;
    }

    // Receives the bytes of one frame, which are as many as its shape promises.
    template <class Take>
    QUORVEX_MESSAGE WithFrame(int index, Take take) {
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        auto result = parser_.GetAFrameUnpacked(index, bytes, size);
        const std::unique_ptr<unsigned char[]> owner(bytes);
        if (result == QVM_SUCCESS && size != shape_.FrameBytes())
            result = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        if (result != QVM_SUCCESS) return result;
        warnings_.Note(index, parser_.GetFrameQuality());
        return take(std::span<const unsigned char>(bytes, size));
    }

    QUORVEX_MESSAGE WriteNumbers(Form form) {
        RefuseToReplace(arguments_.output, {arguments_.file});
        OutputFile output(arguments_.output);
        if (form == Form::kNumpy) output.Write(BytesOf(shape_.NumpyHeader(count_)));
        for (int index = first_; index < first_ + count_; ++index) {
            const auto result = WithFrame(index, [&](std::span<const unsigned char> bytes) {
                output.Write(bytes);
                return QVM_SUCCESS;
            });
            if (result != QVM_SUCCESS) return result;
        }
        output.Commit();
        return QVM_SUCCESS;
    }

    QUORVEX_MESSAGE WritePictures() {
        for (int index = first_; index < first_ + count_; ++index) {
            const auto path = arguments_.all && count_ > 1
                                  ? NumberedPath(arguments_.output, index + 1, count_)
                                  : arguments_.output;
            RefuseToReplace(path, {arguments_.file});
            const auto result = WithFrame(index, [&](std::span<const unsigned char> bytes) {
                return WritePicture(PictureOf(bytes), PictureFormat::kPng, 0, path);
            });
            if (result != QVM_SUCCESS) return result;
        }
        return QVM_SUCCESS;
    }

    [[nodiscard]] Picture PictureOf(std::span<const unsigned char> bytes) const {
        return {.width = static_cast<int>(shape_.columns),
                .height = static_cast<int>(shape_.rows),
                .channels = static_cast<int>(shape_.samples),
                .sampleBytes = static_cast<int>(shape_.sampleBytes),
                .pixels = {bytes.begin(), bytes.end()}};
    }

    const FrameArguments& arguments_;
    CDcmApp app_;
    CxDcmParser parser_;
    FrameShape shape_;
    int first_ = 0;
    int count_ = 1;
    FrameWarnings warnings_;
};

}  // namespace

ExitStatus Frame(const FrameArguments& arguments) {
    if (arguments.output.empty() && !arguments.describe)
        throw WrongUsage("frame needs an output, or --describe");
    if (arguments.isStream) return WriteStream(arguments.file, arguments.output);
    return FrameRun(arguments).Run();
}

}  // namespace quorvex::tools
