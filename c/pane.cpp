#include "c/pane.h"

#include "c/calls.h"

namespace quorvex::c {
namespace {

static_assert(QUORVEX_PIXELS_GREY8 == static_cast<int>(PixelFormat::kGrey8) &&
              QUORVEX_PIXELS_BGR24 == static_cast<int>(PixelFormat::kBgr24) &&
              QUORVEX_PIXELS_BGRA32 == static_cast<int>(PixelFormat::kBgra32));

/// 0 for a format that is none.
int PixelBytes(std::int32_t format) noexcept {
    if (format == QUORVEX_PIXELS_GREY8) return 1;
    if (format == QUORVEX_PIXELS_BGR24) return 3;
    return format == QUORVEX_PIXELS_BGRA32 ? 4 : 0;
}

/// The pane in a host's memory.
class Pane {
public:
    Pane(const quorvex_target& target, CSize size) noexcept
        : target_(target), size_(size), pixelBytes_(PixelBytes(target.format)) {}

    [[nodiscard]] QUORVEX_MESSAGE Check() const noexcept {
        if (pixelBytes_ == 0) return QVM_ERROR_INVALID_IMAGE_FORMAT;
        const std::ptrdiff_t row = std::ptrdiff_t{size_.cx} * pixelBytes_;
        const std::ptrdiff_t stride = target_.stride < 0 ? -target_.stride : target_.stride;
        const bool isLarge = target_.width >= size_.cx && target_.height >= size_.cy;
        return isLarge && stride >= row ? QVM_SUCCESS : QVM_ERROR_INVALID_OUTPUT_SIZE;
    }
    [[nodiscard]] unsigned char* At(int x, int y) const noexcept {
        return static_cast<unsigned char*>(target_.pixels) + y * target_.stride +
               std::ptrdiff_t{x} * pixelBytes_;
    }
    void Blacken(int x, int y, int width, int height) const noexcept {
        if (width <= 0) return;
        for (int row = y; row < y + height; ++row) BlackenRow(At(x, row), width);
    }
    void BlackenAround(const PictureInfo& picture) const noexcept {
        const int right = picture.corner.x + picture.size.cx;
        const int below = picture.corner.y + picture.size.cy;
        Blacken(0, 0, size_.cx, picture.corner.y);
        Blacken(0, picture.corner.y, picture.corner.x, picture.size.cy);
        Blacken(right, picture.corner.y, size_.cx - right, picture.size.cy);
        Blacken(0, below, size_.cx, size_.cy - below);
    }
    [[nodiscard]] bool Holds(const PictureInfo& picture) const noexcept {
        return picture.corner.x >= 0 && picture.corner.y >= 0 &&
               picture.corner.x + picture.size.cx <= size_.cx &&
               picture.corner.y + picture.size.cy <= size_.cy;
    }
    [[nodiscard]] PixelTarget PlaceOf(const PictureInfo& picture) const noexcept {
        return {At(picture.corner.x, picture.corner.y), picture.size, target_.stride,
                static_cast<PixelFormat>(target_.format)};
    }
    [[nodiscard]] DrawingSurface Surface() const noexcept {
        return {At(0, 0), size_.cx, size_.cy, target_.stride, pixelBytes_};
    }
    [[nodiscard]] bool IsGrey() const noexcept { return target_.format == QUORVEX_PIXELS_GREY8; }
    void BlackenAll() const noexcept { Blacken(0, 0, size_.cx, size_.cy); }

private:
    void BlackenRow(unsigned char* pixels, int width) const noexcept {
        std::memset(pixels, 0,
                    static_cast<std::size_t>(width) * static_cast<std::size_t>(pixelBytes_));
        if (pixelBytes_ != 4) return;
        for (int x = 0; x < width; ++x) pixels[4 * x + 3] = 255;
    }

    const quorvex_target& target_;
    CSize size_;
    int pixelBytes_;
};

/// The picture alone, which is no larger than the pane.
QUORVEX_MESSAGE RenderInPlace(CXDIPP& shown, const Pane& pane, const PictureInfo& picture) {
    if (picture.size.cx <= 0 || picture.size.cy <= 0) {
        pane.BlackenAll();
        return QVM_SUCCESS;
    }
    if (!pane.Holds(picture)) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const QUORVEX_MESSAGE result = shown.RenderInto(pane.PlaceOf(picture));
    if (result == QVM_SUCCESS) pane.BlackenAround(picture);
    return result;
}

/// Whatever the view shows.
QUORVEX_MESSAGE DrawAll(CXDIPP& shown, const Pane& pane) {
    if (pane.IsGrey()) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const QUORVEX_MESSAGE result = shown.Render();
    if (result != QVM_SUCCESS) return result;
    pane.BlackenAll();
    DrawingSurface surface = pane.Surface();
    CDC deviceContext(&surface);
    return shown.Draw(&deviceContext);
}

QUORVEX_MESSAGE MakeThumbnail(const quorvex_image& image, int frame, const quorvex_target& target,
                              quorvex_picture* picture) {
    CXDIPP shown;
    shown.SetRules(image.rules);
    shown.SetPreview(true);
    const CSize size{target.width, target.height};
    QUORVEX_MESSAGE result = image.origin.Show(shown, size, frame);
    PictureInfo info;
    if (result == QVM_SUCCESS) result = shown.GetPictureInfo(info);
    if (result == QVM_SUCCESS && (info.size.cx < 1 || info.size.cy < 1))
        result = QVM_ERROR_INVALID_OUTPUT_SIZE;
    if (result != QVM_SUCCESS) return result;
    result = shown.RenderInto(
        {target.pixels, size, target.stride, static_cast<PixelFormat>(target.format)});
    if (result != QVM_SUCCESS || picture == nullptr) return result;
    info.corner = {};
    return Give(PictureOf(info), picture);
}

}  // namespace

quorvex_picture PictureOf(const PictureInfo& info) noexcept {
    quorvex_picture picture{};
    picture.x = info.corner.x;
    picture.y = info.corner.y;
    picture.width = info.size.cx;
    picture.height = info.size.cy;
    picture.is_colour = info.pixelSize == 3 ? 1 : 0;
    return picture;
}

QUORVEX_MESSAGE DrawPane(quorvex_view& view, const quorvex_target& target) {
    const Pane pane(target, view.size);
    QUORVEX_MESSAGE result = pane.Check();
    if (result != QVM_SUCCESS) return result;
    const bool isDrawn =
        view.rules != Rules::kStandard || (view.layers & QUORVEX_LAYER_ANNOTATIONS) != 0;
    if (isDrawn) return DrawAll(view.shown, pane);
    PictureInfo picture;
    result = view.shown.GetPictureInfo(picture);
    return result == QVM_SUCCESS ? RenderInPlace(view.shown, pane, picture) : result;
}

}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

quorvex_result quorvex_thumbnail(const quorvex_image* image, int32_t frame,
                                 const quorvex_target* target, quorvex_picture* picture) {
    const auto taken = Taken(target);
    if (!AreThere(image) || !taken || taken->pixels == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (taken->width < 1 || taken->height < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    return Call(*image->settings, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                [&] { return MakeThumbnail(*image, frame, *taken, picture); });
}
