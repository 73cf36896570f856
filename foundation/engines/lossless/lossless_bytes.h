/// The coded bytes of a scan without their stuffing, a stretch of them at a time.
#pragma once

#include "foundation/engines/jpeg/jpeg_input.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// Also keeps the stream as it was read, for a decoder that must begin again.
class LosslessBytes {
public:
    /// @param dataPlace  of the first coded byte in the stream
    /// @param rowBytes   greatest length of a coded row
    LosslessBytes(JpegInput& input, std::size_t dataPlace, std::size_t rowBytes);

    /// The bytes from `next` on, moved if need be, with a whole row of them readable: zeros stand
    /// behind the end. `next` lies in what was supplied last. Throws std::bad_alloc.
    [[nodiscard]] const unsigned char* Supply(const unsigned char* next);
    [[nodiscard]] const unsigned char* First();

    /// Behind a marker. Throws std::bad_alloc.
    [[nodiscard]] const unsigned char* NextInterval();

    /// The last byte ahead of a marker, or of the end of the stream, has been supplied.
    [[nodiscard]] bool IsAtEnd() const noexcept { return isAtEnd_; }
    /// The marker at the end; 0 where the stream ends without one.
    [[nodiscard]] std::uint8_t Marker() const noexcept { return marker_; }
    /// Bits between a place, `held` bits ahead of `next`, and the end of what is supplied.
    [[nodiscard]] std::ptrdiff_t BitsLeft(const unsigned char* next, unsigned held) const noexcept {
        return 8 * (window_.data() + end_ - next) + static_cast<std::ptrdiff_t>(held);
    }

    [[nodiscard]] std::vector<unsigned char>& StreamSoFar() noexcept { return stream_; }

private:
    void Fill();
    void CopyStretch();
    void TakeEscape();
    void EndWith(std::uint8_t marker) noexcept;
    [[nodiscard]] bool PullMore();

    JpegInput& input_;
    std::vector<unsigned char> stream_;
    std::size_t place_;  // in the stream, of the first byte that is not yet in the window
    std::size_t rowBytes_;
    std::size_t capacity_;
    std::vector<unsigned char> window_;  // a row of zeros longer than its capacity
    std::size_t end_ = 0;
    bool isAtEnd_ = false;
    std::uint8_t marker_ = 0;
};

}  // namespace quorvex
