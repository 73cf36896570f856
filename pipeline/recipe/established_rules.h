/// The established rules: what hosts of this library have always seen.
#pragma once

#include "pipeline/recipe/display_rules.h"

namespace quorvex {

class EstablishedRules final : public DisplayRules {
public:
    QUORVEX_MESSAGE ShowFrame(DisplayedImage& image, CxDcmParser& source, CSize viewSize,
                              int frameIndex) const override;
    QUORVEX_MESSAGE ApplyState(DisplayedImage& image, CDcmObject* state) const override;
    void LayOut(DisplayedImage& image) const noexcept override;
    void TurnBy(DisplayedImage& image, int degrees) const noexcept override;
    void TurnTo(DisplayedImage& image, int degrees) const noexcept override;
    void Mirror(DisplayedImage& image) const noexcept override;
    void SetWindow(DisplayedImage& image, double level, double width,
                   std::optional<VoiFunction> function) const override;
    void StepWindow(DisplayedImage& image, int levelDelta, int widthDelta) const override;
    void ToggleInversion(DisplayedImage& image) const override;
    void ReadWindow(DisplayedImage& image, double& width, double& level) const override;
    QUORVEX_MESSAGE Render(DisplayedImage& image) const override;
    QUORVEX_MESSAGE RenderInto(DisplayedImage& image, const PixelTarget& target) const override;
    QUORVEX_MESSAGE DescribePicture(const DisplayedImage& image,
                                    PictureInfo& picture) const override;
    void DrawOnto(DrawingSurface& surface, DisplayedImage& image) const override;

private:
    /// Where the upper left corner of a result lies in the view.
    [[nodiscard]] static CPoint PlaceOnView(const DisplayedImage& image);
};

}  // namespace quorvex
