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

/// How an operation reports a failure.
enum class Reports {
    kCode,
    kException,  ///< std::bad_alloc, as values of the language do: constructors, copies, texts
    kNothing,    ///< its answer is always the same; the objects are as before or as after
};

inline constexpr const char* kStates = "presentation state";

struct How {
    const char* on = "";     ///< names of kinds, '|' between them; empty for all
    const char* notOn = "";  ///< the same
    Leaves leaves = Leaves::kAsBefore;
    Reports reports = Reports::kCode;
};
inline constexpr How kOnImages{.notOn = kStates};
inline constexpr How kOnImagesUsable{.notOn = kStates, .leaves = Leaves::kUsable};
inline constexpr How kUsable{.leaves = Leaves::kUsable};
inline constexpr How kThrows{.reports = Reports::kException};

struct Operation {
    const char* name;
    How how;
    std::function<Subject(const Kind&)> make;
};

inline void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

/// An operation on a new `State(kind)`: `work(state)` is the call, `look(state)` what a host sees.
template <class State, class Work, class Look>
Operation On(const char* name, const How& how, Work work, Look look) {
    return {name, how, [=](const Kind& kind) {
                auto state = std::make_shared<State>(kind);
                return Subject{[=] { return work(*state); }, [=] { return look(*state); }};
            }};
}
template <class State, class Work>
Operation On(const char* name, const How& how, Work work) {
    return On<State>(name, how, work, [](State& state) { return state.Look(); });
}

/// Fails the n-th allocation, once and from then on, for every n until the operation is done
/// without noticing; past 200 only some of them.
void FailEveryAllocation(const Operation& operation);

/// Each file instantiates this with its operations.
class FailingAllocation : public testing::TestWithParam<Operation> {};

}  // namespace quorvex::test
