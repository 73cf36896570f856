/// A shutter on the way into a render job.
#pragma once

#include "pipeline/pixel_block.h"

#include <array>
#include <memory>

namespace quorvex {

class CXGSPSInfo;
struct _IMAGE_INFO;

/// What a job with a shutter reads in place of the image's own blocks.
struct ShutteredLayers {
    PixelBlock colours;
    std::array<unsigned char, 256> plainTable{};
    PixelBlock palette;
};

/// Makes `job`, which has all but its output, show the record's presentation value wherever its
/// mask hides a pixel. Null where the record has no mask. The record and the result must outlive
/// the job.
[[nodiscard]] std::unique_ptr<ShutteredLayers> PutShutter(_IMAGE_INFO& job,
                                                          const CXGSPSInfo& record);

}  // namespace quorvex
