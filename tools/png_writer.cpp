#include "tools/png_writer.h"

#include "tools/output/output_file.h"
#include "tools/report.h"

#include <csetjmp>
#include <exception>
#include <png.h>

namespace quorvex::tools {
namespace {

// Level 1 with the Sub filter alone: of all settings that still halve a medical image, the fastest.
constexpr int kCompressionLevel = 1;
constexpr std::size_t kCompressionBuffer = std::size_t{1} << 20;

struct Sink {
    OutputFile* file = nullptr;
    std::exception_ptr failure;

    [[nodiscard]] bool Accepts(const unsigned char* data, std::size_t length) noexcept {
        try {
            file->Write({data, length});
            return true;
        } catch (...) {
            failure = std::current_exception();
            return false;
        }
    }
};

void OnWrite(png_structp png, png_bytep data, std::size_t length) {
    if (!static_cast<Sink*>(png_get_io_ptr(png))->Accepts(data, length)) png_error(png, "write");
}
void OnFlush(png_structp) {}
void OnError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

void WriteAll(png_structp png, png_infop info, const Picture& picture) {
    const int colourType = picture.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    png_set_compression_level(png, kCompressionLevel);
    png_set_compression_buffer_size(png, kCompressionBuffer);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), 8 * picture.sampleBytes, colourType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (picture.sampleBytes == 2) png_set_swap(png);
    for (int row = 0; row < picture.height; ++row)
        png_write_row(png,
                      picture.pixels.data() + picture.RowBytes() * static_cast<std::size_t>(row));
    png_write_end(png, info);
}

// The only frame that libpng's jump lands in; it holds nothing that a destructor would have to
// free.
bool IsWritten(png_structp png, png_infop info, const Picture& picture) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    WriteAll(png, info, picture);
    return true;
}

}  // namespace

void WritePng(const Picture& picture, OutputFile& file) {
    Sink sink{&file, nullptr};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    bool isWritten = false;
    if (info != nullptr) {
        png_set_write_fn(png, &sink, OnWrite, OnFlush);
        isWritten = IsWritten(png, info, picture);
    }
    png_destroy_write_struct(&png, &info);
    if (sink.failure) std::rethrow_exception(sink.failure);
    if (!isWritten) throw EnvironmentFailure("the picture could not be written");
}

}  // namespace quorvex::tools
