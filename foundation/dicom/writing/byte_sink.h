/// Where written bytes go.
#pragma once

#include "foundation/dicom/model/element.h"

namespace quorvex::dicom {

class ByteSink {
public:
    virtual ~ByteSink() = default;
    /// Takes bytes; a sink that fails remembers it and takes no more.
    virtual void Put(Bytes bytes) = 0;

protected:
    ByteSink() = default;
    ByteSink(const ByteSink&) = default;
    ByteSink& operator=(const ByteSink&) = default;
};

class BufferSink final : public ByteSink {
public:
    void Put(Bytes bytes) override { buffer_.insert(buffer_.end(), bytes.begin(), bytes.end()); }
    [[nodiscard]] Bytes Written() const noexcept { return buffer_; }

private:
    ByteBuffer buffer_;
};

}  // namespace quorvex::dicom
