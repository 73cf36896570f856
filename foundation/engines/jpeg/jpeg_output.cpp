#include "foundation/engines/jpeg/jpeg_output.h"

#include <algorithm>
#include <cstring>

namespace quorvex {

bool JpegOutput::Begin() noexcept {
    std::uint16_t length = kJpegBufferBytes;
    isOpen_ = write_(kJpegWriteFirst, context_, &buffer_, &length) == 0 && buffer_ != nullptr &&
              length == kJpegBufferBytes;
    return isOpen_;
}

bool JpegOutput::Tell(int event, std::size_t count) noexcept {
    auto length = static_cast<std::uint16_t>(count);
    isOpen_ = isOpen_ && write_(event, context_, &buffer_, &length) == 0;
    return isOpen_;
}

bool JpegOutput::Flush() noexcept {
    const std::size_t count = used_;
    used_ = 0;
    return Tell(kJpegWriteBlock, count);
}

bool JpegOutput::Put(std::span<const unsigned char> bytes) noexcept {
    while (isOpen_ && !bytes.empty()) {
        const auto count = std::min<std::size_t>(kJpegBufferBytes - used_, bytes.size());
        std::memcpy(buffer_ + used_, bytes.data(), count);
        used_ += count;
        bytes = bytes.subspan(count);
        if (used_ == kJpegBufferBytes) (void)Flush();
    }
    return isOpen_;
}

bool JpegOutput::PutStuffed(std::span<const unsigned char> bytes) noexcept {
    constexpr unsigned char kStuffing[] = {0};
    while (isOpen_ && !bytes.empty()) {
        const void* found = std::memchr(bytes.data(), 0xFF, bytes.size());
        if (found == nullptr) return Put(bytes);
        const auto* escape = static_cast<const unsigned char*>(found);
        const auto plain = static_cast<std::size_t>(escape - bytes.data()) + 1;
        if (Put(bytes.first(plain))) (void)Put(kStuffing);
        bytes = bytes.subspan(plain);
    }
    return isOpen_;
}

bool JpegOutput::End() noexcept {
    if (used_ > 0 && !Flush()) return false;
    return Tell(kJpegWriteEnd, 0);
}

}  // namespace quorvex
