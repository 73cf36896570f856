/// Secondary captures (PS3.3 A.8): frames that belong to a patient's study, and nothing more.
#pragma once

#include "maker/rules/host_frames.h"

namespace quorvex {

/// Multi-frame True Color Secondary Capture Image Storage.
inline constexpr const char* kColourCaptures = "1.2.840.10008.5.1.4.1.1.7.4";

/// Gives the object, which has its patient and study, the class for such frames and the attributes
/// that the class wants.
/// @return QVM_SUCCESS; or what several frames in one object cannot have, with `object` half done:
///         QVM_ERROR_INVALID_PIXEL_REPRESENTATION  signed samples
///         QVM_ERROR_INVALID_PHOTOMETRIC           MONOCHROME1, a palette; a palette without tables
///         QVM_ERROR_INVALID_BITS_ALLOCATED        samples of 32 bits, colours of 16
[[nodiscard]] QUORVEX_MESSAGE DescribeCapture(const CDcmObject& source, const HostFrames& frames,
                                              int count, CDcmObject& object);

}  // namespace quorvex
