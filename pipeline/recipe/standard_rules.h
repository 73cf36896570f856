/// The standard rules: what the DICOM standard defines for the image on show.
#pragma once

#include "pipeline/recipe/display_rules.h"

namespace quorvex {

class StandardRules final : public DisplayRules {
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
    /// Brings the frame on show in again, as fine as it is stored.
    QUORVEX_MESSAGE ShowWhole(DisplayedImage& image) const;
};

}  // namespace quorvex
