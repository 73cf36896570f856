#include "foundation/platform/pages.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace quorvex {
namespace {

/// A leading page remembers the length of the mapping, so that a block goes back by address alone.
std::size_t PageBytes() noexcept {
    static const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

constexpr std::uintptr_t kLargePageBytes = std::uintptr_t{1} << 21;

}  // namespace

void WillBeFilled(unsigned char* block, std::size_t size) noexcept {
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (start + kLargePageBytes - 1) & ~(kLargePageBytes - 1);
    const std::uintptr_t end = (start + size) & ~(kLargePageBytes - 1);
    // Without large pages small ones do: a refusal is no failure.
    if (first < end) madvise(block + (first - start), end - first, MADV_HUGEPAGE);
}

unsigned char* TakePages(std::size_t size) {
    const std::size_t page = PageBytes();
    const std::size_t length = (size + 2 * page - 1) / page * page;
    if (length < size) throw std::bad_alloc();
    void* mapping =
        mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) throw std::bad_alloc();
    WillBeFilled(static_cast<unsigned char*>(mapping), length);
    // In one call, where the kernel has it: a fault for every page costs more than filling it.
    madvise(mapping, length, MADV_POPULATE_WRITE);
    std::memcpy(mapping, &length, sizeof length);
    return static_cast<unsigned char*>(mapping) + page;
}

void ReleasePages(void* block) noexcept {
    if (block == nullptr) return;
    unsigned char* mapping = static_cast<unsigned char*>(block) - PageBytes();
    std::size_t length = 0;
    std::memcpy(&length, mapping, sizeof length);
    munmap(mapping, length);
}

}  // namespace quorvex
