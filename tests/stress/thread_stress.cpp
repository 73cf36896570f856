// Eight threads on every file named, each with objects of its own: what they get is what one thread
// gets. Then one CXWindowing in several threads. Meant for the thread sanitizer.
// Usage: quorvex_threads FILE|FOLDER...
#include "file_work.h"
#include "tests/support/corpus.h"
#include "windowing_stress.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace quorvex::test {
namespace {

constexpr std::size_t kThreads = 8;

using AllResults = std::vector<FileResults>;

/// Works on all files, beginning with the one numbered `first`.
AllResults WorkOn(const std::vector<std::filesystem::path>& files, std::size_t first) {
    AllResults results(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::size_t file = (first + i) % files.size();
        results[file] = WorkOnFile(files[file], static_cast<unsigned>(file), Amount::kEverything);
    }
    return results;
}

/// Nothing has been used before the threads begin, so that what is made at first use is made by all
/// of them at once. Two neighbours begin with the same file, the others elsewhere.
std::vector<AllResults> WorkInThreads(const std::vector<std::filesystem::path>& files) {
    std::vector<AllResults> results(kThreads);
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            results[thread] = WorkOn(files, thread / 2 * files.size() * 2 / kThreads);
        });
    threads.clear();
    return results;
}

int Main(const std::vector<std::filesystem::path>& places) {
    const auto files = FilesIn(places);
    const auto started = std::chrono::steady_clock::now();
    const auto results = WorkInThreads(files);
    const AllResults expected = WorkOn(files, 0);
    std::size_t steps = 0;
    int differences = 0;
    for (std::size_t file = 0; file < files.size(); ++file) {
        steps += expected[file].size();
        for (const AllResults& inThread : results) {
            const std::string step = DifferenceOf(expected[file], inThread[file]);
            if (step.empty()) continue;
            ++differences;
            std::printf("%s: \"%s\" differs\n", files[file].c_str(), step.c_str());
        }
    }
    const std::string trouble = StressWindowing();
    if (!trouble.empty()) std::printf("CXWindowing: %s\n", trouble.c_str());
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
    std::printf("%zu threads, %zu files, %zu results each, %d differ, %.0f s\n", kThreads,
                files.size(), steps, differences, taken.count());
    return !files.empty() && differences == 0 && trouble.empty() ? 0 : 1;
}

}  // namespace
}  // namespace quorvex::test

int main(int count, char** texts) {
    return quorvex::test::Main({texts + 1, texts + count});
}
