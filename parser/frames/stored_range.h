/// Samples that a lossy coder has left beyond what their bits can hold.
#pragma once

#include "parser/frames/frame_shape.h"

#include <span>

namespace quorvex {

/// Whether a stream's losses may push samples beyond Bits Stored: it has more bits than that, and
/// its wavelet is not reversible.
[[nodiscard]] bool MayOvershoot(const FrameShape& shape, std::span<const unsigned char> stream);

/// Brings each sample of a frame in this machine's byte order to the nearest value that Bits
/// Stored can hold.
void ClampToBitsStored(const FrameShape& shape, std::span<unsigned char> samples);

/// The same where no sample is further beyond than the wavelet of sound samples may take it. False,
/// and nothing changed, for others: there are bits above the stored ones.
[[nodiscard]] bool BringNearToStored(const FrameShape& shape, std::span<unsigned char> samples);

}  // namespace quorvex
