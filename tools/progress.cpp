#include "tools/progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace quorvex::tools {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 500ms;  // shorter work needs no bar
constexpr auto kRefresh = 100ms;
constexpr std::size_t kBarWidth = 30;

bool isShown = false;

std::string AsRate(double perSecond) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), perSecond < 10 ? "%.1f/s" : "%.0f/s", perSecond);
    return text.data();
}

std::string AsTime(double seconds) {
    const long whole = std::lround(std::min(seconds, 3.6e8));
    std::array<char, 32> text{};
    if (whole < 3600)
        std::snprintf(text.data(), text.size(), "%ld:%02ld", whole / 60, whole % 60);
    else
        std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    return text.data();
}

}  // namespace

Progress::Progress(std::optional<std::size_t> total)
    : total_(total),
      isPossible_(IsPossible()),
      start_(std::chrono::steady_clock::now()),
      nextShow_(start_ + kPatience) {}

Progress::~Progress() {
    HideProgress();
}

bool Progress::IsPossible() {
    return isatty(STDERR_FILENO) != 0;
}

void Progress::Step() {
    ++done_;
    within_.clear();
    if (!isPossible_ || !HasSeveral()) return;
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextShow_) Show(now);
}

void Progress::Within(const char* step, int done, int all) {
    if (!isPossible_ || all < 2) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < nextShow_) return;
    within_ = std::string(step) + " frame " + std::to_string(done) + " of " + std::to_string(all);
    Show(now);
}

std::string Progress::Line(double seconds) const {
    const double rate = static_cast<double>(done_) / seconds;
    if (!total_) return std::to_string(done_) + " done, " + AsRate(rate);
    const std::size_t done = std::min(done_, *total_);  // inputs may come up while we work
    const std::size_t filled = kBarWidth * done / *total_;
    return '[' + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " +
           std::to_string(done) + " of " + std::to_string(*total_) + ", " + AsRate(rate) + ", " +
           AsTime(static_cast<double>(*total_ - done) / rate) + " left";
}

void Progress::Show(std::chrono::steady_clock::time_point now) {
    nextShow_ = now + kRefresh;
    const std::chrono::duration<double> taken = now - start_;
    const std::string between = HasSeveral() && !within_.empty() ? ", " : "";
    const std::string line = (HasSeveral() ? Line(taken.count()) : "") + between + within_;
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
    isShown = true;
}

void HideProgress() {
    if (!isShown) return;
    std::fputs("\r\033[K", stderr);
    isShown = false;
}

}  // namespace quorvex::tools
