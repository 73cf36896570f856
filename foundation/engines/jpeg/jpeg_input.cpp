#include "foundation/engines/jpeg/jpeg_input.h"

#include <algorithm>

namespace quorvex {

JpegInput::~JpegInput() {
    std::uint16_t length = 0;
    read_(kJpegReadEnd, context_, &buffer_, &length);
}

bool JpegInput::GrowHead() {
    const auto block = Pull();
    head_.insert(head_.end(), block.begin(), block.end());
    return !block.empty();
}

std::span<const unsigned char> JpegInput::Next() noexcept {
    if (!headIsOut_) {
        headIsOut_ = true;
        if (!head_.empty()) return head_;
    }
    return Pull();
}

std::span<const unsigned char> JpegInput::Pull() noexcept {
    if (isAtEnd_) return {};
    std::uint16_t length = 0;
    const int event = buffer_ == nullptr ? kJpegReadFirst : kJpegReadMore;
    const int answer = read_(event, context_, &buffer_, &length);
    isAtEnd_ = answer != 0 || buffer_ == nullptr || length == 0;
    if (isAtEnd_) return {};
    return {buffer_, std::min(length, kJpegBufferBytes)};
}

}  // namespace quorvex
