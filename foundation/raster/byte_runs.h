/// One plane of bytes out of a row of pixels, and where it repeats itself; for whatever
/// instructions the machine has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace quorvex {

/// A plane's bytes of one row, and bits for them, the first byte's lowest.
class PlaneRow {
public:
    /// Throws std::bad_alloc.
    explicit PlaneRow(std::size_t count);

    /// Takes byte `place` of each pixel of `pixelBytes`; nothing need be aligned.
    void Take(const unsigned char* pixels, std::size_t pixelBytes, std::size_t place) noexcept;

    [[nodiscard]] std::size_t Count() const noexcept { return count_; }
    /// The row; kSlack more bytes may be read.
    [[nodiscard]] const unsigned char* Bytes() const noexcept { return bytes_.data(); }

    /// Bits from byte `at` of the row on, of which 57 at least are known; the others are clear. Set
    /// for bytes that equal the next one of the row.
    [[nodiscard]] std::uint64_t EqualNext(std::size_t at) const noexcept {
        return From(equalNext_, at);
    }
    /// Set for bytes that equal the next two.
    [[nodiscard]] std::uint64_t EqualNextTwo(std::size_t at) const noexcept {
        return From(equalNextTwo_, at);
    }
    static constexpr std::size_t kKnownBits = 57;
    static constexpr std::size_t kSlack = 256;

private:
    static std::uint64_t From(const std::vector<unsigned char>& bits, std::size_t at) noexcept {
        std::uint64_t word = 0;
        std::memcpy(&word, bits.data() + at / 8, sizeof word);
        return word >> at % 8;
    }

    std::size_t count_;
    std::vector<unsigned char> bytes_;
    std::vector<unsigned char> equalNext_;
    std::vector<unsigned char> equalNextTwo_;
};

}  // namespace quorvex
