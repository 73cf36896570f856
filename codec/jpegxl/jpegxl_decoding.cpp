#include "codec/frame_decoder.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace quorvex {

int FrameDecoder::DecompressJpegXlData() {
    JpegXlDecoder stream(source_);
    const std::size_t sampleBytes = frame_.BytesPerSample();
    const JpegXlHeader& header = stream.Header();
    isSupported_ = stream.State() != JpegXlResult::kUnsupported;
    if (stream.State() != JpegXlResult::kDone || header.columns != frame_.columns ||
        header.rows != frame_.rows || header.components != frame_.samplesPerPixel ||
        header.precision > 8 * sampleBytes) {
        return 0;
    }
    if (header.hasJpeg) {
        std::vector<unsigned char> jpeg;
        if (stream.RestoreJpeg(jpeg) != JpegXlResult::kDone) return 0;
        const auto boxes = std::exchange(source_, jpeg);
        const int result = DecompressJpegData();
        source_ = boxes;
        return result;
    }
    const auto result = stream.Decode(target_, sampleBytes);
    isSupported_ = result != JpegXlResult::kUnsupported;
    if (result != JpegXlResult::kDone) return 0;
    if (frame_.IsColour() && frame_.IsFullRangeYbr() && !header.isXyb)
        ConvertStoredYbr(sampleBytes);
    written_ = target_.size();
    return 1;
}

}  // namespace quorvex
