#include "tests/reliability/measured_child.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

/// A line of this process's status, in bytes.
std::size_t StatusBytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kibibytes = 0;
        if (word == name && status >> kibibytes) return kibibytes << 10;
    }
    return 0;
}

double ProcessorSeconds(const rusage& usage) {
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

[[noreturn]] void WorkAndTell(const std::function<void()>& work, int pipe) {
    constexpr rlim_t kMostSeconds = 60;
    const rlimit limit{kMostSeconds, kMostSeconds};
    setrlimit(RLIMIT_CPU, &limit);
    const std::size_t before = StatusBytes("VmSize:");
    work();
    const std::size_t peak = StatusBytes("VmPeak:");
    const std::size_t memory = peak > before ? peak - before : 0;
    _exit(write(pipe, &memory, sizeof memory) == sizeof memory ? 0 : 1);
}

}  // namespace

Cost CostOf(const std::function<void()>& work) {
    int ends[2] = {};
    Cost cost;
    if (pipe(ends) != 0) return cost;
    const pid_t child = fork();
    if (child == 0) WorkAndTell(work, ends[1]);
    close(ends[1]);
    const bool isTold = child > 0 && read(ends[0], &cost.memory, sizeof cost.memory) ==
                                         static_cast<ssize_t>(sizeof cost.memory);
    close(ends[0]);
    int status = 0;
    rusage usage{};
    const bool isOver = child > 0 && wait4(child, &status, 0, &usage) == child;
    cost.hasEnded = isTold && isOver && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    cost.seconds = ProcessorSeconds(usage);
    return cost;
}

void ExpectCost(const std::string& what, double seconds, const std::function<void()>& work,
                std::size_t memory) {
    const Cost cost = CostOf(work);
    EXPECT_TRUE(cost.hasEnded) << what << ": " << cost;
    EXPECT_LT(cost.seconds, seconds) << what << ": " << cost;
    EXPECT_LT(cost.memory, memory) << what << ": " << cost;
}

}  // namespace quorvex::test
