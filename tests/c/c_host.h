/// A host of the C interface, as the tests need it.
#pragma once

#include "quorvex/Attributes.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "quorvex/quorvex.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::test {
namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

inline constexpr CSize kPane{300, 260};

inline std::string Sample(const char* name) {
    return std::string(QUORVEX_SOURCE_DIR) + "/samples/" + name;
}

inline std::string Scratch(const std::string& name) {
    return (fs::path(testing::TempDir()) / ("quorvex_c_" + name)).string();
}

inline Bytes FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Free {
    void operator()(quorvex_context* context) const { quorvex_context_free(context); }
    void operator()(quorvex_image* image) const { quorvex_image_free(image); }
    void operator()(quorvex_view* view) const { quorvex_view_free(view); }
};
using Context = std::unique_ptr<quorvex_context, Free>;
using Image = std::unique_ptr<quorvex_image, Free>;
using View = std::unique_ptr<quorvex_view, Free>;

inline Context NewContext() {
    quorvex_context* context = nullptr;
    EXPECT_EQ(quorvex_context_new(&context), QUORVEX_SUCCESS);
    return Context(context);
}

inline Image Opened(const Context& context, const std::string& path) {
    quorvex_image* image = nullptr;
    EXPECT_EQ(quorvex_open_file(context.get(), path.c_str(), &image), QUORVEX_SUCCESS) << path;
    return Image(image);
}

inline View NewView(const Context& context, CSize size = kPane) {
    quorvex_view* view = nullptr;
    EXPECT_EQ(quorvex_view_new(context.get(), size.cx, size.cy, &view), QUORVEX_SUCCESS);
    return View(view);
}

inline quorvex_facts FactsOf(const Image& image) {
    quorvex_facts facts{};
    facts.struct_size = sizeof facts;
    EXPECT_EQ(quorvex_image_facts(image.get(), &facts), QUORVEX_SUCCESS);
    return facts;
}

inline Bytes FrameOf(const Image& image, int frame) {
    Bytes pixels(FactsOf(image).frame_bytes);
    const quorvex_buffer buffer{sizeof buffer, pixels.data(), pixels.size(), 0};
    EXPECT_EQ(quorvex_read_frame(image.get(), frame, &buffer, nullptr), QUORVEX_SUCCESS);
    return pixels;
}

inline Bytes FrameOfClass(const std::string& path, int frame) {
    CDcmApp app;
    CxDcmParser parser;
    parser.SetRules(Rules::kStandard);
    EXPECT_EQ(parser.Initialize(&app, CString(path), 0), QVM_SUCCESS);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(parser.GetAFrameUnpacked(frame, data, size), QVM_SUCCESS);
    const std::unique_ptr<unsigned char[]> owner(data);
    return {data, data + size};
}

/// A pane as a host has it, with bytes behind each row that nobody may touch.
struct Screen {
    static constexpr unsigned char kUntouched = 0xA5;
    static constexpr int kGap = 7;

    explicit Screen(int format, CSize size = kPane)
        : pixelBytes(format == QUORVEX_PIXELS_GREY8 ? 1 : format + 2),
          stride(size.cx * pixelBytes + kGap),
          pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(size.cy), kUntouched) {
        target.struct_size = sizeof target;
        target.pixels = pixels.data();
        target.width = size.cx;
        target.height = size.cy;
        target.stride = stride;
        target.format = format;
    }
    [[nodiscard]] const unsigned char* At(int x, int y) const {
        return pixels.data() + static_cast<std::ptrdiff_t>(y) * stride + x * pixelBytes;
    }
    [[nodiscard]] bool HasSoundGaps() const {
        for (int y = 0; y < target.height; ++y)
            for (int i = 0; i < kGap; ++i)
                if (At(target.width, y)[i] != kUntouched) return false;
        return true;
    }

    int pixelBytes;
    int stride;
    Bytes pixels;
    quorvex_target target{};
};

/// The same pane drawn by the class: blue, green, red, and 255.
inline Screen DrawnByClass(CXDIPP& shown) {
    Screen screen(QUORVEX_PIXELS_BGRA32);
    for (int y = 0; y < kPane.cy; ++y)
        for (int x = 0; x < kPane.cx; ++x)
            std::memcpy(screen.pixels.data() + y * screen.stride + 4 * x, "\0\0\0\xFF", 4);
    DrawingSurface surface{screen.pixels.data(), kPane.cx, kPane.cy, screen.stride, 4};
    CDC deviceContext(&surface);
    EXPECT_EQ(shown.Render(), QVM_SUCCESS);
    EXPECT_EQ(shown.Draw(&deviceContext), QVM_SUCCESS);
    return screen;
}

inline void ExpectDrawn(const View& view, CXDIPP& shown, const std::string& what) {
    const Screen expected = DrawnByClass(shown);
    Screen drawn(QUORVEX_PIXELS_BGRA32);
    ASSERT_EQ(quorvex_view_render(view.get(), &drawn.target), QUORVEX_SUCCESS) << what;
    EXPECT_TRUE(drawn.pixels == expected.pixels) << what;
}

}  // namespace quorvex::test
