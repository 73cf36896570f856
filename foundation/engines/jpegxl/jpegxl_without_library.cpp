#include "foundation/engines/jpegxl/jpegxl_engine.h"

namespace quorvex {

bool HasJpegXl() noexcept {
    return false;
}

JpegXlDecoder::JpegXlDecoder(std::span<const unsigned char> /*stream*/)
    : state_(JpegXlResult::kUnsupported) {}

JpegXlResult JpegXlDecoder::Decode(std::span<unsigned char> /*samples*/,
                                   std::size_t /*sampleBytes*/) {
    return state_;
}

JpegXlResult JpegXlDecoder::RestoreJpeg(std::vector<unsigned char>& /*jpeg*/) {
    return state_;
}

std::optional<std::vector<unsigned char>> CodeJpegXl(const JpegXlSource& /*source*/) {
    return std::nullopt;
}

std::optional<std::vector<unsigned char>> RecompressJpeg(std::span<const unsigned char> /*jpeg*/) {
    return std::nullopt;
}

}  // namespace quorvex
