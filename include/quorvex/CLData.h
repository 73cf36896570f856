/// A loaded image that a host hands to the pipeline, without a file or a parser.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

namespace quorvex {

/// One image of a volume, as its host keeps it. A plain record that owns nothing: what it points to
/// belongs to the host, is only read, and need not outlive the call that it is handed to.
class CLData {
public:
    /// Rows from the top, each directly behind the last; grey pixels as wide as `bitsAllocated`
    /// says (two bytes: least significant first), colour one byte a sample, red, green, blue
    /// interleaved.
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    unsigned short samplesPerPixel = 1;
    unsigned short bitsAllocated = 0;
    unsigned short bitsStored = 0;
    CString photometricInterpretation;
    unsigned short pixelRepresentation = 0;  ///< 0 unsigned, 1 signed
    double pixelSpacingX = 0.0;              ///< between columns, in mm; 0.0 where unknown
    double pixelSpacingY = 0.0;              ///< between rows, in mm
    double aspectRatioHorizontal = 0.0;
    double aspectRatioVertical = 0.0;
    int windowCenter = 0;
    int windowWidth = 0;  ///< 0 means that there is no window

    /// The bits of the overlays that lie in the pixel data: one bit a pixel of the overlay, row by
    /// row without gaps, the least significant bit of a byte first. May be null.
    unsigned char* overlayPlane = nullptr;
    /// Bytes at `overlayPlane`; bits beyond count as not set.
    unsigned long overlayPlaneSize = 0;
};

/// Gathers the overlays that lie in unused bits of a frame into one plane, as `CLData` takes it.
///
/// Takes every plane of the groups (6000) to (601E) that has the size of the image and whose bits
/// lie in the frame.
///
/// @param object     the frame's header
/// @param frame      `frameSize` bytes as they are stored; pixels past the end have no overlay
/// @param plane      receives a new block of `planeSize` bytes, yours to release with delete[];
///                   null without such an overlay
/// @return QVM_SUCCESS, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA without an object or a frame, without
///         a usable size, or without memory, nothing touched
QUORVEX_API QUORVEX_MESSAGE MakeEmbeddedOverlayPlane(CDcmObject* object, const unsigned char* frame,
                                                     unsigned long frameSize, unsigned char*& plane,
                                                     unsigned long& planeSize);

}  // namespace quorvex
