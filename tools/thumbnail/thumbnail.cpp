#include "tools/thumbnail/thumbnail.h"

#include "quorvex/CXDIPP.h"
#include "quorvex/Limits.h"
#include "tools/cause_summary.h"
#include "tools/file_list.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/output/picture_file.h"
#include "tools/progress.h"
#include "tools/render/shown_picture.h"
#include "tools/trouble.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

namespace quorvex::tools {
namespace {

constexpr int kJpegQuality = 85;
constexpr std::array kDicomExtensions = {".dcm", ".dicom", ".dic", ".ima"};

struct Format {
    const char* name;
    const char* extension;
    PictureFormat code;
};
constexpr Format kFormats[] = {
    {"png", ".png", PictureFormat::kPng},
    {"jpeg", ".jpg", PictureFormat::kJpeg},
    {"jpeg-lossless", ".ljpg", PictureFormat::kJpegLossless},
};

const Format& FormatOf(PictureFormat code) {
    return *std::ranges::find(kFormats, code, &Format::code);
}

const Format& FormatOf(const std::string& name) {
    for (const auto& format : kFormats)
        if (name == format.name) return format;
    throw WrongUsage("a thumbnail is png, jpeg or jpeg-lossless, not " + name);
}

// What is asked for by name, or else by the extension of the one output.
const Format& FormatOf(const ThumbnailArguments& arguments, const OutputPlace& place) {
    if (!arguments.format.empty()) return FormatOf(arguments.format);
    const bool isFile = !place.IsFolder() && place.Path() != kStandardOutput;
    const auto byName = isFile ? PictureFormatOf(place.Path()) : std::nullopt;
    return FormatOf(byName.value_or(PictureFormat::kPng));
}

// A name must not say what the picture is not.
void RefuseOtherName(const std::string& path, const Format& format) {
    const bool isSaid = path != kStandardOutput && std::filesystem::path(path).has_extension();
    if (isSaid && PictureFormatOf(path) != format.code)
        throw WrongUsage(path + " is not the name of a " + format.name +
                         " picture, which ends in " + format.extension);
}

// `name` with another extension in place of a DICOM one, or behind what is not one: a UID as a file
// name has no extension.
std::string WithExtension(const std::string& name, const std::string& extension) {
    std::filesystem::path path = name;
    std::string present = path.extension().string();
    std::ranges::transform(present, present.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool isDicom = std::ranges::find(kDicomExtensions, present) != kDicomExtensions.end();
    return isDicom ? path.replace_extension(extension).string() : name + extension;
}

/// The image as a viewer shows it, as large as fits into the size that is asked for.
QUORVEX_MESSAGE Draw(const std::string& path, const ThumbnailArguments& arguments,
                     Picture& picture) {
    CDcmApp app;
    CXDIPP pipeline;
    pipeline.SetRules(Rules::kStandard);
    pipeline.SetPreview(!arguments.dataRange);
    auto result = pipeline.Initialize(&app, path, arguments.size, arguments.frame);
    if (arguments.dataRange) pipeline.SelectVOI(CXDIPP::kOverTheValues);
    if (result == QVM_SUCCESS) result = pipeline.Render();
    CSize size;
    int channels = 1;
    if (result == QVM_SUCCESS) result = pipeline.GetResultImageInfo(size, channels);
    if (result == QVM_SUCCESS) picture = CopyResult(pipeline, size, channels);
    return result;
}

/// All inputs, one after the other.
class ThumbnailRun {
public:
    ThumbnailRun(const ThumbnailArguments& arguments, const FileListSource& source,
                 std::size_t count)
        : arguments_(arguments),
          place_(arguments.output, count > 1 || HasFolder(arguments.files), arguments.files),
          format_(FormatOf(arguments, place_)),
          files_(source),
          progress_(count) {}

    ExitStatus Run() {
        for (auto input = files_.Next(); input && !isHopeless_; input = files_.Next()) {
            ForgetLimit();
            TryOne(*input);
            progress_.Step();
        }
        if (place_.IsFolder()) WriteToStandardOutput(summary_.Text("made"));
        return std::max(summary_.Status(), files_.Status());
    }

private:
    // Another input may find its place where this one did not, but not on a full disk.
    void TryOne(const InputFile& input) {
        try {
            MakeOne(input);
        } catch (const EnvironmentFailure& failure) {
            Complain(input.path, failure.what());
            const int error = failure.systemError;
            isHopeless_ = error == ENOSPC || error == EDQUOT || error == EROFS;
            summary_.Add(kEnvironment,
                         std::string("the output cannot be written: ") + std::strerror(error));
        } catch (const std::bad_alloc&) {
            const std::string sentence = LimitSentence(Limit::kMemory);
            Complain(input.path, sentence);
            summary_.Add(kEnvironment, sentence);
        }
    }

    void MakeOne(const InputFile& input) {
        const auto path = place_.For(input.path, WithExtension(input.name, format_.extension));
        if (!path) {
            summary_.Add(kBadInput, "its output is that of another input, or an input itself");
            return;
        }
        RefuseOtherName(*path, format_);
        Picture picture;
        auto result = Draw(input.path, arguments_, picture);
        if (result == QVM_SUCCESS) {
            MakeFolderOf(*path);
            result = WritePicture(picture, format_.code, kJpegQuality, *path);
        }
        if (result == QVM_SUCCESS) return summary_.AddDone();
        const auto trouble = TroubleOf(input.path, result);
        if (!input.isNamed && IsOtherKindOfFile(input.path, trouble)) return summary_.AddNotDicom();
        summary_.Add(ReportTrouble(input.path, trouble), trouble.Text());
    }

    const ThumbnailArguments& arguments_;
    OutputPlace place_;
    const Format& format_;
    FileList files_;
    Progress progress_;
    CauseSummary summary_;
    bool isHopeless_ = false;
};

}  // namespace

ExitStatus Thumbnail(const ThumbnailArguments& arguments) {
    const FileListSource source{
        .arguments = arguments.files, .list = {}, .shard = {}, .leftOutFolder = arguments.output};
    const auto count = FileList::Count(source).value_or(0);
    return ThumbnailRun(arguments, source, count).Run();
}

}  // namespace quorvex::tools
