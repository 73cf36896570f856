/// A coded stream as a coder pushes it out: whole buffers to a write callback.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// Each operation is false from the moment on when the receiver has given up.
class JpegOutput {
public:
    JpegOutput(void* context, JpegWriteCallback write) noexcept
        : context_(context), write_(write) {}

    [[nodiscard]] bool Begin() noexcept;
    [[nodiscard]] bool Put(std::span<const unsigned char> bytes) noexcept;
    /// With a 0 behind each byte of 0xFF, so that none looks like a marker.
    [[nodiscard]] bool PutStuffed(std::span<const unsigned char> bytes) noexcept;
    [[nodiscard]] bool End() noexcept;

private:
    [[nodiscard]] bool Tell(int event, std::size_t count) noexcept;
    [[nodiscard]] bool Flush() noexcept;

    void* context_;
    JpegWriteCallback write_;
    unsigned char* buffer_ = nullptr;
    std::size_t used_ = 0;
    bool isOpen_ = false;
};

}  // namespace quorvex
