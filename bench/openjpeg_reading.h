/// Codestreams in memory as OpenJPEG reads them, for benches that call it directly.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_stream.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace quorvex::bench {

struct OpjSource {
    std::span<const unsigned char> bytes;
    std::size_t place = 0;
};

inline OPJ_SIZE_T ReadSource(void* buffer, OPJ_SIZE_T wanted, void* user) noexcept {
    auto& source = *static_cast<OpjSource*>(user);
    const std::size_t count = std::min<std::size_t>(wanted, source.bytes.size() - source.place);
    if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(buffer, source.bytes.data() + source.place, count);
    source.place += count;
    return count;
}

inline OPJ_BOOL SeekSource(OPJ_OFF_T place, void* user) noexcept {
    auto& source = *static_cast<OpjSource*>(user);
    if (place < 0 || static_cast<std::size_t>(place) > source.bytes.size()) return OPJ_FALSE;
    source.place = static_cast<std::size_t>(place);
    return OPJ_TRUE;
}

inline OPJ_OFF_T SkipSource(OPJ_OFF_T count, void* user) noexcept {
    const auto place = static_cast<OPJ_OFF_T>(static_cast<OpjSource*>(user)->place);
    return SeekSource(place + count, user) ? count : -1;
}

/// The source must outlive the stream.
inline OpjStream OpenForReading(OpjSource& source) {
    constexpr OPJ_SIZE_T kBufferBytes = OPJ_SIZE_T{1} << 16;
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_TRUE));
    opj_stream_set_read_function(stream.get(), ReadSource);
    opj_stream_set_seek_function(stream.get(), SeekSource);
    opj_stream_set_skip_function(stream.get(), SkipSource);
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), source.bytes.size());
    return stream;
}

inline OpjCodec MakeOpjDecoder() {
    return OpjCodec(opj_create_decompress(OPJ_CODEC_J2K));
}

}  // namespace quorvex::bench
