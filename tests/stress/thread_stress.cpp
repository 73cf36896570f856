// Eight threads on every file named, each with objects of its own: what they get is what one thread
// gets. Then one CXWindowing in several threads. Meant for the thread sanitizer.
// Usage: quorvex_threads FILE|FOLDER...
#include "file_work.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "tests/support/corpus.h"

#include <algorithm>
#include <atomic>
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

// --- One CXWindowing: pairs stay pairs, tables are those of one window, no step is lost ----------

constexpr int kWindowThreads = 4;
constexpr int kRounds = 400;
constexpr int kHighest = 4095;
constexpr int kWindows = 16;

using Table = std::vector<unsigned char>;

int LevelOf(int width) {
    return 3 * width - 7;
}

void SetWindow(CXWindowing& windowing, int window) {
    const int width = 100 + 200 * window;
    int widthAndLevel[] = {width, LevelOf(width)};
    windowing.SetValue(CXWindowing::kWindow, widthAndLevel, nullptr);
}

struct Prepared : CXWindowing {
    Prepared() {
        CXGSPSInfo info;
        info.pixelBitDepth = 12;
        PrepareGSPSProcessing2(&info, 0, kHighest);
        SetWindow(*this, 0);
    }
};

struct Window {
    explicit Window(CXWindowing& windowing) { windowing.GetWindowingFactor(width, level); }
    bool operator==(const Window&) const = default;
    int width = 0;
    int level = 0;
};

Table TableOf(CXWindowing& windowing) {
    Table table(kHighest + 1);
    windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
    return table;
}

/// Half of the threads write windows, the others read them, by copies of the object too.
bool WindowsStayWhole() {
    Prepared windowing;
    std::vector<Table> tables;
    for (int window = 0; window < kWindows; ++window) {
        SetWindow(windowing, window);
        tables.push_back(TableOf(windowing));
    }
    const auto isWhole = [&](CXWindowing& seen) {
        const Window window(seen);
        return window.level == LevelOf(window.width) &&
               std::ranges::find(tables, TableOf(seen)) != tables.end();
    };
    std::atomic<bool> areWhole = true;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kWindowThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < kRounds; ++round)
                SetWindow(windowing, (round * 5 + thread) % kWindows);
        });
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds / 4; ++round) {
                CXWindowing copy(windowing);
                if (!isWhole(windowing) || !isWhole(copy)) areWhole = false;
            }
        });
    }
    threads.clear();
    return areWhole;
}

/// Every thread steps up and down and turns the inversion on and off: all of it must add up.
bool NoStepIsLost() {
    Prepared windowing;
    const Window before(windowing);
    const Table table = TableOf(windowing);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kWindowThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                int step = 3;
                windowing.SetValue(CXWindowing::kWindowLevel, &step, nullptr);
                windowing.SetValue(CXWindowing::kInversion, &step, nullptr);
                windowing.ChangeWLByOffset(3);
                windowing.ChangeWWByOffset(-1);
                windowing.ChangeWWByOffset(1);
            }
        });
    }
    threads.clear();
    return Window(windowing) == before && TableOf(windowing) == table;
}

/// Changes and reads one object from several threads at once; gives what was wrong.
std::string StressWindowing() {
    if (!WindowsStayWhole()) return "a window or a table was read half changed";
    return NoStepIsLost() ? "" : "a step of the window was lost";
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
