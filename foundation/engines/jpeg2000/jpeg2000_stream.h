/// Codestreams in memory, as OpenJPEG writes them.
#pragma once

#include <cstddef>
#include <memory>
#include <openjpeg.h>
#include <vector>

namespace quorvex {

struct EndOpjStream {
    void operator()(opj_stream_t* stream) const noexcept { opj_stream_destroy(stream); }
};
struct EndOpjCodec {
    void operator()(opj_codec_t* codec) const noexcept { opj_destroy_codec(codec); }
};
struct EndOpjImage {
    void operator()(opj_image_t* image) const noexcept { opj_image_destroy(image); }
};
using OpjStream = std::unique_ptr<opj_stream_t, EndOpjStream>;
using OpjCodec = std::unique_ptr<opj_codec_t, EndOpjCodec>;
using OpjImage = std::unique_ptr<opj_image_t, EndOpjImage>;

/// Bytes that grow as they are written. Writing fails above `limit`.
struct OpjTarget {
    std::vector<unsigned char>& bytes;
    std::size_t limit = 0;
    std::size_t place = 0;
};

/// Null without memory. The target must outlive the stream.
[[nodiscard]] OpjStream OpenForWriting(OpjTarget& target) noexcept;

/// A coder that prints nothing; null without memory.
[[nodiscard]] OpjCodec MakeOpjEncoder() noexcept;

}  // namespace quorvex
