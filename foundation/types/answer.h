/// The one place where an exception ends: no public operation lets one out.
#pragma once

#include "foundation/types/cancellation.h"
#include "foundation/types/limits.h"
#include "quorvex/ResultCodes.h"

#include <new>
#include <type_traits>
#include <utility>

namespace quorvex {

namespace detail {

/// Public operations that run on this thread, one inside the other.
inline constinit thread_local int runningOperations = 0;

struct RunningOperation {
    RunningOperation() noexcept { ++runningOperations; }
    ~RunningOperation() { --runningOperations; }
    RunningOperation(const RunningOperation&) = delete;
    RunningOperation& operator=(const RunningOperation&) = delete;
    [[nodiscard]] static bool IsInner() noexcept { return runningOperations > 1; }
};

/// A failure under a cancelled token is that it was cancelled, whatever came of it further down.
template <class Result>
[[nodiscard]] Result AnswerOf(Result result) {
    if constexpr (std::is_same_v<Result, QUORVEX_MESSAGE>) {
        const bool isDone = result == QVM_SUCCESS || result == QVM_FRAME_COPIED;
        const bool isOuter = !RunningOperation::IsInner();
        if (!isDone && isOuter && Cancellation::OfThisThread().IsAsked())
            return QVM_ERROR_CANCELLED;
    }
    return result;
}

}  // namespace detail

/// Runs the work of a public operation and gives its result, or `onException` when anything is
/// thrown.
///
/// Where one operation serves another, missing memory passes through to the outer one: taken for an
/// absent attribute there, it would give a wrong picture and the answer that all is well. So does
/// what has been called off.
template <class Result, class Work>
[[nodiscard]] Result Answer(Result onException, Work&& work) {
    const detail::RunningOperation operation;
    try {
        return detail::AnswerOf<Result>(std::forward<Work>(work)());
    } catch (const Cancelled&) {
        if (detail::RunningOperation::IsInner()) throw;
        return detail::AnswerOf<Result>(std::move(onException));
    } catch (const std::bad_alloc&) {
        if (detail::RunningOperation::IsInner()) throw;
        RefuseBy(Limit::kMemory);
        return onException;
    } catch (...) {
        return detail::AnswerOf<Result>(std::move(onException));
    }
}

/// The same for what must never throw: engines, what a library in C calls, what only helps.
template <class Result, class Work>
[[nodiscard]] Result Contain(Result onException, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {
        RefuseBy(Limit::kMemory);
        return onException;
    } catch (...) {
        return onException;
    }
}

/// While it lives a callback runs: the operations that it calls answer to it, not to the one that
/// called it back.
class HostCode {
public:
    HostCode() noexcept : interrupted_(std::exchange(detail::runningOperations, 0)) {}
    ~HostCode() { detail::runningOperations = interrupted_; }
    HostCode(const HostCode&) = delete;
    HostCode& operator=(const HostCode&) = delete;

private:
    int interrupted_;
};

}  // namespace quorvex
