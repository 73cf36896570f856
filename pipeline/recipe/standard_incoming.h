/// An image on its way into a `CXDIPP` by the standard rules: made whole first, then taken over in
/// one step that cannot fail.
#pragma once

#include "pipeline/pixel_block.h"
#include "pipeline/recipe/standard_image.h"
#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

class CDcmObject;
class CXGSPSInfo;
struct DisplayedImage;
struct PixelHeader;

[[nodiscard]] StoredForm FormOf(const PixelHeader& header);

struct StandardIncoming {
    StandardImage image;
    PixelBlock pixels;
    int bytesPerPixel = 1;
    CSize size;
    std::shared_ptr<const CXGSPSInfo> record;

    /// False, and nothing taken, where the frame is too short.
    [[nodiscard]] bool TakeReal(PixelBlock frame, const PixelHeader& header);
    void TakeGrey(PixelBlock frame, const PixelHeader& header);
    void TakeColour(PixelBlock frame, const PixelHeader& header);
    /// Palette indices become their colours. False, and nothing taken, where the object has no
    /// whole palette.
    [[nodiscard]] bool TakePalette(PixelBlock frame, const PixelHeader& header, CDcmObject& object);
    /// Adds the colours that a supplemental palette gives to grey values.
    void TakeSupplement(CDcmObject& object);

    /// Becomes the image on show, laid out afresh.
    void Commit(DisplayedImage& shown, CSize viewSize) noexcept;
};

/// Turn and flip: those of the state that applies, else those of the record.
void TakeAttitude(DisplayedImage& shown, const StandardImage& image,
                  const CXGSPSInfo& record) noexcept;

}  // namespace quorvex
