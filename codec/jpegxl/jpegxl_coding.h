/// JPEG XL frames of samples as they are stored.
#pragma once

#include "codec/stored_coding.h"

#include <span>
#include <vector>

namespace quorvex {

/// Codes a frame of unsigned samples of 1 to 16 bits: lossless, or with `forms.quality` as the
/// tenths of the distance to its source that a person would see (1.0 is where that begins).
/// @param areWithinBitsStored  no sample needs more; else all allocated bits are coded
/// @return QVM_SUCCESS; QVM_ERROR_FAILED_TO_COMPRESS. Throws std::bad_alloc
[[nodiscard]] QUORVEX_MESSAGE CodeToJpegXl(const StoredForms& forms, bool areWithinBitsStored,
                                           std::span<const unsigned char> frame,
                                           std::vector<unsigned char>& coded);

}  // namespace quorvex
