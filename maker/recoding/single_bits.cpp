#include "maker/recoding/single_bits.h"

#include <cstddef>

namespace quorvex {

std::vector<unsigned char> PackBits(std::span<const unsigned char> samples) {
    std::vector<unsigned char> packed((samples.size() + 7) / 8);
    for (std::size_t i = 0; i < samples.size(); ++i)
        packed[i / 8] |= static_cast<unsigned char>((samples[i] & 1U) << (i % 8));
    return packed;
}

QUORVEX_MESSAGE BitFrames::Next(std::span<unsigned char>& bytes) {
    do {
        std::span<unsigned char> frame;
        const auto result = samples_.Next(frame);
        if (result != QVM_SUCCESS) return result;
        rest_.insert(rest_.end(), frame.begin(), frame.end());
    } while (rest_.size() < 8 && !samples_.AreAtEnd());
    const std::size_t count = samples_.AreAtEnd() ? rest_.size() : rest_.size() / 8 * 8;
    packed_ = PackBits(std::span(rest_).first(count));
    rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(count));
    bytes = packed_;
    return QVM_SUCCESS;
}

}  // namespace quorvex
