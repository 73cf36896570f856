#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace quorvex::tools {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 500ms;  // shorter work needs no bar
constexpr auto kRefresh = 100ms;
constexpr std::size_t kBarWidth = 30;

bool isShown = false;

}  // namespace

Progress::Progress(std::size_t total)
    : total_(total),
      isWanted_(total > 1 && isatty(STDERR_FILENO) != 0),
      nextShow_(std::chrono::steady_clock::now() + kPatience) {}

Progress::~Progress() {
    HideProgress();
}

void Progress::Step() {
    ++done_;
    if (!isWanted_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextShow_) Show(now);
}

void Progress::Show(std::chrono::steady_clock::time_point now) {
    nextShow_ = now + kRefresh;
    const std::size_t filled = kBarWidth * done_ / total_;
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %zu of %zu", bar.c_str(), done_, total_);
    std::fflush(stderr);
    isShown = true;
}

void HideProgress() {
    if (!isShown) return;
    std::fputs("\r\033[K", stderr);
    isShown = false;
}

}  // namespace quorvex::tools
