/// JPEG streams brought into JPEG XL and out of it again, to the byte: nothing is decoded for it.
#pragma once

#include "maker/recoding/recoding_plan.h"
#include "quorvex/CxDcmParser.h"

namespace quorvex {

/// Whether a form keeps JPEG streams, rather than what they decode to.
[[nodiscard]] constexpr bool KeepsJpegStreams(QUORVEX_XFERSYNTAX form) noexcept {
    return form == kXferJpegXlOfJpeg || form == kXferJpegOriginal;
}

/// Repacks every frame; beside them nothing but the transfer syntax changes, which of restored
/// streams is that of their process.
///
/// @param parser  has a copy of the object open, by the standard rules
/// @param wish    whose form keeps JPEG streams
/// @param target  is changed even where the answer is a failure: give it a draft
/// @return QVM_SUCCESS; QVM_FRAME_COPIED where the frames are in that form already;
///         QVM_ERROR_INVALID_TARGET_SYNTAX       no such streams, or ones that JPEG XL cannot keep
///                                               (12 bits, lossless, arithmetic)
///         QVM_ERROR_INVALID_JPEG_STREAM         streams of different processes
///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA    fewer frames than the header says
///         QVM_ERROR_FAILED_TO_DECOMPRESS        frames that are not whole
///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA. Throws std::bad_alloc
[[nodiscard]] QUORVEX_MESSAGE KeepJpegStreams(CxDcmParser& parser, TRANSFER_SYNTAX from,
                                              const RecodingWish& wish, CDcmObject& target);

}  // namespace quorvex
