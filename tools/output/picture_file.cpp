#include "tools/output/picture_file.h"

#include "quorvex/CxImageProcessor.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <memory>

namespace quorvex::tools {
namespace {

struct Extension {
    const char* text;
    PictureFormat format;
};
constexpr std::array kExtensions = {
    Extension{"", PictureFormat::kPng},
    Extension{".png", PictureFormat::kPng},
    Extension{".jpg", PictureFormat::kJpeg},
    Extension{".jpeg", PictureFormat::kJpeg},
    Extension{".ljpg", PictureFormat::kJpegLossless},
};

struct CodedPicture {
    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;
};

QUORVEX_MESSAGE Code(const Picture& picture, PictureFormat format, int quality,
                     CodedPicture& coded) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = static_cast<std::uint16_t>(picture.channels);
    param.photometric = picture.channels == 3 ? "RGB" : "MONOCHROME2";
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(picture.height);
    param.columns = static_cast<std::uint16_t>(picture.width);
    param.bitsAllocated = 8;
    param.quality = static_cast<std::uint16_t>(quality);
    param.pixelRepresentation = 0;
    param.targetSyntax = format == PictureFormat::kJpeg ? kXferJpegBaseline : kXferJpegLossless;
    auto pixels = picture.pixels;  // the processor takes them as writable
    unsigned char* bytes = nullptr;
    CxImageProcessor processor;
    const auto result =
        processor.CompressFrameData(&param, pixels.data(), pixels.size(), bytes, coded.size);
    coded.bytes.reset(bytes);
    return result;
}

}  // namespace

std::optional<PictureFormat> PictureFormatOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& known : kExtensions)
        if (extension == known.text) return known.format;
    return std::nullopt;
}

QUORVEX_MESSAGE WritePicture(const Picture& picture, PictureFormat format, int jpegQuality,
                             const std::string& path) {
    CodedPicture coded;
    if (format != PictureFormat::kPng) {
        constexpr int kLongestJpegSide = 65535;
        if (picture.width > kLongestJpegSide || picture.height > kLongestJpegSide)
            return QVM_ERROR_INVALID_OUTPUT_SIZE;
        const auto result = Code(picture, format, jpegQuality, coded);
        if (result != QVM_SUCCESS) return result;
    }
    OutputFile output(path);
    if (format == PictureFormat::kPng) {
        WritePng(picture, output);
    } else {
        output.Write({coded.bytes.get(), coded.size});
    }
    output.Commit();
    return QVM_SUCCESS;
}

std::string NumberedPath(const std::string& path, int number, int count) {
    constexpr std::size_t kFewestDigits = 4;
    const auto width = std::max(kFewestDigits, std::to_string(count).size());
    const auto digits = std::to_string(number);
    std::filesystem::path numbered = path;
    const auto extension = numbered.extension().string();
    numbered.replace_extension();
    std::string text = numbered.string() + '-';
    text.append(width - std::min(width, digits.size()), '0');
    return text + digits + extension;
}

}  // namespace quorvex::tools
