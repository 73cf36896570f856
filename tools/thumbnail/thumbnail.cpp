// quorvex thumbnail: small pictures of images.
#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "quorvex/Tags.h"
#include "tools/file_list.h"
#include "tools/output_file.h"
#include "tools/output_place.h"
#include "tools/png_writer.h"
#include "tools/progress.h"
#include "tools/verbs.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>

namespace quorvex::tools {
namespace {

constexpr int kWidthStep = 4;  // a thumbnail's width is a multiple of it
constexpr unsigned short kJpegQuality = 85;

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

// How much taller than wide one pixel is.
double PixelShape(const CDcmObject& header) {
    double vertical = 0;
    double horizontal = 0;
    for (const std::uint32_t tag :
         {tag::kPixelAspectRatio, tag::kPixelSpacing, tag::kImagerPixelSpacing}) {
        if (header.GetValue(tag, vertical) != kDcmSuccess ||
            header.GetNextValue(tag, horizontal) != kDcmSuccess)
            continue;
        const double shape = vertical / horizontal;
        if (shape >= 0.1 && shape <= 10.0) return shape;
    }
    return 1.0;
}

// The largest size of the image's own shape inside `limit`.
CSize SizeInside(CSize limit, const CDcmObject& header) {
    unsigned short rows = 0;
    unsigned short columns = 0;
    header.GetValue(tag::kRows, rows);
    header.GetValue(tag::kColumns, columns);
    const double width = std::max<double>(columns, 1.0);
    const double height = std::max<double>(rows, 1.0) * PixelShape(header);
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
    if (arguments.size.cx < kWidthStep) throw WrongUsage("a thumbnail is at least 4 pixels wide");
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
