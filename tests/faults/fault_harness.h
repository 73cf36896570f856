/// Fails every allocation of an operation in turn and looks at what is left of its objects.
#pragma once

#include "tests/faults/fault_kinds.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::test {

/// Objects that an operation works on: the call, and all that a host can see of the objects and of
/// the call's results.
struct Subject {
    std::function<bool()> work;  ///< true: the operation answers success
    std::function<std::string()> look;
};

/// What is left after a failure.
enum class Leaves {
    kAsBefore,  ///< everything as it was
    kUsable,    ///< what was there may be gone, as the header says; the next try gets all right
};

/// How an operation tells of a failure.
enum class Tells {
    kCode,
    kException,  ///< std::bad_alloc, as values of the language do: constructors, copies, texts
    kNothing,    ///< its answer is always the same; the objects are as before or as after
};

struct Operation {
    const char* name;
    /// A subject without work where the kind has nothing to offer.
    Subject (*make)(const Kind& kind);
    Leaves leaves = Leaves::kAsBefore;
    Tells tells = Tells::kCode;
};

inline void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

/// Fails the n-th allocation, once and from then on, for every n until the operation is done
/// without noticing; past 200 only some of them.
void FailEveryAllocation(const Operation& operation);

}  // namespace quorvex::test
