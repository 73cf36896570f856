/// An image on its way into a `CXDIPP`: made whole first, then taken over in one step that cannot
/// fail, so that the image on show survives every failure.
#pragma once

#include <memory>

#include "pipeline/modality_stage.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/Types.h"

namespace quorvex {

class CXGSPSInfo;
class CXWindowing;

struct IncomingImage {
    CSize imageSize;
    CSize viewSize;
    int pixelRepresentation = 0;
    int bytesPerPixel = 0;
    unsigned short bitsStored = 0;
    PixelBlock pixels;
    std::shared_ptr<CXGSPSInfo> record;
    std::unique_ptr<CXWindowing> windowing;
    ValueRange range;
    ValueScale scale;
    int minValue = 0;  ///< what the members of that name become
    int maxValue = 0;
};

}  // namespace quorvex
