/// Coding of frames as they are stored: no sample changes its meaning on the way.
#pragma once

#include "quorvex/ResultCodes.h"
#include "quorvex/TransferSyntaxes.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// Frames of whole-byte samples in this machine's byte order, interleaved by pixel, or of single
/// bits, packed from the lowest bit of the first byte on.
struct StoredForms {
    QUORVEX_XFERSYNTAX form{};  ///< to code to
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    std::uint16_t samplesPerPixel = 1;
    std::uint16_t bitsAllocated = 8;
    std::uint16_t bitsStored = 8;
    bool isSigned = false;
    bool isRgb = false;         ///< three samples that JPEG 2000 may decorrelate
    bool halvesChroma = false;  ///< R, G, B become YCbCr 4:2:2; baseline JPEG
    std::uint16_t quality = 0;  ///< of lossy forms, as CxImageProcessor::CompressFrameData() has it
};

/// JPEG 2000 and JPEG-LS are coded with Bits Stored where the samples fit them; lossless, else with
/// Bits Allocated.
/// @return QVM_SUCCESS; QVM_ERROR_INVALID_TARGET_SYNTAX for a form without a coder;
///         QVM_ERROR_INVALID_BITS_STORED for a lossy form and samples beyond Bits Stored, or that
///         losses of JPEG-LS would take there;
///         QVM_ERROR_FAILED_TO_COMPRESS. Throws std::bad_alloc
[[nodiscard]] QUORVEX_MESSAGE CodeStored(const StoredForms& forms, std::span<unsigned char> frame,
                                         std::vector<unsigned char>& coded);

}  // namespace quorvex
