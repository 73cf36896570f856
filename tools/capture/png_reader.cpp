#include "tools/capture/png_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <png.h>
#include <span>
#include <system_error>

namespace quorvex::tools {
namespace {

constexpr png_uint_32 kLongestSide = 65535;  // that Rows and Columns can hold

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

/// What libpng says when it gives up.
struct Trouble {
    std::array<char, 128> sentence{};
};

void OnError(png_structp png, png_const_charp message) {
    auto& trouble = *static_cast<Trouble*>(png_get_error_ptr(png));
    std::snprintf(trouble.sentence.data(), trouble.sentence.size(), "%s", message);
    png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

/// libpng's two blocks for one file.
class Reader {
public:
    explicit Reader(std::FILE* file)
        : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &trouble_, OnError, OnWarning)),
          info_(png_ != nullptr ? png_create_info_struct(png_) : nullptr),
          file_(file) {}
    ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    [[nodiscard]] bool IsReady() const noexcept { return info_ != nullptr; }
    [[nodiscard]] std::string Sentence() const {
        const std::string said = trouble_.sentence.data();
        return said.empty() ? "the picture could not be read" : said;
    }

    /// False where libpng gives up. Its jump lands here, where no destructor is passed by.
    bool ReadHeader() {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_init_io(png_, file_);
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_read_info(png_, info_);
        return true;
    }
    bool ExpandSamples() {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_set_expand(png_);
        if (BitDepth() == 16) png_set_swap(png_);
        if (HasGreyPalette()) png_set_rgb_to_gray_fixed(png_, 1, -1, -1);
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }
    bool ReadRows(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_read_image(png_, rows);
        png_read_end(png_, nullptr);
        return true;
    }

    [[nodiscard]] png_uint_32 Width() const { return png_get_image_width(png_, info_); }
    [[nodiscard]] png_uint_32 Height() const { return png_get_image_height(png_, info_); }
    [[nodiscard]] int BitDepth() const { return png_get_bit_depth(png_, info_); }
    [[nodiscard]] int Channels() const { return png_get_channels(png_, info_); }
    [[nodiscard]] std::size_t RowBytes() const { return png_get_rowbytes(png_, info_); }
    [[nodiscard]] bool IsSeeThrough() const {
        return (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 ||
               png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
    }

private:
    [[nodiscard]] bool HasGreyPalette() const {
        png_colorp colours = nullptr;
        int count = 0;
        if (png_get_color_type(png_, info_) != PNG_COLOR_TYPE_PALETTE ||
            png_get_PLTE(png_, info_, &colours, &count) == 0)
            return false;
        const std::span all(colours, static_cast<std::size_t>(count));
        return std::ranges::all_of(all, [](const png_color& colour) {
            return colour.red == colour.green && colour.green == colour.blue;
        });
    }

    Trouble trouble_;
    png_structp png_;
    png_infop info_;
    std::FILE* file_;
};

/// A few bytes can claim gigabytes, which would be taken before the first pixel is read. Deflate
/// makes at most 1,032 bytes of one, and a pixel takes a bit at least.
bool CanHold(const std::string& path, const Reader& reader) {
    constexpr std::uint64_t kMostPixelsOfAByte = std::uint64_t{1032} * 8;
    std::error_code unknown;  // the size of what is no plain file: then it is the largest number
    const std::uintmax_t bytes = std::filesystem::file_size(path, unknown);
    return std::uint64_t{reader.Width()} * reader.Height() / kMostPixelsOfAByte <= bytes;
}

std::string ObstacleOf(const std::string& path, const Reader& reader) {
    if (reader.Width() > kLongestSide || reader.Height() > kLongestSide)
        return "a side is longer than " + std::to_string(kLongestSide) + " pixels";
    if (!CanHold(path, reader)) return "the file is too short for its picture";
    if (reader.IsSeeThrough())
        return "the picture has transparency, which images do not have: save it without an alpha "
               "channel";
    return {};
}

}  // namespace

std::string ReadPng(const std::string& path, Page& page) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
    if (!file) return std::generic_category().message(errno);
    Reader reader(file.get());
    if (!reader.IsReady()) throw std::bad_alloc();
    if (!reader.ReadHeader()) return reader.Sentence();
    std::string obstacle = ObstacleOf(path, reader);
    if (!obstacle.empty()) return obstacle;
    if (!reader.ExpandSamples()) return reader.Sentence();
    page = {.width = static_cast<int>(reader.Width()),
            .height = static_cast<int>(reader.Height()),
            .channels = reader.Channels(),
            .bits = reader.BitDepth(),
            .samples = {}};
    page.samples.resize(reader.RowBytes() * reader.Height());
    std::vector<png_bytep> rows;
    for (std::size_t at = 0; at < page.samples.size(); at += reader.RowBytes())
        rows.push_back(page.samples.data() + at);
    return reader.ReadRows(rows.data()) ? std::string() : reader.Sentence();
}

}  // namespace quorvex::tools
