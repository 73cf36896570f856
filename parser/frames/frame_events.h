/// The process-wide view of how many frame boundaries the latest fetch has passed.
#pragma once

namespace quorvex {

/// Shows a fetch's own count; the fetch itself never reads it back.
void ShowFrameEvents(int count) noexcept;

[[nodiscard]] int LatestFrameEvents() noexcept;

}  // namespace quorvex
