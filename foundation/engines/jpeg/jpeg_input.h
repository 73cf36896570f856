/// A coded stream as the coders pull it: blocks from a read callback, with a beginning that can be
/// looked at first.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

class JpegInput {
public:
    /// @param expectedBytes  how much will be handed out, as far as that is known
    JpegInput(void* context, JpegReadCallback read, std::uint64_t expectedBytes = 0) noexcept
        : context_(context), read_(read), expectedBytes_(expectedBytes) {}
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;
    ~JpegInput();

    /// Pulls one more block and keeps it. False at the end of the stream. Throws std::bad_alloc.
    bool GrowHead();
    [[nodiscard]] std::span<const unsigned char> Head() const noexcept { return head_; }

    [[nodiscard]] std::uint64_t ExpectedBytes() const noexcept { return expectedBytes_; }

    /// The next block, the kept beginning first; empty at the end. Valid until the next call.
    [[nodiscard]] std::span<const unsigned char> Next() noexcept;

private:
    [[nodiscard]] std::span<const unsigned char> Pull() noexcept;

    void* context_;
    JpegReadCallback read_;
    std::uint64_t expectedBytes_;
    unsigned char* buffer_ = nullptr;
    std::vector<unsigned char> head_;
    bool headIsOut_ = false;
    bool isAtEnd_ = false;
};

}  // namespace quorvex
