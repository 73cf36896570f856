#include "png_reader.h"

#include <memory>
#include <png.h>

namespace quorvex::tools {

std::string ReadPng(const std::string& path, Picture& picture) {
    constexpr png_uint_32 kLongestSide = 65535;  // that Rows and Columns can tell
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, void (*)(png_imagep)> owner(&image, png_image_free);
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return image.message;
    if (image.width > kLongestSide || image.height > kLongestSide)
        return "a side is longer than 65535 pixels";
    image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // 16-bit samples are display values like 8-bit ones
    const bool isColour = (image.format & PNG_FORMAT_FLAG_COLOR) != 0;
    image.format = isColour ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    picture = {.width = static_cast<int>(image.width),
               .height = static_cast<int>(image.height),
               .channels = isColour ? 3 : 1,
               .pixels = {}};
    picture.pixels.resize(picture.RowBytes() * image.height);
    constexpr png_color kBlack = {0, 0, 0};
    if (png_image_finish_read(&image, &kBlack, picture.pixels.data(), 0, nullptr) == 0)
        return image.message;
    return {};
}

}  // namespace quorvex::tools
