/// How a fuzz target takes its input, and what must hold whatever the input is.
#pragma once

#include "fuzz/options.h"

#include <cstdio>
#include <cstdlib>

namespace quorvex::fuzz {

struct Limits {
    std::size_t largestInput = 1 << 16;
    std::size_t options = 0;  ///< how many bytes at the end may be drawn from
};

/// Calls `work(options)` unless the input is too long to be worth its time. Gives what a target
/// gives.
template <class Work>
int Run(const std::uint8_t* data, std::size_t size, const Limits& limits, Work work) {
    if (size > limits.largestInput) return 0;
    Options options(data, size, limits.options);
    work(options);
    return 0;
}

/// Ends the process, with the place of the requirement, where it does not hold.
inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: a requirement does not hold\n", file, line);
    std::abort();
}

}  // namespace quorvex::fuzz
