/// Memory for the length of one piece of work, which the next one finds ready.
#pragma once

#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <new>
#include <span>
#include <type_traits>
#include <vector>

namespace quorvex {

/// Hands out pieces of one block, and takes all of them back at once.
///
/// A piece of work that needs more than the block has gets it from the general allocator; the block
/// is then made as large as that was, with some room to spare, so that the next piece of work of
/// the same kind takes no memory at all. One thread at a time.
class ScratchMemory final : public std::pmr::memory_resource {
public:
    /// While it lives a piece of work goes on: what it takes is gone behind it.
    class Use {
    public:
        explicit Use(ScratchMemory& memory) noexcept : memory_(memory) {}
        ~Use() { memory_.Rewind(); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        ScratchMemory& memory_;
    };

    ScratchMemory() = default;
    /// A copy begins with nothing, and an object keeps what it has.
    ScratchMemory(const ScratchMemory& other) noexcept : std::pmr::memory_resource(other) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
    ScratchMemory& operator=(const ScratchMemory&) noexcept { return *this; }
    ~ScratchMemory() override = default;

private:
    /// A block above that is not kept.
    static constexpr std::size_t kMostKept = std::size_t{256} << 20;

    using Bytes = std::unique_ptr<unsigned char[]>;

    void* do_allocate(std::size_t size, std::size_t alignment) override;
    void do_deallocate(void* /*piece*/, std::size_t /*size*/, std::size_t /*alignment*/) override {}
    [[nodiscard]] bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
        return this == &other;
    }
    void Rewind() noexcept;

    Bytes kept_;
    std::size_t keptSize_ = 0;
    void* next_ = nullptr;  ///< where the present block goes on
    std::size_t room_ = 0;  ///< and how much of it is left
    std::size_t asked_ = 0;
    std::vector<Bytes> more_;  ///< blocks besides `kept_`, of this piece of work alone
};

/// `count` elements without a value. Throws std::bad_alloc, or BlockTooLarge.
template <class Element>
[[nodiscard]] std::span<Element> TakeArray(std::pmr::memory_resource& memory, std::size_t count) {
    static_assert(std::is_trivially_copyable_v<Element> &&
                  std::is_trivially_destructible_v<Element>);
    const auto bytes = CheckedProduct(count, sizeof(Element));
    if (!bytes) {
        RefuseBy(Limit::kLargestBlock);
        throw BlockTooLarge();
    }
    if (count == 0) return {};
    return {static_cast<Element*>(memory.allocate(*bytes, alignof(Element))), count};
}

}  // namespace quorvex
