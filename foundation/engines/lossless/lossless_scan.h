/// The headers of a lossless stream: what our own decoder needs of them.
#pragma once

#include "foundation/engines/jpeg/jpeg_header.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

inline constexpr unsigned kLosslessCategories =
    17;  ///< of differences: their lengths, 0 to 16 bits

/// A Huffman table as its segment gives it (ITU-T T.81 Annex C).
struct LosslessTableSegment {
    std::array<std::uint8_t, 17> counts{};  ///< of the codes of each length, 1 to 16 bits
    std::array<std::uint8_t, kLosslessCategories> categories{};  ///< in the order of their codes
};

/// One scan of all components, each pixel's together, predicted from the left (selection value 1).
struct LosslessScan {
    std::array<std::optional<LosslessTableSegment>, 4> tables;
    std::array<std::uint8_t, 3> tableOf{};  ///< for each component, one that is there
    std::uint8_t pointTransform = 0;
    int rowsInInterval = 0;     ///< between restart markers; 0 without them
    std::size_t dataPlace = 0;  ///< of the first coded byte
};

/// Reads the segments of `head`, the stream up to the end of its scan header at least. Nothing for
/// other scans, and for whatever is unusual in the segments: how much of it is an error is for a
/// library to say that knows them all.
[[nodiscard]] std::optional<LosslessScan> ReadLosslessScan(std::span<const unsigned char> head,
                                                           const JpegHeader& header) noexcept;

}  // namespace quorvex
