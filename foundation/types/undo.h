/// Taking back what was begun when something is thrown, or refused, before its end.
#pragma once

#include <utility>

namespace quorvex {

/// Runs `action` at the end of its scope unless what was begun is kept.
template <class Action>
class [[nodiscard]] UndoUnlessKept {
public:
    explicit UndoUnlessKept(Action action) : action_(std::move(action)) {}
    ~UndoUnlessKept() {
        if (!isKept_) action_();
    }
    UndoUnlessKept(const UndoUnlessKept&) = delete;
    UndoUnlessKept& operator=(const UndoUnlessKept&) = delete;

    void Keep() noexcept { isKept_ = true; }

private:
    Action action_;
    bool isKept_ = false;
};

}  // namespace quorvex
