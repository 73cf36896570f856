#include "parser/frames/frame_events.h"

#include <atomic>

namespace quorvex {
namespace {

std::atomic<int> latestFrameEvents{0};

}  // namespace

void ShowFrameEvents(int count) noexcept {
    latestFrameEvents.store(count, std::memory_order_relaxed);
}

int LatestFrameEvents() noexcept {
    return latestFrameEvents.load(std::memory_order_relaxed);
}

}  // namespace quorvex
