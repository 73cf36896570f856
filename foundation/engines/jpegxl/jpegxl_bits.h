/// The bits of a JPEG XL codestream, lowest first, and the whole numbers that they make.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

class JpegXlBits {
public:
    explicit JpegXlBits(std::span<const unsigned char> bytes) noexcept : bytes_(bytes) {}

    /// Something behind the end was asked for: zeros came.
    [[nodiscard]] bool AreExhausted() const noexcept { return place_ > bytes_.size() * 8; }

    [[nodiscard]] std::uint32_t Take(unsigned count) noexcept {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i, ++place_) {
            const std::size_t byte = place_ / 8;
            if (byte < bytes_.size()) value |= (bytes_[byte] >> place_ % 8 & 1U) << i;
        }
        return value;
    }
    [[nodiscard]] bool TakeFlag() noexcept { return Take(1) != 0; }
    void Skip(std::size_t count) noexcept { place_ += count; }

    struct Range {
        unsigned bits;
        std::uint32_t offset;
    };
    /// One of four ranges, by two bits.
    [[nodiscard]] std::uint32_t TakeOneOf(const std::array<Range, 4>& ranges) noexcept {
        const Range& range = ranges[Take(2)];
        return range.offset + Take(range.bits);
    }
    [[nodiscard]] std::uint64_t TakeLong() noexcept {
        switch (Take(2)) {
            case 0:
                return 0;
            case 1:
                return 1 + Take(4);
            case 2:
                return 17 + Take(8);
            default:
                return TakeParts();
        }
    }

    void GoToByte() noexcept { place_ = (place_ + 7) / 8 * 8; }
    /// From the next whole byte on, `skipped` bytes further; empty past the end.
    [[nodiscard]] std::span<const unsigned char> Rest(std::uint64_t skipped) const noexcept {
        const std::size_t byte = (place_ + 7) / 8;
        if (byte > bytes_.size() || skipped > bytes_.size() - byte) return {};
        return bytes_.subspan(byte + skipped);
    }

private:
    std::uint64_t TakeParts() noexcept {
        constexpr unsigned kLastShift = 60;
        std::uint64_t value = Take(12);
        for (unsigned shift = 12; TakeFlag(); shift += 8) {
            if (shift == kLastShift) return value | std::uint64_t{Take(4)} << shift;
            value |= std::uint64_t{Take(8)} << shift;
        }
        return value;
    }

    std::span<const unsigned char> bytes_;
    std::size_t place_ = 0;  ///< in bits
};

}  // namespace quorvex
