/// The clock: what time it is, and how a person writes that.
#pragma once

#include <chrono>

namespace quorvex {

using Moment = std::chrono::system_clock::time_point;

struct CalendarTime {
    int year = 0;
    int month = 0;  ///< from 1
    int day = 0;    ///< from 1
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

[[nodiscard]] CalendarTime LocalTime() noexcept;
[[nodiscard]] CalendarTime UniversalTime() noexcept;

/// Takes the time from `clock` from now on, in every thread; null: from the system again.
void SetClock(Moment (*clock)() noexcept) noexcept;

}  // namespace quorvex
