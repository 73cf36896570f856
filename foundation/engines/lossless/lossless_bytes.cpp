#include "foundation/engines/lossless/lossless_bytes.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kStretch = std::size_t{32} << 10;  // stays in the first cache
constexpr std::size_t kMostReserved = std::size_t{64} << 20;
constexpr std::size_t kReadAhead = 16;  // by whole words, past a row's last bit

}  // namespace

LosslessBytes::LosslessBytes(JpegInput& input, std::size_t dataPlace, std::size_t rowBytes)
    : input_(input),
      place_(dataPlace),
      rowBytes_(rowBytes + kReadAhead),
      capacity_(rowBytes_ + kStretch),
      window_(capacity_ + rowBytes_ + kReadAhead) {
    stream_.reserve(std::min<std::uint64_t>(input.ExpectedBytes(), kMostReserved));
}

const unsigned char* LosslessBytes::First() {
    while (stream_.size() < place_ && PullMore()) continue;
    Fill();
    return window_.data();
}

const unsigned char* LosslessBytes::NextInterval() {
    end_ = 0;
    isAtEnd_ = false;
    marker_ = 0;
    Fill();
    return window_.data();
}

const unsigned char* LosslessBytes::Supply(const unsigned char* next) {
    const auto used = static_cast<std::size_t>(next - window_.data());
    if (isAtEnd_ || used + rowBytes_ <= end_) return next;
    std::memmove(window_.data(), next, end_ - used);
    end_ -= used;
    Fill();
    return window_.data();
}

void LosslessBytes::Fill() {
    while (end_ < capacity_ && !isAtEnd_) CopyStretch();
}

void LosslessBytes::CopyStretch() {
    if (place_ >= stream_.size() && !PullMore()) return EndWith(0);
    const unsigned char* from = stream_.data() + place_;
    const std::size_t most = std::min(stream_.size() - place_, capacity_ - end_);
    const void* escape = std::memchr(from, 0xFF, most);
    const std::size_t plain =
        escape == nullptr
            ? most
            : static_cast<std::size_t>(static_cast<const unsigned char*>(escape) - from);
    std::memcpy(window_.data() + end_, from, plain);
    end_ += plain;
    place_ += plain;
    if (escape != nullptr) TakeEscape();
}

// 0xFF, any number of times, and 0 stand for a byte of 0xFF; with another byte it is a marker.
void LosslessBytes::TakeEscape() {
    do {
        ++place_;
        if (place_ >= stream_.size() && !PullMore()) return EndWith(0);
    } while (stream_[place_] == 0xFF);
    const std::uint8_t code = stream_[place_++];
    if (code != 0) return EndWith(code);
    window_[end_++] = 0xFF;
}

void LosslessBytes::EndWith(std::uint8_t marker) noexcept {
    isAtEnd_ = true;
    marker_ = marker;
    std::fill_n(window_.begin() + static_cast<std::ptrdiff_t>(end_), rowBytes_ + kReadAhead, 0);
}

bool LosslessBytes::PullMore() {
    const auto block = input_.Next();
    stream_.insert(stream_.end(), block.begin(), block.end());
    return !block.empty();
}

}  // namespace quorvex
