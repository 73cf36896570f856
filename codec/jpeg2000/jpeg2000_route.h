/// What every use of the JPEG 2000 engine does: load the coder, describe the pixels, make the
/// requests.
#pragma once

#include "codec/frame_description.h"
#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include <atomic>

namespace quorvex {

/// One use of the engine, which loads its coder once in a process. Any number of threads may.
class Jpeg2000Route {
public:
    constexpr explicit Jpeg2000Route(PegasusOperation operation) noexcept : operation_(operation) {}
    /// Whether the coder is there.
    [[nodiscard]] bool Load() noexcept;

private:
    PegasusOperation operation_;
    std::atomic<bool> isLoaded_{false};
};

/// A form whose frames the high-throughput coder makes.
[[nodiscard]] constexpr bool IsHighThroughput(QUORVEX_XFERSYNTAX form) noexcept {
    return form == kXferHtj2kLossless || form == kXferHtj2kRpclLossless || form == kXferHtj2k;
}

/// The size and form of a frame's pixels, without their sign.
void DescribePixels(const FrameDescription& frame, PegasusParameters& parameters) noexcept;

/// All three requests, in their order. @return 1, or of the request that failed: 5 the first, 2 the
/// second, 6 the third
int RunRequests(PegasusParameters& parameters) noexcept;

}  // namespace quorvex
