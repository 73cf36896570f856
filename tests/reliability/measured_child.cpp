#include "tests/reliability/measured_child.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kSlowness = 20.0;  // sanitizers, and a machine that does other things too
#else
constexpr double kSlowness = 5.0;
#endif

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

void ExpectCost(const std::string& what, double seconds, const std::function<void()>& work,
                std::size_t memory) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) WorkAndTell(work, ends[1]);
    close(ends[1]);
    std::size_t used = 0;
    const bool isTold = child > 0 && read(ends[0], &used, sizeof used) == sizeof used;
    close(ends[0]);
    int status = 0;
    rusage usage{};
    const bool isOver = child > 0 && wait4(child, &status, 0, &usage) == child;
    EXPECT_TRUE(isTold && isOver && WIFEXITED(status) && WEXITSTATUS(status) == 0)
        << what << " is broken off";
    EXPECT_LT(ProcessorSeconds(usage), seconds * kSlowness) << what;
    EXPECT_LT(used, memory) << what;
}

}  // namespace quorvex::test
