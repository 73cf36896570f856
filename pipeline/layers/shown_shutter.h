/// A shutter on the way into a render job.
#pragma once

#include "quorvex/CXDIPP.h"

#include <array>

namespace quorvex {

class CXGSPSInfo;
struct _IMAGE_INFO;

/// What a job with a shutter reads in place of the image's own layers.
struct ShutteredLayers {
    PixelBlock colours;
    std::array<unsigned char, 256> plainTable{};
    PixelBlock palette;
};

/// Makes `job`, which has all but its output, show the record's presentation value wherever its mask
/// hides a pixel. Null where nothing is hidden. The record and the answer must outlive the job.
[[nodiscard]] std::unique_ptr<ShutteredLayers> PutShutter(_IMAGE_INFO& job,
                                                          const CXGSPSInfo& record);

}  // namespace quorvex
