/// What must hold whatever the input is.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace quorvex::fuzz {

/// Ends the process, with the place of the requirement, where it does not hold.
inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: a requirement does not hold\n", file, line);
    std::abort();
}

}  // namespace quorvex::fuzz
