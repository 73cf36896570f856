#include "foundation/engines/jpeg2000/jpeg2000_stream.h"

#include "foundation/types/limits.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

constexpr auto kEnd = static_cast<OPJ_SIZE_T>(-1);

std::span<const unsigned char> From(const OpjSource& source) noexcept {
    const std::size_t first = source.parts[0].size();
    if (source.place < first) return source.parts[0].subspan(source.place);
    return source.parts[1].subspan(std::min(source.place - first, source.parts[1].size()));
}

OPJ_SIZE_T Read(void* buffer, OPJ_SIZE_T wanted, void* user) noexcept {
    auto& source = *static_cast<OpjSource*>(user);
    auto* to = static_cast<unsigned char*>(buffer);
    OPJ_SIZE_T done = 0;
    while (done < wanted) {
        const auto rest = From(source);
        const std::size_t count = std::min<std::size_t>(wanted - done, rest.size());
        if (count == 0) break;
        std::memcpy(to + done, rest.data(), count);
        done += count;
        source.place += count;
    }
    return done == 0 ? kEnd : done;
}

OPJ_BOOL SeekSource(OPJ_OFF_T place, void* user) noexcept {
    auto& source = *static_cast<OpjSource*>(user);
    if (place < 0 || static_cast<std::uint64_t>(place) > source.Size()) return OPJ_FALSE;
    source.place = static_cast<std::size_t>(place);
    return OPJ_TRUE;
}

OPJ_OFF_T SkipSource(OPJ_OFF_T count, void* user) noexcept {
    const auto& source = *static_cast<OpjSource*>(user);
    const auto rest = static_cast<OPJ_OFF_T>(source.Size() - source.place);
    const OPJ_OFF_T moved = std::min(count, rest);
    if (moved <= 0 && count != 0) return -1;
    return SeekSource(static_cast<OPJ_OFF_T>(source.place) + moved, user) ? moved : -1;
}

// Nothing may be thrown through the library.
bool Grow(OpjTarget& target, std::size_t size) noexcept {
    if (size > target.limit) return false;
    try {
        if (size > target.bytes.size()) target.bytes.resize(size);
        return true;
    } catch (...) {
        return false;
    }
}

OPJ_SIZE_T Write(void* buffer, OPJ_SIZE_T count, void* user) noexcept {
    auto& target = *static_cast<OpjTarget*>(user);
    if (!Grow(target, target.place + count)) return kEnd;
    std::memcpy(target.bytes.data() + target.place, buffer, count);
    target.place += count;
    return count;
}

OPJ_BOOL SeekTarget(OPJ_OFF_T place, void* user) noexcept {
    auto& target = *static_cast<OpjTarget*>(user);
    if (place < 0 || !Grow(target, static_cast<std::size_t>(place))) return OPJ_FALSE;
    target.place = static_cast<std::size_t>(place);
    return OPJ_TRUE;
}

OPJ_OFF_T SkipTarget(OPJ_OFF_T count, void* user) noexcept {
    const auto& target = *static_cast<OpjTarget*>(user);
    return SeekTarget(static_cast<OPJ_OFF_T>(target.place) + count, user) ? count : -1;
}

void SayNothing(const char*, void*) noexcept {}

/// The library reports missing memory only as a message text.
/// @param user  a flag to set, or null
void NoteMissingMemory(const char* sentence, void* user) noexcept {
    if (std::strstr(sentence, "memory") == nullptr) return;
    if (user != nullptr) *static_cast<bool*>(user) = true;
    RefuseBy(Limit::kMemory);
}

OpjCodec Silent(opj_codec_t* codec) noexcept {
    if (codec == nullptr) return nullptr;
    opj_set_info_handler(codec, SayNothing, nullptr);
    opj_set_warning_handler(codec, SayNothing, nullptr);
    opj_set_error_handler(codec, NoteMissingMemory, nullptr);
    return OpjCodec(codec);
}

constexpr OPJ_SIZE_T kBufferBytes = OPJ_SIZE_T{1} << 16;

}  // namespace

OpjStream OpenForReading(OpjSource& source) noexcept {
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_TRUE));
    if (!stream) return nullptr;
    opj_stream_set_read_function(stream.get(), Read);
    opj_stream_set_seek_function(stream.get(), SeekSource);
    opj_stream_set_skip_function(stream.get(), SkipSource);
    opj_stream_set_user_data(stream.get(), &source, nullptr);
    opj_stream_set_user_data_length(stream.get(), source.Size());
    return stream;
}

OpjStream OpenForWriting(OpjTarget& target) noexcept {
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_FALSE));
    if (!stream) return nullptr;
    opj_stream_set_write_function(stream.get(), Write);
    opj_stream_set_seek_function(stream.get(), SeekTarget);
    opj_stream_set_skip_function(stream.get(), SkipTarget);
    opj_stream_set_user_data(stream.get(), &target, nullptr);
    return stream;
}

OpjCodec MakeOpjDecoder(bool& ranOut) noexcept {
    OpjCodec codec = Silent(opj_create_decompress(OPJ_CODEC_J2K));
    if (codec) opj_set_error_handler(codec.get(), NoteMissingMemory, &ranOut);
    return codec;
}
OpjCodec MakeOpjEncoder() noexcept {
    return Silent(opj_create_compress(OPJ_CODEC_J2K));
}

}  // namespace quorvex
