/// JPEG-LS frames of samples as they are stored.
#pragma once

#include "codec/stored_coding.h"

#include <span>
#include <vector>

namespace quorvex {

/// Codes a frame, near-lossless with `forms.quality` as the error bound where the form says so.
///
/// The stream has no fewer than 8 bits a sample, and no fewer than 9 where 16 are allocated: other
/// people's readers go by that. Signed samples have all allocated bits, so that they come out with
/// their sign from readers that do not extend it.
///
/// @param areWithinBitsStored  no sample needs more; else all allocated bits are coded
/// @return QVM_SUCCESS; QVM_ERROR_INVALID_BITS_STORED for samples so close to the end of what Bits
///         Stored can hold that the bound would take them past it; QVM_ERROR_FAILED_TO_COMPRESS.
///         Throws std::bad_alloc
[[nodiscard]] QUORVEX_MESSAGE CodeToJpegLs(const StoredForms& forms, bool areWithinBitsStored,
                                           std::span<const unsigned char> frame,
                                           std::vector<unsigned char>& coded);

}  // namespace quorvex
