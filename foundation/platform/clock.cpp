#include "foundation/platform/clock.h"

#include <atomic>
#include <ctime>

namespace quorvex {
namespace {

using Clock = Moment (*)() noexcept;

Moment SystemTime() noexcept {
    return std::chrono::system_clock::now();
}

std::atomic<Clock> currentClock{SystemTime};

/// `split` is localtime_r or gmtime_r.
CalendarTime Split(tm* (*split)(const time_t*, tm*)) noexcept {
    using std::chrono::floor;
    const Moment now = currentClock.load()();
    const auto second = floor<std::chrono::seconds>(now);
    const auto rest = floor<std::chrono::milliseconds>(now - second);
    const time_t stamp = std::chrono::system_clock::to_time_t(second);
    tm parts{};
    split(&stamp, &parts);
    return {.year = parts.tm_year + 1900,
            .month = parts.tm_mon + 1,
            .day = parts.tm_mday,
            .hour = parts.tm_hour,
            .minute = parts.tm_min,
            .second = parts.tm_sec,
            .millisecond = static_cast<int>(rest.count())};
}

}  // namespace

CalendarTime LocalTime() noexcept {
    return Split(localtime_r);
}
CalendarTime UniversalTime() noexcept {
    return Split(gmtime_r);
}

void SetClock(Clock clock) noexcept {
    currentClock = clock == nullptr ? SystemTime : clock;
}

}  // namespace quorvex
