/// How the stored samples of an object are brought into another coding, unchanged.
#pragma once

#include "codec/stored_coding.h"
#include "maker/conversion_progress.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/TransferSyntaxes.h"

#include <cstddef>
#include <optional>

namespace quorvex {

/// What is asked for.
struct RecodingWish {
    QUORVEX_XFERSYNTAX form{};
    std::uint16_t quality = 0;  ///< 0: the form's own
    ConversionProgress progress = {};
};

struct RecodingPlan {
    const TransferSyntax* from = nullptr;
    const TransferSyntax* to = nullptr;
    bool keepsFrames = false;  ///< the stored bytes are in that form already
    CString readAs;            ///< photometric interpretation that leaves the samples as they are
    CString written;           ///< that of the new object
    StoredForms forms;
    std::size_t frameBytes = 0;  ///< with a byte for a sample of a single bit
    bool isLossySource = false;  ///< the frames as they stand have lost something
};

/// @param header  as a parser with the standard rules has understood it
/// @return QVM_SUCCESS, or what the coding cannot hold:
///         QVM_ERROR_INVALID_TRANSFER_SYNTAX       no such form, or a source without a decoder
///         QVM_ERROR_INVALID_SAMPLES_PER_PIXEL     neither 1 nor 3
///         QVM_ERROR_INVALID_BITS_ALLOCATED        such samples
///         QVM_ERROR_INVALID_BITS_STORED           more bits than a lossy coder takes
///         QVM_ERROR_INVALID_PIXEL_REPRESENTATION  signed samples in lossy JPEG
///         QVM_ERROR_INVALID_PHOTOMETRIC           indices of a palette in a lossy form, colours
///                                                 that share their chroma in a lossless one
[[nodiscard]] QUORVEX_MESSAGE PlanRecoding(const CDcmObject& header, TRANSFER_SYNTAX from,
                                           const RecodingWish& wish, RecodingPlan& plan);

}  // namespace quorvex
