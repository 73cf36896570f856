/// Memory that fails on demand: operator new, the C library's allocators and the pages of mmap.
///
/// Under a sanitizer, which keeps malloc for itself, only operator new and mmap fail.
#pragma once

namespace quorvex::test {

enum class Failing { kOnce, kFromThenOn };

/// Whose allocations do not fail: OpenJPEG 2.5, OpenJPH 0.9, libjxl 0.7 and Cairo 1.16, with what
/// is below them, fall over some that do.
enum class Spares { kFrailLibraries, kNobody };

/// From its making to `Stop` this thread's n-th allocation fails, counted from 1.
class FailingMemory {
public:
    explicit FailingMemory(long n, Failing how = Failing::kOnce,
                           Spares spares = Spares::kFrailLibraries) noexcept;
    ~FailingMemory() { Stop(); }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// How many allocations were refused.
    long Stop() noexcept;
};

/// Blocks that this thread has taken so far.
[[nodiscard]] long TakenBlocks() noexcept;

/// Blocks that this thread has taken and not given back.
[[nodiscard]] long LiveBlocks() noexcept;

}  // namespace quorvex::test
