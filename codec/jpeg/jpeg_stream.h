/// A JPEG stream that is being decoded by the engine.
#pragma once

#include "foundation/engines/jpeg/jpeg_engine.h"

#include <cstddef>
#include <span>

namespace quorvex {

/// What the read callback hands to the engine.
struct JpegReadContext {
    const unsigned char* source = nullptr;  ///< the next byte to deliver
    unsigned long sourceLength = 0;
    unsigned long position = 0;  ///< bytes delivered
    unsigned char readBuffer[kJpegBufferBytes];
};

/// An open stream; closed in every case.
class JpegStream {
public:
    explicit JpegStream(std::span<const unsigned char> source) noexcept;
    JpegStream(const JpegStream&) = delete;
    JpegStream& operator=(const JpegStream&) = delete;
    ~JpegStream() { close_decompression(handle_); }

    /// Valid where IsUsable(); elsewhere it tells whether the stream is unsupported.
    [[nodiscard]] const JpegDescription& Description() const noexcept { return description_; }
    /// There is a JPEG stream at all.
    [[nodiscard]] bool IsJpeg() const noexcept { return kind_ != -1; }
    /// Of a kind that we decode.
    [[nodiscard]] bool IsUsable() const noexcept {
        return kind_ >= kJpegGrey && kind_ <= kJpegYccInks;
    }
    [[nodiscard]] bool IsLossless() const noexcept {
        return description_.process == JpegProcess::kLossless;
    }
    /// The colour form that the stream's kind asks for.
    [[nodiscard]] JpegColour Colour() const noexcept;

    /// Fixes the form of the pixels. False where the stream cannot give it.
    [[nodiscard]] bool LayOut(int bytesPerSample, int interleave, JpegColour colour) noexcept;
    /// Valid after LayOut().
    [[nodiscard]] const JpegPixelLayout& Layout() const noexcept { return layout_; }

    struct Lines {
        std::size_t bytes = 0;
        bool areBroken = false;   ///< the stream is damaged, or ended early
        bool areDamaged = false;  ///< also where the decoder could go on behind the damage
    };
    /// Decodes stripe by stripe, each straight to its place, as many lines as `block` has room for.
    /// What a broken stream does not give is 0.
    [[nodiscard]] Lines Decode(std::span<unsigned char> block) const noexcept;

private:
    JpegReadContext context_;
    JpegDecompressionHandle handle_;
    JpegDescription description_;
    JpegPixelLayout layout_;
    int kind_ = 0;
};

}  // namespace quorvex
