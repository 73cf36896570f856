/// Long operations called off by another thread.
#pragma once

#include "quorvex/Export.h"

#include <atomic>

namespace quorvex {

/// Calls operations off. Any thread may use it at any time, while it lives.
class QUORVEX_API CxCancelToken {
public:
    CxCancelToken() noexcept;
    CxCancelToken(const CxCancelToken&) = delete;
    CxCancelToken& operator=(const CxCancelToken&) = delete;
    ~CxCancelToken() = default;

    /// From now on, until `Reset`, the operations that run under this token fail.
    void Cancel() noexcept;
    void Reset() noexcept;
    [[nodiscard]] bool IsCancelled() const noexcept;

private:
    std::atomic<bool> isCancelled_{false};
};

/// While it lives, the operations that this thread calls run under a token; of several scopes the
/// innermost one counts. Other threads are not concerned: each has a scope of its own, of the same
/// token or another.
///
/// An operation that decodes, renders or converts looks at its token all the while: at every block
/// of JPEG 2000 that is read, every row of a high-throughput one that is written, every line of
/// JPEG, every band of RLE, between pieces of deflated frames and of JPEG XL, and at every row that
/// is rendered. What is one call of a library (JPEG-LS, JPEG XL that is written with losses, and
/// JPEG 2000 that OpenJPEG writes) is asked before and behind a frame. Once the token is cancelled
/// the operation answers QVM_ERROR_CANCELLED and leaves what its other failures leave; the pixels
/// of `CXDIPP::RenderInto`'s target may have any value then. What had been done when the token was
/// cancelled may still be answered as done.
class QUORVEX_API CxCancelScope {
public:
    /// @param token  must outlive it
    explicit CxCancelScope(const CxCancelToken& token) noexcept;
    CxCancelScope(const CxCancelScope&) = delete;
    CxCancelScope& operator=(const CxCancelScope&) = delete;
    ~CxCancelScope();

private:
    const CxCancelToken* outer_;
};

}  // namespace quorvex
