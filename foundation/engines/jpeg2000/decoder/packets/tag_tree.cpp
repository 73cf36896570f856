#include "foundation/engines/jpeg2000/decoder/packets/tag_tree.h"

#include <algorithm>

namespace quorvex::j2k {

TagTree::TagTree(std::uint32_t width, std::uint32_t height) {
    if (width == 0 || height == 0) return;
    std::uint32_t count = 0;
    while (true) {
        levels_.push_back({count, width});
        count += width * height;
        if (width == 1 && height == 1) break;
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    nodes_.resize(count);
}

bool TagTree::IsBelow(std::uint32_t x, std::uint32_t y, std::uint32_t threshold,
                      HeaderBits& bits) noexcept {
    std::uint32_t least = 0;
    bool isKnown = false;
    for (std::size_t i = levels_.size(); i-- > 0;) {
        const Level& level = levels_[i];
        Node& node = nodes_[level.first + (y >> i) * level.width + (x >> i)];
        node.least = std::max(node.least, least);
        while (!node.isKnown && node.least < threshold) {
            if (bits.Bit() != 0) {
                node.isKnown = true;
            } else {
                ++node.least;
            }
        }
        least = node.least;
        isKnown = node.isKnown;
    }
    return isKnown && least < threshold;
}

}  // namespace quorvex::j2k
