/// One image on its way to the screen, seen as the options say.
#pragma once

#include "fuzz/options.h"
#include "tests/support/answers.h"

namespace quorvex::fuzz {

inline CSize DrawViewSize(Options& options) {
    return {options.Between(1, 128), options.Between(1, 128)};
}

/// The zoom stays near the fitted one, or the image is small: otherwise results of gigabytes are
/// asked for.
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
    (void)test::DrawnOf(image, {61, 47}, options.Between(3, 4));
    (void)test::ResultOf(image);
}

inline void ShowAsDrawn(CXDIPP& image, Options& options) {
    ShowLayers(image, options);
    ChangeView(image, options);
    ChangeWindow(image, options);
    RenderAndDraw(image, options);
}

}  // namespace quorvex::fuzz
