#include "pipeline/pixel_block.h"

#include "foundation/platform/pages.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"

#include <cstring>

namespace quorvex {

PixelBlock::PixelBlock(const PixelBlock& other) {
    if (other.data) *this = CopyOf(other.Bytes());
}

PixelBlock NewPixelBlock(std::size_t size) {
    if (size > kLargestBlock) {
        RefuseBy(Limit::kLargestBlock);
        throw BlockTooLarge();
    }
    PixelBlock block{std::unique_ptr<unsigned char[]>(new unsigned char[size]), size};
    WillBeFilled(block.data.get(), size);
    return block;
}

PixelBlock ClearedPixelBlock(std::size_t size) {
    PixelBlock block = NewPixelBlock(size);
    std::memset(block.data.get(), 0, size);
    return block;
}

PixelBlock CopyOf(std::span<const unsigned char> bytes) {
    PixelBlock copy = NewPixelBlock(bytes.size());
    std::memcpy(copy.data.get(), bytes.data(), bytes.size());
    return copy;
}

}  // namespace quorvex
