/// Frames of single bits on their way into Pixel Data.
#pragma once

#include "maker/pixels/pixel_data_writing.h"

#include <span>
#include <vector>

namespace quorvex {

/// Samples of a byte each, packed from the lowest bit of the first byte on, with zeros behind the
/// last one: a frame that begins with a byte of its own.
[[nodiscard]] std::vector<unsigned char> PackBits(std::span<const unsigned char> samples);

/// Native frames, which follow each other bit by bit (DICOM PS3.5 8.1.1).
class BitFrames final : public PlainFrameSource {
public:
    /// @param samples  frames of a byte a sample
    explicit BitFrames(PlainFrameSource& samples) : samples_(samples) {}
    [[nodiscard]] bool AreAtEnd() const override { return samples_.AreAtEnd(); }
    QUORVEX_MESSAGE Next(std::span<unsigned char>& bytes) override;

private:
    PlainFrameSource& samples_;
    std::vector<unsigned char> rest_;  ///< samples that do not fill a byte yet
    std::vector<unsigned char> packed_;
};

}  // namespace quorvex
