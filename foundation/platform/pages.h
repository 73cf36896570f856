/// The page allocator: blocks taken from the operating system and given back whole.
#pragma once

#include "foundation/types/block.h"
#include "quorvex/Types.h"

#include <cstddef>

namespace quorvex {

/// `size` zeroed, readable and writable bytes on pages of their own (one page for a size of 0), for
/// blocks that will be filled from end to end: the memory is taken immediately. Throws
/// std::bad_alloc. Give it back with ReleasePages().
[[nodiscard]] unsigned char* TakePages(std::size_t size);

/// Tells the system that a new block will be filled from end to end. It may come in large pages
/// then, as pages of TakePages() do: one fault for 2 MiB instead of one for every 4 KiB.
void WillBeFilled(unsigned char* block, std::size_t size) noexcept;

/// Blocks that a caller releases with ReleasePages(). Their bytes start at 0.
struct PageAllocator {
    static unsigned char* Take(std::size_t size) { return TakePages(size); }
    static void Give(unsigned char* data) noexcept { ReleasePages(data); }
};

using PageBlock = Block<PageAllocator>;

}  // namespace quorvex
