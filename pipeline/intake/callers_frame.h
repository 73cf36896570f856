/// Frames that a caller holds, on their way into a `CXDIPP`.
#pragma once

#include "pipeline/value_range.h"

#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

struct IncomingImage;
struct PixelHeader;

/// Bytes of a frame that a caller hands over under a header; colour has one byte a sample. Nothing
/// above `kLargestBlock`.
[[nodiscard]] std::optional<std::size_t> CallerFrameBytes(const PixelHeader& header);

/// A range of values, whichever way round it is given.
[[nodiscard]] ValueSpan SpanOfCaller(int one, int other) noexcept;

/// What the elements of a frame stand for whose values a caller says to lie in `met`.
[[nodiscard]] ValueRange RangeOfCaller(ValueSpan met) noexcept;

/// Copies a frame of `CallerFrameBytes()`. Words and bytes stay as they are; grey pixels that are
/// neither are brought into words. `met` is of no effect for colour. Needs the incoming record.
void TakeCallersFrame(IncomingImage& incoming, std::span<const unsigned char> frame,
                      PixelHeader header, ValueSpan met);

}  // namespace quorvex
