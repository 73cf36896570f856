#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"

#include <algorithm>

namespace quorvex::j2k {

bool DecodeHtBlock(const CodedBlock& block, std::int32_t* out, std::ptrdiff_t stride,
                   HtScratch& /*scratch*/) {
    for (int y = 0; y < block.height; ++y) std::fill_n(out + y * stride, block.width, 0);
    return false;
}

}  // namespace quorvex::j2k
