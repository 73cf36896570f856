#include "tools/capture/png_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <png.h>
#include <system_error>
#include <vector>

namespace quorvex::tools {
namespace {

/// A few bytes can claim gigabytes, which would be taken before the first pixel is read. Deflate
/// makes at most 1,032 bytes of one, and a pixel takes a bit at least.
bool CanHold(const std::string& path, const png_image& image) {
    constexpr std::uint64_t kMostPixelsOfAByte = std::uint64_t{1032} * 8;
    std::error_code unknown;  // the size of what is no plain file: then it is the largest number
    const std::uintmax_t bytes = std::filesystem::file_size(path, unknown);
    return std::uint64_t{image.width} * image.height / kMostPixelsOfAByte <= bytes;
}

bool IsInterlaced(const std::string& path) {
    constexpr std::streamoff kInterlacePlace = 28;  // in the header, which every file begins with
    std::ifstream file(path, std::ios::binary);
    return file.seekg(kInterlacePlace) && file.get() == 1;
}

Picture EmptyPicture(const png_image& image) {
    Picture picture{.width = static_cast<int>(image.width),
                    .height = static_cast<int>(image.height),
                    .channels = (image.format & PNG_FORMAT_FLAG_COLOR) != 0 ? 3 : 1,
                    .pixels = {}};
    picture.pixels.resize(picture.RowBytes() * image.height);
    return picture;
}

std::string Finish(png_image& image, Picture& picture) {
    picture = EmptyPicture(image);
    image.format = picture.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    constexpr png_color kBlack = {0, 0, 0};
    const bool isRead =
        png_image_finish_read(&image, &kBlack, picture.pixels.data(), 0, nullptr) != 0;
    return isRead ? std::string() : image.message;
}

/// A linear sample as a byte of a display, by the gamma that libpng takes for sRGB.
unsigned char DisplayByte(std::size_t linear) {
    return static_cast<unsigned char>(
        std::lround(255.0 * std::pow(static_cast<double>(linear) / 65535.0, 0.45455)));
}

/// libpng 1.6.39 mixes up the rows of an interlaced picture whose 16-bit samples it reduces to
/// bytes, so that is done here.
std::string FinishDeepInterlaced(png_image& image, Picture& picture) {
    picture = EmptyPicture(image);
    image.format = picture.channels == 3 ? PNG_FORMAT_LINEAR_RGB : PNG_FORMAT_LINEAR_Y;
    std::vector<std::uint16_t> samples(picture.pixels.size());
    if (png_image_finish_read(&image, nullptr, samples.data(), 0, nullptr) == 0)
        return image.message;
    std::vector<unsigned char> bytes(65536);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = DisplayByte(i);
    std::ranges::transform(samples, picture.pixels.begin(),
                           [&](std::uint16_t sample) { return bytes[sample]; });
    return {};
}

}  // namespace

std::string ReadPng(const std::string& path, Picture& picture) {
    constexpr png_uint_32 kLongestSide = 65535;  // that Rows and Columns can hold
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, void (*)(png_imagep)> owner(&image, png_image_free);
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return image.message;
    if (image.width > kLongestSide || image.height > kLongestSide)
        return "a side is longer than " + std::to_string(kLongestSide) + " pixels";
    if (!CanHold(path, image)) return "the file is too short for its picture";
    image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // 16-bit samples are display values like 8-bit ones
    const bool isDeep = (image.format & PNG_FORMAT_FLAG_LINEAR) != 0;
    return isDeep && IsInterlaced(path) ? FinishDeepInterlaced(image, picture)
                                        : Finish(image, picture);
}

}  // namespace quorvex::tools
