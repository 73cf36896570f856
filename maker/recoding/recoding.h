/// An object brought into another coding by the rules of the DICOM standard: nothing else changes
/// but what the standard demands.
#pragma once

#include "maker/recoding/recoding_plan.h"
#include "quorvex/CxDcmParser.h"

namespace quorvex {

/// Decodes and codes every frame as it is stored: palettes stay palettes, bits above Bits Stored
/// and the sign stay. Transfer syntax, Photometric Interpretation and Planar Configuration change
/// where the coding demands it; a lossy result is marked, and is a new instance.
///
/// @param parser  has a copy of the object open, by the standard rules; its header's photometric
///                interpretation may be changed
/// @param target  is changed even where the answer is a failure: give it a draft
/// @return QVM_SUCCESS; QVM_FRAME_COPIED where the frames stay as they are stored; what
///         PlanRecoding(), CodeStored() and KeepJpegStreams() answer;
///         QVM_ERROR_FAILED_TO_DECOMPRESS for frames that are not whole;
///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA
[[nodiscard]] QUORVEX_MESSAGE RecodeByStandard(CxDcmParser& parser, TRANSFER_SYNTAX from,
                                               const RecodingWish& wish, CDcmObject& target);

}  // namespace quorvex
