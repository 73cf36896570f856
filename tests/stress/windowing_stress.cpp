#include "windowing_stress.h"

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace quorvex::test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 400;
constexpr int kHighest = 4095;
constexpr int kWindows = 16;

using Table = std::vector<unsigned char>;

int WidthOf(int window) {
    return 100 + 200 * window;
}
int LevelOf(int width) {
    return 3 * width - 7;
}

void Prepare(CXWindowing& windowing) {
    CXGSPSInfo info;
    info.pixelBitDepth = 12;
    info.windowWidth = WidthOf(0);
    info.windowCenter = LevelOf(WidthOf(0));
    windowing.PrepareGSPSProcessing2(&info, 0, kHighest);
}

void SetWindow(CXWindowing& windowing, int window) {
    int widthAndLevel[] = {WidthOf(window), LevelOf(WidthOf(window))};
    windowing.SetValue(CXWindowing::kWindow, widthAndLevel, nullptr);
}

Table TableOf(CXWindowing& windowing) {
    Table table(kHighest + 1);
    windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
    return table;
}

std::vector<Table> EveryTable() {
    CXWindowing windowing;
    Prepare(windowing);
    std::vector<Table> tables;
    for (int window = 0; window < kWindows; ++window) {
        SetWindow(windowing, window);
        tables.push_back(TableOf(windowing));
    }
    return tables;
}

bool HoldsAPair(CXWindowing& windowing) {
    int width = 0;
    int level = 0;
    windowing.GetWindowingFactor(width, level);
    return level == LevelOf(width);
}

/// Half of the threads write windows, the others read them, by copies of the object too.
bool WindowsStayWhole() {
    const std::vector<Table> tables = EveryTable();
    const auto isOneOfThem = [&](const Table& table) {
        return std::ranges::find(tables, table) != tables.end();
    };
    CXWindowing windowing;
    Prepare(windowing);
    std::atomic<bool> isWhole = true;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < kRounds; ++round)
                SetWindow(windowing, (round * 5 + thread) % kWindows);
        });
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds / 4; ++round) {
                CXWindowing copy(windowing);
                if (!HoldsAPair(windowing) || !HoldsAPair(copy)) isWhole = false;
                if (!isOneOfThem(TableOf(windowing)) || !isOneOfThem(TableOf(copy)))
                    isWhole = false;
            }
        });
    }
    threads.clear();
    return isWhole;
}

/// Every thread steps up and down and turns the inversion on and off: all of it must add up.
bool NoStepIsLost() {
    CXWindowing windowing;
    Prepare(windowing);
    const Table before = TableOf(windowing);
    int width = 0;
    int level = 0;
    windowing.GetWindowingFactor(width, level);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
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
    int widthAfter = 0;
    int levelAfter = 0;
    windowing.GetWindowingFactor(widthAfter, levelAfter);
    return widthAfter == width && levelAfter == level && TableOf(windowing) == before;
}

}  // namespace

std::string StressWindowing() {
    if (!WindowsStayWhole()) return "a window or a table was read half changed";
    if (!NoStepIsLost()) return "a step of the window was lost";
    return {};
}

}  // namespace quorvex::test
