#include "codec/frame_block.h"

#include <algorithm>

namespace quorvex {
namespace {

unsigned char* TakeBlock(std::size_t size, int allocMode) {
    if (allocMode != kGeneralAllocator) return PageBlock(size).Release();
    HeapBlock block(size);
    WillBeFilled(block.Data(), size);
    return block.Release();
}

}  // namespace

void GiveBackBlock(unsigned char* block, int allocMode) noexcept {
    if (allocMode == kGeneralAllocator) {
        delete[] block;
    } else {
        ReleasePages(block);
    }
}

FrameBlock::FrameBlock(unsigned char*& result, std::size_t size, int allocMode)
    : isNew_(result == nullptr), isZero_(isNew_ && allocMode != kGeneralAllocator) {
    if (isNew_) result = TakeBlock(size, allocMode);
    bytes_ = {result, size};
}

void FrameBlock::ClearBehind(std::size_t count) const noexcept {
    if (!isNew_ || isZero_ || count >= bytes_.size()) return;
    std::ranges::fill(bytes_.subspan(count), static_cast<unsigned char>(0));
}

}  // namespace quorvex
