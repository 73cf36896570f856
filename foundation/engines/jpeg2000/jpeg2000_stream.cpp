#include "foundation/engines/jpeg2000/jpeg2000_stream.h"

#include "foundation/types/limits.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

constexpr auto kEnd = static_cast<OPJ_SIZE_T>(-1);

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
void NoteMissingMemory(const char* sentence, void*) noexcept {
    if (std::strstr(sentence, "memory") != nullptr) RefuseBy(Limit::kMemory);
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

OpjStream OpenForWriting(OpjTarget& target) noexcept {
    OpjStream stream(opj_stream_create(kBufferBytes, OPJ_FALSE));
    if (!stream) return nullptr;
    opj_stream_set_write_function(stream.get(), Write);
    opj_stream_set_seek_function(stream.get(), SeekTarget);
    opj_stream_set_skip_function(stream.get(), SkipTarget);
    opj_stream_set_user_data(stream.get(), &target, nullptr);
    return stream;
}

OpjCodec MakeOpjEncoder() noexcept {
    return Silent(opj_create_compress(OPJ_CODEC_J2K));
}

}  // namespace quorvex
