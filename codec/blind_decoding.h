/// Streams about which nothing else is known: what they are comes from themselves.
#pragma once

#include "quorvex/ResultCodes.h"

#include <span>

namespace quorvex {

/// What the caller of a blind decoder receives.
struct BlindPicture {
    unsigned char*& result;  ///< from the general allocator
    unsigned long& resultSize;
    unsigned short& width;
    unsigned short& height;
    unsigned short& samples;
    unsigned short& bits;
    unsigned short& bytesPerPixel;
};

using DecodeBlindly = QUORVEX_MESSAGE (*)(std::span<const unsigned char> source,
                                          const BlindPicture& picture);

/// The work of CxImageProcessor::DecompressBlindJPEGData(), with its answers. Throws
/// std::bad_alloc.
QUORVEX_MESSAGE DecodeBlindJpeg(std::span<const unsigned char> source, const BlindPicture& picture);
/// The same for CxImageProcessor::DecompressBlindJP2KData().
QUORVEX_MESSAGE DecodeBlindJpeg2000(std::span<const unsigned char> source,
                                    const BlindPicture& picture);

}  // namespace quorvex
