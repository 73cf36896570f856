#include "foundation/types/progress.h"

#include "foundation/types/answer.h"
#include "foundation/types/cancellation.h"

#include <utility>

namespace quorvex {

namespace {

constexpr double kLeastStep = 1.0 / 128;

struct Present {
    CxProgress* host = nullptr;
    bool isAtFrame = false;
    double told = 0;
    double begin = 0;  ///< of the stretch
    double span = 1;
};
constinit thread_local Present present;

void Tell(double fraction) noexcept {
    present.told = fraction;
    (void)Contain(false, [&] {
        present.host->Advance(fraction);
        return true;
    });
}

}  // namespace

CxProgress::~CxProgress() = default;

CxProgressScope::CxProgressScope(CxProgress& progress) noexcept
    : outer_(std::exchange(present.host, &progress)) {}
CxProgressScope::~CxProgressScope() {
    present.host = outer_;
}

bool IsProgressWanted() noexcept {
    return present.host != nullptr && present.isAtFrame;
}

void TellProgress(std::size_t done, std::size_t all) noexcept {
    if (!IsProgressWanted() || all == 0) return;
    const double fraction = static_cast<double>(done) / static_cast<double>(all);
    const double whole = present.begin + fraction * present.span;
    if (whole >= present.told + kLeastStep && whole < 1) Tell(whole);
}

FrameProgress::FrameProgress() noexcept : isOutermost_(!present.isAtFrame) {
    if (!isOutermost_) return;
    present.isAtFrame = true;
    present.told = 0;
}
FrameProgress::~FrameProgress() {
    if (isOutermost_) present.isAtFrame = false;
}

void FrameProgress::Finish() const {
    if (isOutermost_ && IsProgressWanted()) Tell(1);
    Cancellation::OfThisThread().ThrowIfAsked();
}

ProgressStretch::ProgressStretch(std::size_t step, std::size_t steps) noexcept
    : outerBegin_(present.begin), outerSpan_(present.span) {
    present.span /= static_cast<double>(steps);
    present.begin += static_cast<double>(step) * present.span;
}
ProgressStretch::~ProgressStretch() {
    present.begin = outerBegin_;
    present.span = outerSpan_;
}

}  // namespace quorvex
