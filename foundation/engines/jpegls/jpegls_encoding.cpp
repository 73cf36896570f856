#include "foundation/engines/jpegls/jpegls_engine.h"

#include <charls/charls.h>
#include <new>

namespace quorvex {
namespace {

struct Destroy {
    void operator()(charls_jpegls_encoder* encoder) const noexcept {
        charls_jpegls_encoder_destroy(encoder);
    }
};
using Encoder = std::unique_ptr<charls_jpegls_encoder, Destroy>;

/// Lines of all components in turn: what every reader takes, and the fastest to read.
charls::jpegls_errc Describe(charls_jpegls_encoder* encoder, const JpegLsSource& source) {
    const charls_frame_info frame{source.columns, source.rows,
                                  static_cast<std::int32_t>(source.precision),
                                  static_cast<std::int32_t>(source.components)};
    auto code = charls_jpegls_encoder_set_frame_info(encoder, &frame);
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_encoder_set_near_lossless(
            encoder, static_cast<std::int32_t>(source.errorBound));
    if (code == charls::jpegls_errc::success && source.components > 1)
        code = charls_jpegls_encoder_set_interleave_mode(encoder, charls::interleave_mode::line);
    return code;
}

charls::jpegls_errc CodeInto(const JpegLsSource& source, std::vector<unsigned char>& coded) {
    const Encoder encoder(charls_jpegls_encoder_create());
    if (!encoder) return charls::jpegls_errc::not_enough_memory;
    auto code = Describe(encoder.get(), source);
    if (code == charls::jpegls_errc::success)
        code =
            charls_jpegls_encoder_set_destination_buffer(encoder.get(), coded.data(), coded.size());
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_encoder_encode_from_buffer(encoder.get(), source.samples.data(),
                                                        source.samples.size(), 0);
    std::size_t written = 0;
    if (code == charls::jpegls_errc::success)
        code = charls_jpegls_encoder_get_bytes_written(encoder.get(), &written);
    if (code == charls::jpegls_errc::success) coded.resize(written);
    return code;
}

}  // namespace

std::optional<std::vector<unsigned char>> CodeJpegLs(const JpegLsSource& source) {
    constexpr std::size_t kHeaderBytes = 1024;
    // No code has more than four times the bits of its sample (T.87 A.2.1, LIMIT): most pictures
    // fit into their own size, noise may not.
    for (const std::size_t factor : {1U, 2U, 5U}) {
        std::vector<unsigned char> coded(kHeaderBytes + factor * source.samples.size());
        const auto code = CodeInto(source, coded);
        if (code == charls::jpegls_errc::success) return coded;
        if (code == charls::jpegls_errc::not_enough_memory) throw std::bad_alloc();
        if (code != charls::jpegls_errc::destination_buffer_too_small) return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace quorvex
