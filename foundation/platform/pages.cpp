#include "foundation/platform/pages.h"

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

}  // namespace

unsigned char* TakePages(std::size_t size) {
    const std::size_t page = PageBytes();
    const std::size_t length = (size + 2 * page - 1) / page * page;
    if (length < size) throw std::bad_alloc();
    void* mapping =
        mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) throw std::bad_alloc();
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
