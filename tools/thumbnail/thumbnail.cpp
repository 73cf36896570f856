#include "tools/thumbnail/thumbnail.h"

#include "quorvex/Attributes.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "quorvex/Tags.h"
#include "tools/file_list.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/png_writer.h"
#include "tools/progress.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <memory>
#include <span>

namespace quorvex::tools {
namespace {

constexpr int kWidthStep = 4;  // a thumbnail's width is a multiple of it
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

// How much taller than wide one pixel is.
double PixelShape(const CDcmObject& header) {
    for (const auto tag : {tag::kPixelAspectRatio, tag::kPixelSpacing, tag::kImagerPixelSpacing}) {
        const auto pair = ReadPair<double>(header, tag);  // vertical, horizontal
        if (!pair) continue;
        const double shape = pair->first / pair->second;
        if (shape >= 0.1 && shape <= 10.0) return shape;
    }
    return 1.0;
}

// The largest size of the image's own shape inside `limit`.
CSize SizeInside(CSize limit, const CDcmObject& header) {
    const auto sideOf = [&](std::uint32_t tag) {
        return std::max<double>(Read<unsigned short>(header, tag).value_or(0), 1.0);
    };
    const double width = sideOf(tag::kColumns);
    const double height = sideOf(tag::kRows) * PixelShape(header);
    const double zoom = std::min(limit.cx / width, limit.cy / height);
    const auto steps = std::lround(zoom * width / kWidthStep);
    const auto most = std::max(limit.cx / kWidthStep, 1);
    return {kWidthStep * static_cast<int>(std::clamp<long>(steps, 1, most)),
            std::clamp(static_cast<int>(std::lround(zoom * height)), 1, limit.cy)};
}

/// What MakeThumbNail hands over.
struct SmallImage {
    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;
    int samples = 1;
};

QUORVEX_MESSAGE Make(CxDcmParser& parser, CSize size, const Format& format,
                     const ThumbnailArguments& arguments, SmallImage& small) {
    unsigned char* bytes = nullptr;
    tagBITMAPINFOHEADER* bitmap = nullptr;
    unsigned long bitmapSize = 0;
    const auto result =
        parser.MakeThumbNail(arguments.frame, size, format.code, arguments.dataRange ? 1 : 0, bytes,
                             small.size, bitmap, bitmapSize, kJpegQuality);
    small.bytes.reset(bytes);
    if (bitmap != nullptr) small.samples = bitmap->biBitCount / 8;
    const std::unique_ptr<unsigned char[]> owner(
        static_cast<unsigned char*>(static_cast<void*>(bitmap)));
    return result;
}

void Write(const SmallImage& small, CSize size, const Format& format, const std::string& path) {
    const std::span<const unsigned char> bytes(small.bytes.get(), small.size);
    MakeFolderOf(path);
    OutputFile output(path);
    if (format.code == kXferUncompressed) {
        WritePng({.width = size.cx,
                  .height = size.cy,
                  .channels = small.samples,
                  .pixels = {bytes.begin(), bytes.end()}},
                 output);
    } else {
        output.Write(bytes);
    }
    output.Commit();
}

ExitStatus MakeOne(const InputFile& input, OutputPlace& place, const Format& format,
                   const ThumbnailArguments& arguments) {
    const auto path = place.For(input.path, WithExtension(input.name, format.extension));
    if (!path) return kBadInput;
    ForgetLimit();
    CDcmApp app;
    CxDcmParser parser;
    auto result = parser.Initialize(&app, input.path, 0);
    if (result != QVM_SUCCESS) return ReportBadInput(input.path, result);
    const CSize size = SizeInside(arguments.size, *parser.GetHeader());
    SmallImage small;
    result = Make(parser, size, format, arguments, small);
    if (result != QVM_SUCCESS) return ReportBadInput(input.path, result);
    Write(small, size, format, *path);
    return kAllDone;
}

}  // namespace

ExitStatus Thumbnail(const ThumbnailArguments& arguments) {
    const Format& format = FormatOf(arguments.format);
    if (arguments.size.cx < kWidthStep)
        throw WrongUsage("a thumbnail is at least " + std::to_string(kWidthStep) + " pixels wide");
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
