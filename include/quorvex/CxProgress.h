/// How far the work at a frame is.
#pragma once

#include "quorvex/Export.h"

namespace quorvex {

/// Is told how far the decoding or coding of a frame is. A host derives from this class.
class QUORVEX_API CxProgress {
public:
    virtual ~CxProgress();

    /// Comes on the thread of the operation's caller, inside the operation. It may cancel the token
    /// that the operation runs under, which then answers QVM_ERROR_CANCELLED; it must not call the
    /// object that is at work. What it throws goes no further and counts for nothing.
    ///
    /// @param fraction  of the frame's work that is done: above 0, greater from call to call, and 1
    ///                  once, when all of it is done. A frame that fails has no 1, and the next
    ///                  frame begins again
    virtual void Advance(double fraction) = 0;

protected:
    CxProgress() = default;
    CxProgress(const CxProgress&) = default;
    CxProgress& operator=(const CxProgress&) = default;
};

/// While it lives, the frames that this thread decodes from a coding, or codes, are told; of
/// several scopes the innermost one counts. Other threads are not concerned.
///
/// There are at most 128 calls a frame, and as many as its coding has steps: strips of rows of a
/// JPEG 2000 frame that is read, and of high-throughput ones that are written; lines of JPEG; bands
/// of RLE; pieces of deflated frames, and of JPEG XL that is read. Of JPEG-LS, of JPEG XL that is
/// written, of JPEG 2000 that OpenJPEG writes, and of frames stored in the clear only the end is
/// told, if anything. A conversion decodes and codes each frame: two series. Parts and lower
/// resolutions of frames are not told.
class QUORVEX_API CxProgressScope {
public:
    /// @param progress  must outlive it
    explicit CxProgressScope(CxProgress& progress) noexcept;
    CxProgressScope(const CxProgressScope&) = delete;
    CxProgressScope& operator=(const CxProgressScope&) = delete;
    ~CxProgressScope();

private:
    CxProgress* outer_;
};

}  // namespace quorvex
