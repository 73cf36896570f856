#include "pipeline/intake/fetched_frame.h"

#include "quorvex/CxDcmParser.h"

#include <memory>
#include <utility>

namespace quorvex {

QUORVEX_MESSAGE FetchFrame(CxDcmParser& source, int frameIndex, FetchedFrame& frame,
                           std::optional<CSize> least) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    CSize came;
    const auto result = least ? source.GetAReducedFrame(frameIndex, *least, data, size, came)
                              : source.GetAFrame(frameIndex, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    PixelBlock pixels{std::unique_ptr<unsigned char[]>(data), size};
    auto header = ReadPixelHeader(*source.GetHeader(), source.GetSampleType());
    if (!header || !pixels.data) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    std::optional<CSize> whole;
    if (least && came != header->size) whole = std::exchange(header->size, came);
    frame = {std::move(pixels), *header, whole};
    return QVM_SUCCESS;
}

}  // namespace quorvex
