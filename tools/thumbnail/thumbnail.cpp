#include "tools/thumbnail/thumbnail.h"

#include "quorvex/CXDIPP.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/Limits.h"
#include "tools/file_list.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/png_writer.h"
#include "tools/progress.h"
#include "tools/render/shown_picture.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <memory>

namespace quorvex::tools {
namespace {

constexpr unsigned short kJpegQuality = 85;
constexpr std::array kDicomExtensions = {".dcm", ".dicom", ".dic", ".ima"};

struct Format {
    const char* name;
    const char* extension;
    QUORVEX_XFERSYNTAX code;
};
constexpr Format kFormats[] = {
    {"png", ".png", kXferUncompressed},
    {"jpeg", ".jpg", kXferJpegBaseline},
    {"jpeg-lossless", ".ljpg", kXferJpegLossless},
};

const Format& FormatOf(const std::string& name) {
    for (const auto& format : kFormats)
        if (name == format.name) return format;
    throw WrongUsage("a thumbnail is png, jpeg or jpeg-lossless, not " + name);
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
    auto result = pipeline.Initialize(&app, path, arguments.size, arguments.frame);
    if (arguments.dataRange) pipeline.SelectVOI(CXDIPP::kOverTheValues);
    if (result == QVM_SUCCESS) result = pipeline.Render();
    CSize size;
    int channels = 1;
    if (result == QVM_SUCCESS) result = pipeline.GetResultImageInfo(size, channels);
    if (result == QVM_SUCCESS) picture = CopyResult(pipeline, size, channels);
    return result;
}

/// A coded picture.
struct CodedPicture {
    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;
};

QUORVEX_MESSAGE Code(Picture& picture, const Format& format, CodedPicture& coded) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = static_cast<std::uint16_t>(picture.channels);
    param.photometric = picture.channels == 3 ? "RGB" : "MONOCHROME2";
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(picture.height);
    param.columns = static_cast<std::uint16_t>(picture.width);
    param.bitsAllocated = 8;
    param.quality = kJpegQuality;
    param.pixelRepresentation = 0;
    param.targetSyntax = format.code;
    unsigned char* bytes = nullptr;
    CxImageProcessor processor;
    const auto result = processor.CompressFrameData(&param, picture.pixels.data(),
                                                    picture.pixels.size(), bytes, coded.size);
    coded.bytes.reset(bytes);
    return result;
}

QUORVEX_MESSAGE Write(Picture& picture, const Format& format, const std::string& path) {
    CodedPicture coded;
    if (format.code != kXferUncompressed) {
        const auto result = Code(picture, format, coded);
        if (result != QVM_SUCCESS) return result;
    }
    MakeFolderOf(path);
    OutputFile output(path);
    if (format.code == kXferUncompressed) {
        WritePng(picture, output);
    } else {
        output.Write({coded.bytes.get(), coded.size});
    }
    output.Commit();
    return QVM_SUCCESS;
}

ExitStatus MakeOne(const InputFile& input, OutputPlace& place, const Format& format,
                   const ThumbnailArguments& arguments) {
    const auto path = place.For(input.path, WithExtension(input.name, format.extension));
    if (!path) return kBadInput;
    ForgetLimit();
    Picture picture;
    auto result = Draw(input.path, arguments, picture);
    if (result == QVM_SUCCESS) result = Write(picture, format, *path);
    if (result != QVM_SUCCESS) return ReportBadInput(input.path, result);
    return kAllDone;
}

}  // namespace

ExitStatus Thumbnail(const ThumbnailArguments& arguments) {
    const Format& format = FormatOf(arguments.format);
    const FileListSource source{
        .arguments = arguments.files, .list = {}, .shard = {}, .leftOutFolder = arguments.output};
    const auto count = FileList::Count(source).value_or(0);
    OutputPlace place(arguments.output, count > 1 || HasFolder(arguments.files), arguments.files);
    FileList files(source);
    Progress progress(count);
    auto status = kAllDone;
    while (const auto input = files.Next()) {
        status = std::max(status, MakeOne(*input, place, format, arguments));
        progress.Step();
    }
    return status;
}

}  // namespace quorvex::tools
