/// A block of memory that knows its allocator, so that the compiler keeps the two homes that memory
/// has here apart: HeapBlock, and PageBlock of foundation/platform/pages.h.
#pragma once

#include "foundation/types/checked_size.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <span>
#include <utility>

namespace quorvex {

/// Blocks that a caller releases with delete[]. Their bytes start undefined.
struct GeneralAllocator {
    static unsigned char* Take(std::size_t size) { return new unsigned char[size]; }
    static void Give(unsigned char* data) noexcept { delete[] data; }
};

/// More than `kLargestBlock` was asked for: the header's fault, and not that of the memory.
struct BlockTooLarge : std::exception {};

/// A block from one allocator; goes back to the same one unless it is released.
/// Throws std::bad_alloc where there is no memory, BlockTooLarge for more than `kLargestBlock`.
template <class Allocator>
class Block {
public:
    Block() = default;
    explicit Block(std::size_t size) : data_(Checked(size)), size_(size) {}
    Block(Block&& other) noexcept
        : data_(std::move(other.data_)), size_(std::exchange(other.size_, 0)) {}
    Block& operator=(Block&& other) noexcept {
        data_ = std::move(other.data_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }

    [[nodiscard]] std::span<unsigned char> Bytes() const noexcept { return {data_.get(), size_}; }
    [[nodiscard]] unsigned char* Data() const noexcept { return data_.get(); }
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    [[nodiscard]] explicit operator bool() const noexcept { return data_ != nullptr; }

    /// Hands the memory to the caller, who gives it back to this allocator.
    [[nodiscard]] unsigned char* Release() noexcept {
        size_ = 0;
        return data_.release();
    }
    void Reset() noexcept {
        data_.reset();
        size_ = 0;
    }

private:
    static unsigned char* Checked(std::size_t size) {
        if (size > kLargestBlock) {
            RefuseBy(Limit::kLargestBlock);
            throw BlockTooLarge();
        }
        return Allocator::Take(size);
    }
    struct Give {
        void operator()(unsigned char* data) const noexcept { Allocator::Give(data); }
    };
    std::unique_ptr<unsigned char[], Give> data_;
    std::size_t size_ = 0;
};

using HeapBlock = Block<GeneralAllocator>;

}  // namespace quorvex
