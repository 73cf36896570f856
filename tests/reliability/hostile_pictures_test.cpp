// Picture importers: captures of PNG files of every form, and of those that lie about themselves.
#include "tests/tools/run_command.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <zlib.h>

namespace quorvex::test {
namespace {

std::string BigEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

std::string Chunk(const std::string& type, const std::string& data, std::uint32_t wrongBits = 0) {
    const std::string content = type + data;
    const auto* bytes = static_cast<const Bytef*>(static_cast<const void*>(content.data()));
    const auto sum = crc32(0, bytes, static_cast<uInt>(content.size()));
    return BigEndian(static_cast<std::uint32_t>(data.size())) + content +
           BigEndian(static_cast<std::uint32_t>(sum) ^ wrongBits);
}

std::string Deflated(const std::string& raw) {
    auto size = compressBound(raw.size());
    std::string packed(size, '\0');
    compress(static_cast<Bytef*>(static_cast<void*>(packed.data())), &size,
             static_cast<const Bytef*>(static_cast<const void*>(raw.data())), raw.size());
    return packed.substr(0, size);
}

struct Form {
    std::uint32_t width = 9;
    std::uint32_t height = 5;
    int depth = 8;
    int colour = 0;  ///< 0 grey, 2 RGB, 3 palette, 4 and 6 with alpha
    int interlace = 0;

    [[nodiscard]] int Channels() const {
        constexpr int kChannels[] = {1, 0, 3, 1, 2, 0, 4};
        return kChannels[colour];
    }
};

/// Every `dx`-th pixel of every `dy`-th row, each row behind its filter byte.
std::string RowsOf(const Form& form, std::uint32_t x0, std::uint32_t y0, std::uint32_t dx,
                   std::uint32_t dy) {
    std::string rows;
    for (std::uint32_t y = y0; x0 < form.width && y < form.height; y += dy) {
        rows += '\0';
        unsigned bits = 0;
        int count = 0;
        for (std::uint32_t x = x0; x < form.width; x += dx) {
            for (int s = 0; s < form.Channels() * std::max(form.depth / 8, 1); ++s) {
                const int depth = std::min(form.depth, 8);
                const unsigned value = (y * 37 + x * 11 + static_cast<unsigned>(s) * 5) % 251;
                bits = bits << depth | (value & ((1U << depth) - 1));
                count += depth;
                if (count < 8) continue;
                rows += static_cast<char>(bits);
                count = 0;
            }
        }
        if (count > 0) rows += static_cast<char>(bits << (8 - count));
    }
    return rows;
}

std::string RawOf(const Form& form) {
    if (form.interlace == 0) return RowsOf(form, 0, 0, 1, 1);
    constexpr std::uint32_t kPasses[][4] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                            {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
    std::string raw;
    for (const auto& [x, y, dx, dy] : kPasses) raw += RowsOf(form, x, y, dx, dy);
    return raw;
}

const std::string kSignature = "\x89PNG\r\n\x1A\n";

std::string HeaderOf(const Form& form, std::uint32_t wrongBits = 0) {
    std::string facts = BigEndian(form.width) + BigEndian(form.height);
    for (const int fact : {form.depth, form.colour, 0, 0, form.interlace})
        facts += static_cast<char>(fact);
    return kSignature + Chunk("IHDR", facts, wrongBits);
}

std::string Palette(std::size_t entries) {
    std::string palette;
    for (std::size_t i = 0; i < 3 * entries; ++i) palette += static_cast<char>(i * 7);
    return Chunk("PLTE", palette);
}

std::string Png(const Form& form) {
    const std::string palette = Palette(std::size_t{1} << form.depth % 16);
    const std::string transparency = Chunk("tRNS", std::string(form.depth == 8 ? 2 : 0, '\x40'));
    return HeaderOf(form) + (form.colour == 3 ? palette + transparency : "") +
           Chunk("IDAT", Deflated(RawOf(form))) + Chunk("IEND", "");
}

TEST(HostilePictures, EveryFormOfPngIsCapturedInterlacedOrNot) {
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    constexpr int kForms[][2] = {{1, 0}, {2, 0}, {4, 0}, {8, 0}, {16, 0}, {8, 2}, {16, 2},
                                 {1, 3}, {2, 3}, {8, 3}, {8, 4}, {16, 4}, {8, 6}, {16, 6}};
    for (const auto& [depth, colour] : kForms) {
        Form form{.depth = depth, .colour = colour};
        const auto plain = folder.Write("plain.png", Png(form));
        form.interlace = 1;
        const auto interlaced = folder.Write("interlaced.png", Png(form));
        SCOPED_TRACE(std::to_string(depth) + " bits, colour " + std::to_string(colour));
        const bool isSeeThrough = colour >= 4 || (colour == 3 && depth == 8);
        if (isSeeThrough) {
            ExpectStatus(1, {"capture", kSlice, plain, "-o", output}, "transparency");
            continue;
        }
        OutputOf({"capture", kSlice, plain, "-o", output});
        const auto frame = FramesOf(output);
        ASSERT_EQ(frame.size(),
                  std::size_t{9} * 5 * ((colour & 2) != 0 ? 3 : 1) * (depth == 16 ? 2 : 1));
        OutputOf({"capture", kSlice, interlaced, "-o", output});
        EXPECT_EQ(FramesOf(output), frame);
    }
}

TEST(HostilePictures, EndInOneSentence) {
    const Form form{.colour = 3};
    const auto good = Png(form);
    const auto pixels = Deflated(RawOf(form));
    const auto end = Chunk("IEND", "");
    const auto rest = Chunk("IDAT", pixels) + end;
    const struct {
        const char* what;
        std::string bytes;
    } kPictures[] = {
        {"empty", ""},
        {"only the signature", kSignature},
        {"only a header", HeaderOf(form)},
        {"cut in the pixels", good.substr(0, good.size() - 30)},
        {"header with a bad sum", HeaderOf(form, 1) + Palette(256) + rest},
        {"pixels with a bad sum", HeaderOf(form) + Palette(256) + Chunk("IDAT", pixels, 1) + end},
        {"no palette", HeaderOf(form) + rest},
        {"no size", Png({.width = 0})},
        {"too few rows", HeaderOf({.height = 900}) + rest},
        {"a side too long", HeaderOf({.width = 65536, .height = 1}) + rest},
        {"gigabytes of grey", HeaderOf({65535, 65535}) + rest},
        {"gigabytes of colour", HeaderOf({65535, 65535, 16, 6}) + rest},
        {"more than there is", HeaderOf({0x7FFFFFFF, 0x7FFFFFFF}) + rest},
        {"unknown depth", HeaderOf({.depth = 3}) + rest},
        {"unknown colour", HeaderOf({.colour = 5}) + rest},
        {"unknown interlace", HeaderOf({.interlace = 9}) + rest},
        {"no deflated data", HeaderOf({}) + Chunk("IDAT", std::string(50, '\x55')) + end},
        {"a chunk past the end", HeaderOf({}) + BigEndian(0x7FFFFFFF) + "IDAT" + "abc"}};
    const ScratchFolder folder;
    const auto output = folder.Path("out.dcm");
    for (const auto& picture : kPictures) {
        SCOPED_TRACE(picture.what);
        ExpectStatus(1,
                     {"capture", kSlice, folder.Write("hostile.png", picture.bytes), "-o", output});
        EXPECT_FALSE(std::filesystem::exists(output));
    }
}

}  // namespace
}  // namespace quorvex::test
