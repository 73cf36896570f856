#include "pipeline/intake/fetched_frame.h"

#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

QUORVEX_MESSAGE FetchFrame(CxDcmParser& source, int frameIndex, FetchedFrame& frame) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = source.GetAFrame(frameIndex, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    PixelBlock pixels{std::unique_ptr<unsigned char[]>(data), size};
    const auto header = ReadPixelHeader(*source.GetHeader());
    if (!header || !pixels.data) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    frame = {std::move(pixels), *header};
    return QVM_SUCCESS;
}

}  // namespace quorvex
