/// An image on its way into a `CXDIPP`: made whole first, then taken over in one step that cannot
/// fail, so that the image on show survives every failure.
#pragma once

#include "pipeline/intake/modality_stage.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>

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
    std::unique_ptr<CXWindowing> windowing;
    ValueRange range;
    ValueScale scale;
    int minValue = 0;  ///< what the members of that name become
    int maxValue = 0;

    /// Takes what the header says, and reads the presentation of `object`.
    void TakeHeader(const PixelHeader& header, CDcmObject& object);
    /// Takes a colour frame, samples interleaved. After `TakeHeader`.
    void TakeColour(PixelBlock frame, const PixelHeader& header);
    /// Takes a grey frame and what values it adds to those met. After `TakeHeader`.
    void TakeGrey(ModalityFrame frame);

private:
    void SetDomain(const ModalityFrame& frame);
    void TakeScale(const ValueScale& frameScale);
};

/// Domain over `low` to `high`, unless that is more than windowing should get a table for: then it
/// covers the frame's own values and 0.
void SetDomain(ValueRange& range, std::int64_t low, std::int64_t high) noexcept;

}  // namespace quorvex
