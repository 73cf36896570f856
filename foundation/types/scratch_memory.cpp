#include "foundation/types/scratch_memory.h"

#include <algorithm>

namespace quorvex {

void* ScratchMemory::do_allocate(std::size_t size, std::size_t alignment) {
    constexpr std::size_t kSmallestBlock = std::size_t{64} << 10;
    constexpr std::size_t kCacheLine = 64;  // rows that begin elsewhere cost vectors a second one
    alignment = std::max(alignment, kCacheLine);
    if (asked_ == 0) {
        next_ = kept_.get();
        room_ = keptSize_;
    }
    asked_ += size + alignment;
    if (std::align(alignment, size, next_, room_) == nullptr) {
        const std::size_t blockSize = std::max(size + alignment, kSmallestBlock);
        more_.reserve(more_.size() + 1);
        Bytes block(new unsigned char[blockSize]);
        next_ = block.get();
        room_ = blockSize;
        more_.push_back(std::move(block));
        std::align(alignment, size, next_, room_);
    }
    void* const piece = next_;
    next_ = static_cast<unsigned char*>(next_) + size;
    room_ -= size;
    return piece;
}

void ScratchMemory::Rewind() noexcept {
    if (!more_.empty()) {
        more_.clear();
        kept_.reset();
        const std::size_t wanted = asked_ + asked_ / 4;
        keptSize_ = wanted <= kMostKept ? wanted : 0;
        if (keptSize_ != 0) kept_.reset(new (std::nothrow) unsigned char[keptSize_]);
        if (!kept_) keptSize_ = 0;
    }
    asked_ = 0;
    next_ = nullptr;
    room_ = 0;
}

}  // namespace quorvex
