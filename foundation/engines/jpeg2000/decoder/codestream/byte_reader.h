/// Big-endian numbers from bytes, never past their end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex::j2k {

using Bytes = std::span<const unsigned char>;

/// Past the end it gives zeros and says so.
class ByteReader {
public:
    explicit ByteReader(Bytes bytes) noexcept : bytes_(bytes) {}

    [[nodiscard]] std::uint32_t Byte() noexcept { return Number(1); }
    [[nodiscard]] std::uint32_t Word() noexcept { return Number(2); }
    [[nodiscard]] std::uint32_t Long() noexcept { return Number(4); }
    [[nodiscard]] Bytes Rest() const noexcept { return bytes_.subspan(place_); }
    [[nodiscard]] std::size_t Left() const noexcept { return bytes_.size() - place_; }
    [[nodiscard]] std::size_t Place() const noexcept { return place_; }
    [[nodiscard]] bool RanOut() const noexcept { return ranOut_; }

    /// The next `count` bytes, or as many as there are.
    [[nodiscard]] Bytes Take(std::size_t count) noexcept {
        if (count > Left()) {
            ranOut_ = true;
            count = Left();
        }
        const Bytes taken = bytes_.subspan(place_, count);
        place_ += count;
        return taken;
    }

    /// The next two bytes without taking them; 0 where there are none.
    [[nodiscard]] std::uint32_t Ahead() const noexcept {
        if (Left() < 2) return 0;
        return (std::uint32_t{bytes_[place_]} << 8) | bytes_[place_ + 1];
    }

private:
    std::uint32_t Number(std::size_t bytes) noexcept {
        std::uint32_t value = 0;
        for (const unsigned char byte : Take(bytes)) value = (value << 8) | byte;
        return ranOut_ ? 0 : value;
    }

    Bytes bytes_;
    std::size_t place_ = 0;
    bool ranOut_ = false;
};

}  // namespace quorvex::j2k
