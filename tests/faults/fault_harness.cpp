#include "tests/faults/fault_harness.h"

#include "tests/faults/failing_memory.h"

#include <cstdio>
#include <optional>

namespace quorvex::test {
namespace {

// A sanitizer makes each try many times slower: it gets a spread of those that all run without it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kDense = 60;
constexpr long kSpread = 8;
#else
constexpr long kDense = 200;
constexpr long kSpread = 40;
#endif
constexpr int kMostComplaints = 4;

/// All n up to `kDense`, then ever fewer.
long Following(long n) {
    return n < kDense ? n + 1 : n + 1 + n / kSpread;
}

/// As a host calls it: an exception counts as "thrown".
enum class End { kDone, kRefused, kThrown };

End Run(const Operation& operation, Host& host) {
    try {
        return operation.work(host) ? End::kDone : End::kRefused;
    } catch (const std::bad_alloc&) {
        return End::kThrown;
    }
}

bool IsAmong(std::string_view names, std::string_view name) {
    const std::string bars = '|' + std::string(names) + '|';
    return bars.find('|' + std::string(name) + '|') != std::string::npos;
}

bool IsTriedOn(const How& how, const Kind& kind) {
    const bool isNamed = *how.on == '\0' || IsAmong(how.on, kind.name);
    return isNamed && !IsAmong(how.notOn, kind.name);
}

class Examination {
public:
    Examination(const Operation& operation, const Kind& kind) : operation_(operation), kind_(kind) {
        const auto host = Make();
        before_ = operation_.look(*host);
        EXPECT_TRUE(operation_.work(*host)) << Name() << ": cannot be done at all";
        after_ = operation_.look(*host);
        // What the first run makes for the whole process is made by now.
        operation_.work(*Make());
    }

    [[nodiscard]] long Refusals() const { return refusals_; }

    void Run(Failing how) {
        for (long n = 1; complaints_ < kMostComplaints; n = Following(n)) {
            const long live = LiveBlocks();
            const int complaints = complaints_;
            if (!Try(n, how)) return;
            const long leaked = LiveBlocks() - live;
            // What a complaint keeps is no leak.
            if (complaints_ == complaints && leaked != 0) Complain(n) << leaked << " blocks leak\n";
        }
    }

private:
    [[nodiscard]] std::unique_ptr<Host> Make() const {
        auto host = std::make_unique<Host>(kind_);
        operation_.prepare(*host);
        return host;
    }
    [[nodiscard]] std::string Name() const {
        return std::string(operation_.name) + " on " + kind_.name;
    }
    std::ostream& Complain(long n) {
        ++complaints_;
        ADD_FAILURE() << Name() << ", allocation " << n;
        return std::cerr << "    " << Name() << ", allocation " << n << ": ";
    }

    /// False when the operation needs fewer than n allocations.
    bool Try(long n, Failing how) {
        const auto host = Make();
        FailingMemory memory(n, how);
        const End end = test::Run(operation_, *host);
        if (memory.Stop() == 0) return false;
        ++refusals_;
        Judge(n, end, operation_.look(*host));
        if (end != End::kDone && !operation_.work(*host)) Complain(n) << "not usable any more\n";
        if (end == End::kDone && operation_.how.reports == Reports::kNothing) return true;
        if (operation_.look(*host) != after_) Complain(n) << "another result afterwards\n";
        return true;
    }

    void Judge(long n, End end, const std::string& seen) {
        const bool isSilent = operation_.how.reports == Reports::kNothing;
        const bool isAfter = seen == after_;
        const bool isBefore = operation_.how.leaves == Leaves::kUsable || seen == before_;
        if (end == End::kThrown && operation_.how.reports != Reports::kException)
            Complain(n) << "an exception gets out\n";
        if (end == End::kDone && !isAfter && !isSilent)
            Complain(n) << "success with a wrong result\n";
        if (end == End::kDone && !isAfter && isSilent && !isBefore) Complain(n) << "half done\n";
        if (end != End::kDone && !isBefore) Complain(n) << "half changed\n";
    }

    const Operation& operation_;
    const Kind& kind_;
    std::string before_;
    std::string after_;
    long refusals_ = 0;
    int complaints_ = 0;
};

}  // namespace

TEST_P(FailingAllocation, IsReportedAndLeavesNothingHalfDone) {
    const Operation& operation = GetParam();
    if (!IsWritten(operation.writes)) GTEST_SKIP() << "not written by this build";
    long refusals = 0;
    int kinds = 0;
    for (const Kind& kind : AllKinds()) {
        if (!IsTriedOn(operation.how, kind)) continue;
        Examination examination(operation, kind);
        for (const auto how : {Failing::kOnce, Failing::kFromThenOn}) examination.Run(how);
        ++kinds;
        refusals += examination.Refusals();
    }
    std::printf("    %-45s %3d kinds %8ld allocations failed\n", operation.name, kinds, refusals);
}

}  // namespace quorvex::test
