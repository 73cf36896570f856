/// One segment of an RLE frame: a row of runs that gives one plane of bytes (DICOM PS3.5 Annex G).
#pragma once

#include <cstddef>
#include <span>

namespace quorvex {

/// Decodes a segment piece by piece, so that segments which share their pixels go side by side.
///
/// A literal run that passes the segment's end is dropped and ends the segment without a complaint:
/// the byte that pads a segment to an even length looks like that.
class RleSegmentReader {
public:
    RleSegmentReader() = default;
    explicit RleSegmentReader(std::span<const unsigned char> segment) noexcept
        : read_(segment.data()), readEnd_(read_ + segment.size()) {}

    /// Fills `plane` with the next bytes, and with 0 where the runs give no more; tells how many
    /// the runs gave. Nothing is given behind damage.
    std::size_t Read(std::span<unsigned char> plane) noexcept;

    /// A run lacked its byte.
    [[nodiscard]] bool IsDamaged() const noexcept { return isDamaged_; }
    /// A run has begun that goes on behind what was read.
    [[nodiscard]] bool IsInsideRun() const noexcept { return left_ != 0; }

private:
    [[nodiscard]] std::size_t Stored() const noexcept {
        return static_cast<std::size_t>(readEnd_ - read_);
    }
    [[nodiscard]] std::size_t Room() const noexcept {
        return static_cast<std::size_t>(writeEnd_ - write_);
    }
    void ReadFast() noexcept;
    void BeginRun() noexcept;
    void GoOn() noexcept;

    const unsigned char* read_ = nullptr;
    const unsigned char* readEnd_ = nullptr;
    unsigned char* write_ = nullptr;
    unsigned char* writeEnd_ = nullptr;
    std::size_t left_ = 0;  ///< bytes that the begun run still gives
    bool isLiteral_ = false;
    bool isDamaged_ = false;
};

}  // namespace quorvex
