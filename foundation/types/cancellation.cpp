#include "foundation/types/cancellation.h"

#include <utility>

namespace quorvex {

namespace {

constinit thread_local const CxCancelToken* presentToken = nullptr;

}  // namespace

CxCancelToken::CxCancelToken() noexcept = default;

void CxCancelToken::Cancel() noexcept {
    isCancelled_.store(true, std::memory_order_relaxed);
}
void CxCancelToken::Reset() noexcept {
    isCancelled_.store(false, std::memory_order_relaxed);
}
bool CxCancelToken::IsCancelled() const noexcept {
    return isCancelled_.load(std::memory_order_relaxed);
}

CxCancelScope::CxCancelScope(const CxCancelToken& token) noexcept
    : outer_(std::exchange(presentToken, &token)) {}
CxCancelScope::~CxCancelScope() {
    presentToken = outer_;
}

Cancellation Cancellation::OfThisThread() noexcept {
    Cancellation present;
    present.token_ = presentToken;
    return present;
}

}  // namespace quorvex
