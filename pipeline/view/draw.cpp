#include "foundation/platform/surface.h"
#include "foundation/types/saturate.h"
#include "pipeline/displayed_image.h"
#include "pipeline/layers/annotation_drawing.h"
#include "pipeline/recipe/established_rules.h"
#include "pipeline/view/dib.h"

#include <cstdint>

namespace quorvex {

namespace {

int Rounded(double value) {
    return TruncateToInt(value + 0.5);
}

int Centred(std::int64_t viewLength, std::int64_t length, int pan) {
    return SaturateToInt((viewLength - length) / 2 + pan);
}

bool ShowsAnnotations(const DisplayedImage& image) {
    return image.annotationsShown != 0 && image.presentation && image.resultSize.cx > 0 &&
           image.resultSize.cy > 0;
}

}  // namespace

// The unrounded size is centred, so a result whose width was rounded down sits up to 3 pixels left.
CPoint EstablishedRules::PlaceOnView(const DisplayedImage& image) {
    const int turn = image.QuarterTurns();
    const bool isOnItsSide = turn == 90 || turn == 270;
    const int height = Rounded(image.imageSize.cy * image.EffectiveAspectRatio());
    const CSize shown =
        isOnItsSide ? CSize{height, image.imageSize.cx} : CSize{image.imageSize.cx, height};
    return {Centred(image.viewSize.cx, Rounded(shown.cx * image.zoom), image.panOffset.x),
            Centred(image.viewSize.cy, Rounded(shown.cy * image.zoom), image.panOffset.y)};
}

void EstablishedRules::DrawOnto(DrawingSurface& surface, DisplayedImage& image) const {
    const CXDib dib(image.resultSize, image.renderedPixelSize == 1 ? 8 : 24,
                    image.resultImage.Bytes());
    const CPoint place = PlaceOnView(image);
    SetStretchBltMode(surface, kStretchHalftone);
    SetDIBitsToDevice(surface, place, dib.Info(), dib.Palette(), dib.Bits());
    if (!ShowsAnnotations(image)) return;
    const AnnotationPlace onSurface{
        ImageToSurface(image.renderedView, image.resultSize, place),
        DisplayedArea(*image.presentation, image.renderedView, image.viewSize)};
    DrawAnnotations(*image.presentation, onSurface, surface);
}

}  // namespace quorvex
