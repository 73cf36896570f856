#include "foundation/platform/surface.h"
#include "foundation/types/answer.h"
#include "foundation/types/saturate.h"
#include "pipeline/view/dib.h"
#include "quorvex/CXDIPP.h"

#include <cstdint>
#include <span>

namespace quorvex {

namespace {

struct Placement {
    CSize image;
    CSize view;
    CPoint pan;
    double zoom = 1.0;
    double aspectRatio = 1.0;
    bool isQuarterTurn = false;
};

int Rounded(double value) {
    return TruncateToInt(value + 0.5);
}

int Centred(std::int64_t viewLength, std::int64_t length, int pan) {
    return SaturateToInt((viewLength - length) / 2 + pan);
}

// The unrounded size is centred, so a result whose width was rounded down sits up to 3 pixels left.
CPoint PlaceOnView(const Placement& p) {
    const int upright = Rounded(p.image.cy * p.aspectRatio);
    const CSize shown = p.isQuarterTurn ? CSize{upright, p.image.cx} : CSize{p.image.cx, upright};
    return {Centred(p.view.cx, Rounded(shown.cx * p.zoom), p.pan.x),
            Centred(p.view.cy, Rounded(shown.cy * p.zoom), p.pan.y)};
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Draw(CDC* deviceContext) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (!resultImage.data) return QVM_ERROR_NO_IMAGE;
        DrawingSurface* surface = deviceContext != nullptr ? deviceContext->GetSafeHdc() : nullptr;
        if (surface == nullptr) return QVM_SUCCESS;
        const CXDib dib(resultSize, renderedPixelSize == 1 ? 8 : 24,
                        {resultImage.data.get(), resultImage.size});
        const int turn = QuarterTurns();
        SetStretchBltMode(*surface, kStretchHalftone);
        const CPoint place = PlaceOnView({imageSize, viewSize, panOffset, zoom,
                                          EffectiveAspectRatio(), turn == 90 || turn == 270});
        SetDIBitsToDevice(*surface, place, dib.Info(), dib.Palette(), dib.Bits());
        if (annotationsShown != 0) DrawAnnotations(*surface, place);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
