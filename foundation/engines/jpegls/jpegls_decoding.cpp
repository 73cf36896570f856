#include "foundation/engines/jpegls/jpegls_engine.h"
#include "foundation/types/limits.h"

#include <algorithm>
#include <array>
#include <charls/charls.h>

namespace quorvex {
namespace {

JpegLsResult ResultOf(charls::jpegls_errc code) noexcept {
    using charls::jpegls_errc;
    switch (code) {
        case jpegls_errc::success:
            return JpegLsResult::kDone;
        case jpegls_errc::not_enough_memory:
            RefuseBy(Limit::kMemory);
            return JpegLsResult::kNoMemory;
        case jpegls_errc::parameter_value_not_supported:
        case jpegls_errc::bit_depth_for_transform_not_supported:
        case jpegls_errc::color_transform_not_supported:
        case jpegls_errc::encoding_not_supported:
        case jpegls_errc::jpegls_preset_extended_parameter_type_not_supported:
            return JpegLsResult::kUnsupported;
        default:
            return JpegLsResult::kDamaged;
    }
}

constexpr std::array<unsigned char, 2> kEndOfImage = {0xFF, 0xD9};

/// Whether a stream ends with its marker, or with that and zeros.
bool HasEnd(std::span<const unsigned char> stream) noexcept {
    while (!stream.empty() && stream.back() == 0) stream = stream.first(stream.size() - 1);
    return stream.size() >= kEndOfImage.size() &&
           std::ranges::equal(stream.last(kEndOfImage.size()), kEndOfImage);
}

/// CharLS 2.4.1 runs in circles at the end of coded data that no marker follows.
std::vector<unsigned char> Closed(std::span<const unsigned char> stream) {
    std::vector<unsigned char> closed(stream.size() + kEndOfImage.size());
    std::ranges::copy(kEndOfImage, std::ranges::copy(stream, closed.begin()).out);
    return closed;
}

}  // namespace

void JpegLsDecoder::Destroy::operator()(charls_jpegls_decoder* decoder) const noexcept {
    charls_jpegls_decoder_destroy(decoder);
}

JpegLsDecoder::JpegLsDecoder(std::span<const unsigned char> stream)
    : closed_(HasEnd(stream) ? std::vector<unsigned char>() : Closed(stream)),
      decoder_(charls_jpegls_decoder_create()),
      state_(Open(closed_.empty() ? stream : closed_)) {}

JpegLsResult JpegLsDecoder::Open(std::span<const unsigned char> stream) noexcept {
    auto* const decoder = decoder_.get();
    if (decoder == nullptr) return ResultOf(charls::jpegls_errc::not_enough_memory);
    auto code = charls_jpegls_decoder_set_source_buffer(decoder, stream.data(), stream.size());
    if (code == charls::jpegls_errc::success) code = charls_jpegls_decoder_read_header(decoder);
    charls_frame_info frame{};
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_decoder_get_frame_info(decoder, &frame);
    auto interleave = charls::interleave_mode::none;
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_decoder_get_interleave_mode(decoder, &interleave);
    std::int32_t bound = 0;
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_decoder_get_near_lossless(decoder, 0, &bound);
    header_ = {
        .columns = frame.width,
        .rows = frame.height,
        .components = static_cast<unsigned>(frame.component_count),
        .precision = static_cast<unsigned>(frame.bits_per_sample),
        .errorBound = static_cast<unsigned>(bound),
        .isByPlanes = interleave == charls::interleave_mode::none && frame.component_count > 1};
    return ResultOf(code);
}

JpegLsResult JpegLsDecoder::Decode(std::span<unsigned char> samples) noexcept {
    if (state_ != JpegLsResult::kDone) return state_;
    const auto code =
        charls_jpegls_decoder_decode_to_buffer(decoder_.get(), samples.data(), samples.size(), 0);
    return ResultOf(code);
}

}  // namespace quorvex
