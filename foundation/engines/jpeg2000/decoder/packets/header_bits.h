/// The bits of packet headers: after a byte 0xFF the next one has seven (ISO/IEC 15444-1 B.10.1).
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/byte_reader.h"

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

/// Zeros past the end.
class HeaderBits {
public:
    explicit HeaderBits(Bytes bytes) noexcept : bytes_(bytes) {}

    [[nodiscard]] unsigned Bit() noexcept {
        if (left_ == 0) ReadByte();
        --left_;
        return (byte_ >> left_) & 1;
    }

    /// Up to 32 bits.
    [[nodiscard]] std::uint32_t Bits(unsigned count) noexcept {
        std::uint32_t value = 0;
        for (; count > 0; --count) value = (value << 1) | Bit();
        return value;
    }

    /// How many bytes the header took; it ends with a whole byte, and never with 0xFF.
    [[nodiscard]] std::size_t End() noexcept {
        if (byte_ == 0xFF) ReadByte();
        left_ = 0;
        return place_;
    }

    [[nodiscard]] bool RanOut() const noexcept { return ranOut_; }

private:
    void ReadByte() noexcept {
        const bool isStuffed = byte_ == 0xFF;
        ranOut_ |= place_ >= bytes_.size();
        byte_ = ranOut_ ? 0 : bytes_[place_++];
        left_ = isStuffed ? 7 : 8;
    }

    Bytes bytes_;
    std::size_t place_ = 0;
    unsigned byte_ = 0;
    unsigned left_ = 0;
    bool ranOut_ = false;
};

}  // namespace quorvex::j2k
