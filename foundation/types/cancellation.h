/// Whether the host has called off what this thread does.
#pragma once

#include "quorvex/CxCancelToken.h"

#include <exception>

namespace quorvex {

/// Ends an operation that has been called off; `Answer` makes QVM_ERROR_CANCELLED of it.
struct Cancelled : std::exception {};

/// What a thread works under: handed to threads that the host lends to it.
class Cancellation {
public:
    [[nodiscard]] static Cancellation OfThisThread() noexcept;

    [[nodiscard]] bool IsAsked() const noexcept {
        return token_ != nullptr && token_->IsCancelled();
    }
    /// Whether it may be asked for at all.
    [[nodiscard]] bool IsPossible() const noexcept { return token_ != nullptr; }
    void ThrowIfAsked() const {
        if (IsAsked()) throw Cancelled();
    }

private:
    const CxCancelToken* token_ = nullptr;
};

}  // namespace quorvex
