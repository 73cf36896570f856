/// Shares work among the threads that the host lends.
#pragma once

#include "foundation/engines/jpeg2000/decoder/block_decoding.h"
#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/types/cancellation.h"

#include <atomic>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

namespace quorvex::j2k {

/// Each thread keeps its scratch from run to run.
class JobQueue {
public:
    /// Throws std::bad_alloc.
    explicit JobQueue(const Executor& executor) : executor_(executor) {
        for (unsigned i = 0; i < executor.threads; ++i) {
            scratches_.push_back(std::make_unique<BlockScratch>());
        }
    }

    /// Calls first(0..firstCount - 1) and then second(0..secondCount - 1), each with a scratch, as
    /// threads become free. Throws std::bad_alloc where one of them has.
    template <class First, class Second>
    void Run(std::size_t firstCount, const First& first, std::size_t secondCount,
             const Second& second) {
        std::atomic<std::size_t> next = 0;
        std::atomic<bool> ranOut = false;
        const std::size_t count = firstCount + secondCount;
        const auto work = [&](unsigned thread) noexcept {
            for (std::size_t i = next++; i < count && !ranOut; i = next++) {
                try {
                    BlockScratch& scratch = *scratches_[thread];
                    i < firstCount ? first(i, scratch) : second(i - firstCount, scratch);
                } catch (...) {  // nothing but std::bad_alloc and Cancelled is thrown
                    ranOut = true;
                }
            }
        };
        executor_.run(executor_.threads, work);
        if (!ranOut) return;
        Cancellation::OfThisThread().ThrowIfAsked();
        throw std::bad_alloc();
    }

private:
    const Executor& executor_;
    std::vector<std::unique_ptr<BlockScratch>> scratches_;
};

}  // namespace quorvex::j2k
