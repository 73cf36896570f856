/// Frames in plain form: decoded, and without a palette.
#pragma once

#include "foundation/types/block.h"
#include "maker/pixels/pixel_draft.h"
#include "quorvex/CxDcmMaker.h"

#include <span>

namespace quorvex {

/// Moves the raw data of a frame to its processed data, decoded and with its palette expanded as
/// the draft's incoming layout asks for. Changes nothing for a transfer syntax that is neither
/// plain nor one that we decode.
/// @return QVM_SUCCESS, QVM_ERROR_NULL_SOURCE without raw data, QVM_ERROR_FAILED_TO_DECOMPRESS, or
///         QVM_ERROR_INVALID_PHOTOMETRIC for indices that are too few or have no palette
[[nodiscard]] QUORVEX_MESSAGE ProcessObjectForExportAction(PixelDraft& draft,
                                                           _DCM_FRAME_BUFFER& frame);

/// The colours of a frame of palette indices: R, G, B by pixel, a byte each. Nothing where there
/// are fewer indices than pixels, or the object's palette cannot be read.
[[nodiscard]] HeapBlock GetRGBBufferFromPaletteImage(std::span<const unsigned char> indices,
                                                     const PixelLayout& layout, CDcmObject& object);

/// Replaces a bitmap by a frame as objects hold them, and releases it (both from new[]). Nothing
/// happens for other depths.
/// @param bitsPerPixel  8, 16: its rows, which ran from the bottom, run from the top;
///                      24, 32: B, G, R and a fourth byte become R, G, B, the rows stay
void AdjustImage(unsigned char*& buffer, unsigned short bitsPerPixel, unsigned short width,
                 unsigned short height);

}  // namespace quorvex
