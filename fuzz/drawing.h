/// One image on its way to the screen, seen as the options say.
#pragma once

#include "fuzz/options.h"
#include "quorvex/CXDIPP.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace quorvex::fuzz {

inline CSize DrawViewSize(Options& options) {
    return {options.Between(1, 128), options.Between(1, 128)};
}

/// The zoom stays near the fitted one, or the image is small: else results of gigabytes are asked for.
inline void ChangeView(CXDIPP& image, Options& options) {
    constexpr double kZooms[] = {1.0, 0.5, 1.5, 0.1, 2.0, 0.0, -1.0, 3.99};
    const double fit = image.GetZoomFactor();
    image.UpdateZoom_ABS(fit * options.OneOf(kZooms));
    if (fit >= 1.0 && options.Flag()) image.UpdateZoom_Offset(options.Between(-300, 300));
    image.UpdateRotate_Offset(90 * options.Between(-5, 5));
    if (options.Flag()) image.UpdateHFlip_Toggle();
    if (options.Flag()) image.UpdatePan_ABS({options.Between(-90, 90), options.Between(-90, 90)});
    if (options.Flag()) image.Inverse();
    if (options.Flag()) image.UpdatePresentationLUT_Toggle();
}

inline void ChangeWindow(CXDIPP& image, Options& options) {
    const int level = static_cast<std::int16_t>(options.Word());
    const int width = static_cast<std::int16_t>(options.Word());
    if (options.Flag()) image.UpdateVOILUT_ABS(level, width);
    if (options.Flag()) image.UpdateVOILUT_Offset(level, width);
}

inline void ShowLayers(CXDIPP& image, Options& options) {
    const unsigned layers = options.Byte();
    image.ShowShutter(layers % 2 != 0 ? 1 : 0);
    image.ShowOverlays(layers / 2 % 2 != 0 ? 1 : 0);
    image.ShowAnnotations(layers / 4 % 2 != 0 ? 1 : 0);
}

/// Renders, puts the result on a small surface, and copies it into a block of exactly its size.
inline void RenderAndDraw(CXDIPP& image, Options& options) {
    if (image.Render() != QVM_SUCCESS) return;
    const int bytesPerPixel = options.Between(3, 4);
    constexpr int kWidth = 61;
    constexpr int kHeight = 47;
    std::vector<unsigned char> paper(static_cast<std::size_t>(kWidth * kHeight * bytesPerPixel));
    DrawingSurface surface{paper.data(), kWidth, kHeight, kWidth * bytesPerPixel, bytesPerPixel};
    CDC context(&surface);
    (void)image.Draw(&context);
    CSize size;
    int pixelSize = 0;
    if (image.GetResultImageInfo(size, pixelSize) != QVM_SUCCESS) return;
    std::vector<unsigned char> copy(static_cast<std::size_t>(size.cx) *
                                    static_cast<std::size_t>(size.cy * pixelSize));
    unsigned char* destination = copy.data();
    (void)image.GetResultImage(destination, static_cast<int>(copy.size()));
}

inline void ShowAsDrawn(CXDIPP& image, Options& options) {
    ShowLayers(image, options);
    ChangeView(image, options);
    ChangeWindow(image, options);
    RenderAndDraw(image, options);
}

}  // namespace quorvex::fuzz
