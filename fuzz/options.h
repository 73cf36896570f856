/// Choices that a fuzz target draws from the end of its input, so that what is in front of them is
/// a file as it stands.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex::fuzz {

/// The last bytes of an input, taken from the very last one backwards; 0 where there are no more.
class Options {
public:
    Options(const std::uint8_t* data, std::size_t size, std::size_t most) noexcept
        : front_(data, size - std::min(size, most)),
          choices_(data + front_.size(), std::min(size, most)) {}

    /// What lies in front, in a block of exactly its size.
    [[nodiscard]] std::vector<unsigned char> Front() const {
        return {front_.begin(), front_.end()};
    }
    [[nodiscard]] bool IsEmpty() const noexcept { return choices_.empty(); }

    unsigned Byte() noexcept {
        if (choices_.empty()) return 0;
        const unsigned byte = choices_.back();
        choices_ = choices_.first(choices_.size() - 1);
        return byte;
    }
    unsigned short Word() noexcept {
        const unsigned low = Byte();
        return static_cast<unsigned short>(low + 256 * Byte());
    }
    bool Flag() noexcept { return Byte() % 2 != 0; }
    unsigned Below(unsigned end) noexcept { return (end > 256 ? Word() : Byte()) % end; }
    int Between(int low, int high) noexcept {
        return low + static_cast<int>(Below(static_cast<unsigned>(high - low) + 1));
    }
    template <class Value, std::size_t count>
    const Value& OneOf(const Value (&values)[count]) noexcept {
        return values[Below(static_cast<unsigned>(count))];
    }

private:
    std::span<const std::uint8_t> front_;
    std::span<const std::uint8_t> choices_;
};

}  // namespace quorvex::fuzz
