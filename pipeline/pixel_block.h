/// Blocks of pixels, as the pipeline passes them from step to step.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace quorvex {

/// Owns the bytes of an image or a layer; empty without any. A copy has bytes of its own.
struct PixelBlock {
    PixelBlock() = default;
    /// Takes over `byteCount` bytes.
    PixelBlock(std::unique_ptr<unsigned char[]> bytes, std::size_t byteCount) noexcept
        : data(std::move(bytes)), size(byteCount), capacity(byteCount) {}
    PixelBlock(const PixelBlock& other);
    PixelBlock(PixelBlock&&) noexcept = default;
    PixelBlock& operator=(const PixelBlock& other) { return *this = PixelBlock(other); }
    PixelBlock& operator=(PixelBlock&&) noexcept = default;
    ~PixelBlock() = default;

    [[nodiscard]] std::span<unsigned char> Bytes() const noexcept { return {data.get(), size}; }

    std::unique_ptr<unsigned char[]> data;
    std::size_t size = 0;
    std::size_t capacity = 0;  ///< bytes that there are; `size` of them count
};

/// `size` undefined bytes. Throws std::bad_alloc, or BlockTooLarge above `kLargestBlock`.
[[nodiscard]] PixelBlock NewPixelBlock(std::size_t size);

/// The same, all 0.
[[nodiscard]] PixelBlock ClearedPixelBlock(std::size_t size);

/// A block with a copy of `bytes`.
[[nodiscard]] PixelBlock CopyOf(std::span<const unsigned char> bytes);

}  // namespace quorvex
