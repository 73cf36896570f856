/// Blocks that end exactly where memory ends: a byte past them, or ahead of them, kills the test.
#pragma once

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <new>
#include <span>
#include <sys/mman.h>
#include <unistd.h>

namespace quorvex::test {

enum class GuardPlace { kBehind, kAhead };

/// A block with a page that cannot be touched right behind or right ahead of it. What is left of
/// its own pages is filled with a mark, which the destructor looks for.
class GuardedBytes {
public:
    explicit GuardedBytes(std::size_t size, GuardPlace place = GuardPlace::kBehind)
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          inside_((size + page_ - 1) / page_ * page_) {
        void* mapped =
            mmap(nullptr, inside_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) throw std::bad_alloc();
        begin_ = static_cast<unsigned char*>(mapped);
        if (inside_ != 0 && mprotect(begin_ + page_, inside_, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
        const std::size_t slack = inside_ - size;
        const bool isBehind = place == GuardPlace::kBehind;
        bytes_ = {begin_ + page_ + (isBehind ? slack : 0), size};
        slack_ = {begin_ + page_ + (isBehind ? 0 : size), slack};
        std::ranges::fill(slack_, kMark);
    }
    explicit GuardedBytes(std::span<const unsigned char> content,
                          GuardPlace place = GuardPlace::kBehind)
        : GuardedBytes(content.size(), place) {
        std::ranges::copy(content, bytes_.begin());
    }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    ~GuardedBytes() {
        EXPECT_TRUE(std::ranges::all_of(slack_, [](unsigned char b) { return b == kMark; }))
            << "written on the open side of a block";
        munmap(begin_, inside_ + 2 * page_);
    }

    [[nodiscard]] unsigned char* Data() const { return bytes_.data(); }
    [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
    [[nodiscard]] std::span<unsigned char> Bytes() const { return bytes_; }

private:
    static constexpr unsigned char kMark = 0xA5;

    std::size_t page_;
    std::size_t inside_;
    unsigned char* begin_ = nullptr;
    std::span<unsigned char> bytes_;
    std::span<unsigned char> slack_;
};

}  // namespace quorvex::test
