/// An image on its way into a `CXDIPP`: made whole first, then taken over in one step that cannot
/// fail, so that the image on show survives every failure.
#pragma once

#include "pipeline/displayed_image.h"
#include "pipeline/intake/modality_stage.h"
#include "pipeline/pixel_block.h"
#include "pipeline/value_range.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace quorvex {

class CDcmObject;
class CXGSPSInfo;
class CXWindowing;
struct PixelHeader;

struct IncomingImage {
    CSize imageSize;
    CSize viewSize;
    int pixelRepresentation = 0;
    int bytesPerPixel = 0;
    unsigned short bitsStored = 0;
    PixelBlock pixels;
    PixelBlock headerOverlays;  ///< empty without any
    std::shared_ptr<CXGSPSInfo> record;
    ValueRange range;
    int minValue = 0;  ///< over the grey values met; 0 always lies between the two
    int maxValue = 0;
    /// Before a frame comes in: of fractional values, those met in the object that is open. Then:
    /// what a window over the full range covers where elements are scaled.
    ExactSpan fullRange;

    /// Takes what the header says, and reads the presentation of `object`.
    void TakeHeader(const PixelHeader& header, CDcmObject& object);
    /// Takes a colour frame, samples interleaved. Needs the record.
    void TakeColour(PixelBlock frame, const PixelHeader& header);
    /// Takes a grey frame, and adds its values to those met. Needs the record.
    void TakeGrey(ModalityFrame frame);

    /// Becomes the image on show, laid out afresh; the values met are not taken over. Where it
    /// throws `current` is as it was.
    void Replace(DisplayedImage& current);

private:
    void SetDomain(const ModalityFrame& frame);
    void WidenFullRange(const ModalityFrame& frame);
    void Prepare(const CXWindowing& current);
    void Commit(DisplayedImage& current) noexcept;

    ValueScale scale_;
    std::optional<ValueWindow> valueWindow_;
    std::unique_ptr<CXWindowing> windowing_;
};

/// Domain over `low` to `high`, unless that is more than windowing should get a table for: then it
/// covers the frame's own values and 0.
void SetDomain(ValueRange& range, std::int64_t low, std::int64_t high) noexcept;

}  // namespace quorvex
