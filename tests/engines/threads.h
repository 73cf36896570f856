/// The same work in several threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace quorvex::testing {

/// Calls `isRight` with numbers in four threads, each with its own order; how often it was not.
template <class IsRight>
int CountWrongInThreads(const IsRight& isRight) {
    constexpr std::size_t kRounds = 20;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&wrong, &isRight, t] {
            for (std::size_t round = t; round < t + kRounds; ++round)
                wrong += isRight(round) ? 0 : 1;
        });
    }
    for (std::thread& thread : threads) thread.join();
    return wrong;
}

}  // namespace quorvex::testing
