#include "tools/render/shown_picture.h"

#include <algorithm>
#include <utility>

namespace quorvex::tools {
namespace {

Picture BlackPicture(CSize size, int channels) {
    Picture picture;
    picture.width = size.cx;
    picture.height = size.cy;
    picture.channels = channels;
    picture.pixels.resize(picture.RowBytes() * static_cast<std::size_t>(size.cy));
    return picture;
}

void SwapRedAndBlue(Picture& picture) {
    for (std::size_t i = 0; i + 2 < picture.pixels.size(); i += 3)
        std::swap(picture.pixels[i], picture.pixels[i + 2]);
}

Picture OneChannelOf(const Picture& colour) {
    Picture grey = BlackPicture({colour.width, colour.height}, 1);
    for (std::size_t i = 0; i < grey.pixels.size(); ++i) grey.pixels[i] = colour.pixels[3 * i];
    return grey;
}

}  // namespace

Picture DrawView(CXDIPP& pipeline, CSize view, bool isGrey) {
    Picture picture = BlackPicture(view, 3);
    DrawingSurface surface{.pixels = picture.pixels.data(),
                           .width = view.cx,
                           .height = view.cy,
                           .rowBytes = static_cast<std::ptrdiff_t>(picture.RowBytes()),
                           .bytesPerPixel = 3};
    CDC deviceContext(&surface);
    pipeline.Draw(&deviceContext);
    if (isGrey) return OneChannelOf(picture);
    SwapRedAndBlue(picture);
    return picture;
}

Picture CopyResult(CXDIPP& pipeline, CSize size, int channels) {
    Picture bottomUp = BlackPicture(size, channels);
    unsigned char* destination = bottomUp.pixels.data();
    pipeline.GetResultImage(destination, static_cast<int>(bottomUp.pixels.size()));
    Picture picture = bottomUp;
    const auto rowBytes = static_cast<std::ptrdiff_t>(picture.RowBytes());
    for (int row = 0; row < size.cy; ++row)
        std::copy_n(bottomUp.pixels.begin() + (size.cy - 1 - row) * rowBytes, rowBytes,
                    picture.pixels.begin() + row * rowBytes);
    if (channels == 3) SwapRedAndBlue(picture);
    return picture;
}

}  // namespace quorvex::tools
