/// Who learns how far a conversion is.
#pragma once

#include "foundation/types/answer.h"
#include "quorvex/CxDcmMaker.h"

namespace quorvex {

struct ConversionProgress {
    FrameProgressCallback callback = nullptr;
    void* user = nullptr;

    /// One more frame is done. Anything but QVM_SUCCESS ends the conversion.
    [[nodiscard]] QUORVEX_MESSAGE Report(int done, int all) const {
        if (callback == nullptr) return QVM_SUCCESS;
        const HostCode host;
        return callback(done, all, user) == kMcContinue ? QVM_SUCCESS
                                                        : QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    }
};

}  // namespace quorvex
