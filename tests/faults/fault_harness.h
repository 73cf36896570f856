/// Fails every allocation of an operation in turn and looks at what is left of its objects.
#pragma once

#include "quorvex/TransferSyntaxes.h"
#include "tests/faults/host.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvex::test {

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

struct How {
    const char* on = "";     ///< names of kinds, '|' between them; empty for all
    const char* notOn = "";  ///< the same
    Leaves leaves = Leaves::kAsBefore;
    Reports reports = Reports::kCode;
};
constexpr How On(const char* kinds, Leaves leaves = Leaves::kAsBefore) {
    return {.on = kinds, .leaves = leaves};
}
constexpr How NotOn(const char* kinds, Leaves leaves = Leaves::kAsBefore) {
    return {.notOn = kinds, .leaves = leaves};
}
inline constexpr How kOnAll{};
inline constexpr How kOnImages{.notOn = kStates};
inline constexpr How kOnImagesUsable{.notOn = kStates, .leaves = Leaves::kUsable};
inline constexpr How kThrows{.reports = Reports::kException};
inline constexpr How kUsable{.leaves = Leaves::kUsable};

/// A call, what a host sees of its objects and results, and what comes ahead of it.
struct Operation {
    const char* name;
    How how;
    std::string (*look)(Host&);
    bool (*work)(Host&);  ///< true: the operation answers success
    void (*prepare)(Host&) = [](Host&) {};
    TRANSFER_SYNTAX writes = kExplicitLittleEndian;  ///< left out in a build that cannot
};

/// Whether this build has the coder.
inline bool IsWritten(TRANSFER_SYNTAX syntax) {
    return TransferSyntaxOf(syntax)->isWritten;
}

inline void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

/// What is done to a host `s`, and whether that succeeds.
#define DO(...) [](Host& s) { static_cast<void>((__VA_ARGS__)); }
#define DONE(...) [](Host& s) { return IsDone((__VA_ARGS__)); }

/// Each file instantiates this with its operations. The n-th allocation fails, once and from then
/// on, for every n until the operation is done without noticing; past 200 (60 under a
/// sanitizer) only some of them.
class FailingAllocation : public testing::TestWithParam<Operation> {};

}  // namespace quorvex::test
