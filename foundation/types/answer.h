/// The one place where an exception ends: no public operation lets one out.
#pragma once

#include <utility>

namespace quorvex {

/// Runs `work` and gives its result, or `onException` when anything is thrown (in practice: no
/// memory).
template <class Result, class Work>
[[nodiscard]] Result Answer(Result onException, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return onException;
    }
}

}  // namespace quorvex
