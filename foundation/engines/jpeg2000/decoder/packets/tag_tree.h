/// Tag trees (ISO/IEC 15444-1 B.10.2).
#pragma once

#include "foundation/engines/jpeg2000/decoder/packets/header_bits.h"

#include <cstdint>
#include <vector>

namespace quorvex::j2k {

class TagTree {
public:
    /// An empty tree has no leaves.
    TagTree() = default;
    /// Throws std::bad_alloc.
    TagTree(std::uint32_t width, std::uint32_t height);

    /// Reads until it is known whether the value of leaf (x, y) is below `threshold`.
    [[nodiscard]] bool IsBelow(std::uint32_t x, std::uint32_t y, std::uint32_t threshold,
                               HeaderBits& bits) noexcept;

private:
    struct Node {
        std::uint32_t least = 0;
        bool isKnown = false;
    };
    struct Level {
        std::uint32_t first = 0;
        std::uint32_t width = 0;
    };
    std::vector<Node> nodes_;
    std::vector<Level> levels_;  ///< the leaves first
};

}  // namespace quorvex::j2k
