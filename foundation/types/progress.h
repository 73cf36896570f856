/// The share of a frame's work that is done, told to the host of this thread.
#pragma once

#include "quorvex/CxProgress.h"

#include <cstddef>

namespace quorvex {

/// Whether TellProgress() reaches anybody.
[[nodiscard]] bool IsProgressWanted() noexcept;

/// Tells how much of the present stretch is done, `done` of `all`; less than before, and what is
/// hardly more, is not told. Nothing where no frame is at work on this thread.
void TellProgress(std::size_t done, std::size_t all) noexcept;

/// While it lives, this thread works at a frame. One inside another is part of that.
class FrameProgress {
public:
    FrameProgress() noexcept;
    FrameProgress(const FrameProgress&) = delete;
    FrameProgress& operator=(const FrameProgress&) = delete;
    ~FrameProgress();

    /// All of the frame is done. Throws Cancelled where the host has called off.
    void Finish() const;

private:
    bool isOutermost_;
};

/// While it lives, what is told is of one step of the work: of equal ones into which the stretch
/// around it falls.
class ProgressStretch {
public:
    ProgressStretch(std::size_t step, std::size_t steps) noexcept;
    ProgressStretch(const ProgressStretch&) = delete;
    ProgressStretch& operator=(const ProgressStretch&) = delete;
    ~ProgressStretch();

private:
    double outerBegin_;
    double outerSpan_;
};

}  // namespace quorvex
