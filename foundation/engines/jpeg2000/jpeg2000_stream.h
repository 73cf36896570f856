/// Codestreams in memory, as OpenJPEG reads and writes them.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <openjpeg.h>
#include <span>
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

/// Two stretches of bytes that are read as one.
struct OpjSource {
    std::array<std::span<const unsigned char>, 2> parts;
    std::size_t place = 0;
    [[nodiscard]] std::size_t Size() const noexcept { return parts[0].size() + parts[1].size(); }
};

/// Bytes that grow as they are written. Writing fails above `limit`.
struct OpjTarget {
    std::vector<unsigned char>& bytes;
    std::size_t limit = 0;
    std::size_t place = 0;
};

/// Null without memory. The source or target must outlive the stream.
[[nodiscard]] OpjStream OpenForReading(OpjSource& source) noexcept;
[[nodiscard]] OpjStream OpenForWriting(OpjTarget& target) noexcept;

/// A codec that prints nothing; null without memory. The decoder notes in `ranOut`, which must
/// outlive it, that it had no memory later on.
[[nodiscard]] OpjCodec MakeOpjDecoder(bool& ranOut) noexcept;
[[nodiscard]] OpjCodec MakeOpjEncoder() noexcept;

}  // namespace quorvex
