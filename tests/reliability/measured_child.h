/// Work done in a process of its own, so that a crash, an endless loop or a claim on memory is seen
/// and does no harm.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

namespace quorvex::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr double kSlowness = 20.0;  // sanitizers, and a machine that does other things too
#else
inline constexpr double kSlowness = 5.0;
#endif

struct Cost {
    bool hasEnded = false;   ///< by itself: no signal, no exit
    double seconds = 0.0;    ///< of processor time
    std::size_t memory = 0;  ///< bytes of address space at the most, above what there was before
};

inline std::ostream& operator<<(std::ostream& out, const Cost& cost) {
    return out << (cost.hasEnded ? "" : "broken off, ") << cost.seconds << " s, "
               << (cost.memory >> 10) << " KiB";
}

/// Runs `work` in a copy of this process. One that takes over a minute of processor time is ended.
Cost CostOf(const std::function<void()>& work);

/// Expects an end of its own, in so many seconds at the most.
void ExpectCost(const std::string& what, double seconds, const std::function<void()>& work,
                std::size_t memory = SIZE_MAX);

}  // namespace quorvex::test
