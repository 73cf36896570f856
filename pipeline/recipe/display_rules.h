/// The one place where the two sets of rules part: what bringing an image in, changing its view and
/// drawing it mean.
#pragma once

#include "pipeline/displayed_image.h"
#include "quorvex/PixelTarget.h"
#include "quorvex/ResultCodes.h"

#include <optional>

namespace quorvex {

class CDcmObject;
class CxDcmParser;

class DisplayRules {
public:
    DisplayRules() = default;
    DisplayRules(const DisplayRules&) = delete;
    DisplayRules& operator=(const DisplayRules&) = delete;
    virtual ~DisplayRules() = default;

    /// Brings in a frame of what `source` has open. Leaves the image as it was where it fails.
    virtual QUORVEX_MESSAGE ShowFrame(DisplayedImage& image, CxDcmParser& source, CSize viewSize,
                                      int frameIndex) const = 0;
    /// Lays a presentation state over the image; null is a state that could not be read.
    virtual QUORVEX_MESSAGE ApplyState(DisplayedImage& image, CDcmObject* state) const = 0;

    /// Zoom and pan as the presentation asks for the present view.
    virtual void LayOut(DisplayedImage& image) const noexcept = 0;
    virtual void TurnBy(DisplayedImage& image, int degrees) const noexcept = 0;
    virtual void TurnTo(DisplayedImage& image, int degrees) const noexcept = 0;
    virtual void Mirror(DisplayedImage& image) const noexcept = 0;

    /// Sets the window, in modality units; without a function it keeps the present one.
    virtual void SetWindow(DisplayedImage& image, double level, double width,
                           std::optional<VoiFunction> function) const = 0;
    /// Moves level and width against the deltas, in the steps of the image's bit depth.
    virtual void StepWindow(DisplayedImage& image, int levelDelta, int widthDelta) const = 0;
    virtual void ToggleInversion(DisplayedImage& image) const = 0;
    virtual void ReadWindow(DisplayedImage& image, double& width, double& level) const = 0;

    virtual QUORVEX_MESSAGE Render(DisplayedImage& image) const = 0;
    /// Renders into a host's memory; the last result stays as it is.
    virtual QUORVEX_MESSAGE RenderInto(DisplayedImage& image, const PixelTarget& target) const = 0;
    /// What a render would make now.
    virtual QUORVEX_MESSAGE DescribePicture(const DisplayedImage& image,
                                            PictureInfo& picture) const = 0;
    /// Draws the last result, which is there.
    virtual void DrawOnto(DrawingSurface& surface, DisplayedImage& image) const = 0;
};

/// The rules that new images come in by.
[[nodiscard]] const DisplayRules& RulesForNext(const DisplayedImage& image) noexcept;
/// The rules that the image on show came in by.
[[nodiscard]] const DisplayRules& RulesOf(const DisplayedImage& image) noexcept;

}  // namespace quorvex
