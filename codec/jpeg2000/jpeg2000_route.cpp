#include "codec/jpeg2000/jpeg2000_route.h"

#include "foundation/dicom/model/transfer_syntax.h"

namespace quorvex {

bool Jpeg2000Route::Load() noexcept {
    constexpr int kEngineVersion = 20;
    if (isLoaded_.load(std::memory_order_acquire)) return true;
    if (PegasusLoadFromRes(operation_, kEngineVersion, 0, 0) != 0) return false;
    isLoaded_.store(true, std::memory_order_release);
    return true;
}

void DescribePixels(const FrameDescription& frame, PegasusParameters& parameters) noexcept {
    parameters.columns = frame.columns;
    parameters.rows = frame.rows;
    parameters.samples = frame.samplesPerPixel;
    parameters.bytesPerSample = static_cast<int>(frame.BytesPerSample());
    parameters.isBigEndian = IsBigEndian(frame.transferSyntax);
}

int RunRequests(PegasusParameters& parameters) noexcept {
    if (Pegasus(parameters, kPegasusBegin) != kPegasusDone) return 5;
    if (Pegasus(parameters, kPegasusWork) != kPegasusDone) return 2;
    if (Pegasus(parameters, kPegasusEnd) != kPegasusDone) return 6;
    return 1;
}

}  // namespace quorvex
