/// The making of Pixel Data, and of all attributes that describe it.
#pragma once

#include "maker/pixels/frame_supply.h"
#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// By the established rules: brings the frames into the form that `format` asks for, and puts them
/// into `target` with their description. `target` changes only when all is done.
/// @param palette  has the colour tables of frames that are indices
/// @return QVM_SUCCESS, or one of the failures of `CxDcmMaker::MakeDcmObject`
[[nodiscard]] QUORVEX_MESSAGE MakeEstablishedPixels(const _DCM_PIXEL_INFO& format,
                                                    FrameSupply& frames, const CDcmObject& palette,
                                                    CDcmObject& target);

}  // namespace quorvex
