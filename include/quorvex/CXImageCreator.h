/// One stored frame made into one finished 8-bit grey or 24-bit colour image of a requested size.
#pragma once

#include "quorvex/Export.h"
#include "quorvex/Types.h"

namespace quorvex {

class CXWindowing;

/// Values of `_IMAGE_INFO::renderMode`.
inline constexpr int kRenderPlain = 0;
inline constexpr int kRenderPalette = 1;              ///< drawn like kRenderPlain
inline constexpr int kRenderSupplementalPalette = 2;  ///< colours of `paletteImage` over grey
inline constexpr int kRenderOverlay = 3;              ///< `overlayImage` burnt in

/// One job. The caller fills it and owns every block that it names; the job writes back only `lut`
/// and `lutOffset`, and only where `lut` was null.
///
/// The *working image* is the source after the look-up table, at source size, its rows reversed:
/// working row y shows source row imageHeight - 1 - y. The finished image has the same order, row 0
/// at the bottom of the picture, and its colour pixels are blue, green, red.
struct _IMAGE_INFO {
    /// Stored bytes of one source pixel: 1 or 2 for grey; more than 2 means colour, which is read
    /// as three bytes for each pixel: red, green, blue.
    int bytesPerPixel = 1;
    int imageWidth = 0;               ///< source columns
    int imageHeight = 0;              ///< source rows
    unsigned char* pixels = nullptr;  ///< rows from the top, without gaps
    /// Receives outputWidth x outputHeight pixels: three bytes each for colour and for
    /// kRenderSupplementalPalette, otherwise one.
    unsigned char* output = nullptr;
    int outputWidth = 0;   ///< pixels; a multiple of 4
    int outputHeight = 0;  ///< pixels; a multiple of 4 when `rotation` is 90 or 270
    /// What to show, in working pixels; clipped to the image. An empty one gives a black image.
    CRect roi;
    int rotation = 0;        ///< degrees clockwise on the screen: 0, 90, 180 or 270
    int horizontalFlip = 0;  ///< non-zero mirrors left to right, before the rotation
    int shutterValue = 0;    ///< output of a grey pixel under the mask; the low byte counts
    /// Null, or one byte for each source pixel, in source row order; non-zero hides a grey pixel.
    unsigned char* shutterMask = nullptr;
    /// Output byte of the stored value `lutOffset` and of those that follow; null takes the table
    /// of `windowing`.
    ///
    /// It must cover every value that occurs inside `roi` and not under the mask: nothing is
    /// checked. For colour it has 256 entries and `lutOffset` is ignored; a colour job without a
    /// table is black. A table that was taken from `windowing` is released when the job ends: set
    /// `lut` to null before the record is used again.
    unsigned char* lut = nullptr;
    /// Stored value that lut[0] belongs to. Below 0 it also means that 2-byte pixels are signed;
    /// 1-byte pixels never are.
    int lutOffset = 0;
    int renderMode = kRenderPlain;
    /// kRenderSupplementalPalette: three bytes for each pixel (red, green, blue), in source row
    /// order; the grey image shows through where all three are 0, and everywhere when it is null.
    unsigned char* paletteImage = nullptr;
    /// kRenderOverlay: size, row order and pixel width of the working image, or null.
    unsigned char* overlayImage = nullptr;
    CXWindowing* windowing = nullptr;  ///< read only when `lut` is null
    double aspectRatio = 1.0;          ///< height of one pixel over its width; 0 counts as 1
    unsigned short bitsStored = 8;     ///< 8: only the low byte of a 2-byte pixel is its value
    /// Entries of `lut`, or 0 when the caller does not say. It only makes a job faster: a plain
    /// window with an entry for every word (65,536 from 0, or from -32,768) is computed instead of
    /// looked up.
    int lutCount = 0;
};

/// Input of `CXImageCreator::GetOutputSize`.
struct _OUTSIZE_INFO {
    CRect roi;                 ///< the part to show, image pixels
    double zoom = 1.0;         ///< display pixels for one image pixel
    double aspectRatio = 1.0;  ///< pixel height over pixel width; 0 counts as 1
    int rotation = 0;          ///< degrees
};

/// Input of `CXImageCreator::GetRenderingROI`.
struct _ROI_INFO {
    CRect viewRect;          ///< the view, device pixels
    int imageWidth = 0;      ///< image columns
    int imageHeight = 0;     ///< image rows
    int rotation = 0;        ///< degrees
    int horizontalFlip = 0;  ///< non-zero when the view is mirrored
    double zoom = 1.0;       ///< display pixels for one image pixel
    CPoint panOffset;        ///< device pixels
    double aspectRatio = 1.0;
};

/// Runs render jobs: look-up table, overlay, resize, mirror, rotation, in this order.
///
/// Between jobs it owns nothing, so a copy is always an idle object. One object serves one thread
/// at a time; different objects may work at once. Scaling is linear between pixel centres:
/// destination pixel i samples the source at (i + 0.5) / factor - 0.5, clamped to `roi`.
class QUORVEX_API CXImageCreator {
public:
    CXImageCreator();
    CXImageCreator(const CXImageCreator& other) noexcept;
    CXImageCreator& operator=(const CXImageCreator& other) noexcept;
    virtual ~CXImageCreator();

    /// Runs one job.
    ///
    /// The horizontal factor is outputHeight over the height of `roi` times `aspectRatio` (over its
    /// width for a quarter turn), the vertical one that times `aspectRatio`. A scaled image larger
    /// than the output is cut off; a smaller one repeats its last row or column.
    ///
    /// @return 0, and `output` is complete; or, with `output` untouched,
    ///         1    a size below 1, or not a multiple of 4 where it must be; bytesPerPixel below 1;
    ///              another rotation; no pixels; no output
    ///         3    no table, or no memory
    int GetImageWithInfo(_IMAGE_INFO& info);

    /// Gives the size of the finished image of `roi`, in pixels: both sides times `zoom`, the
    /// height also times `aspectRatio`, rounded, then down to a multiple of 4 where a job needs it.
    /// For any rotation but 0 and 180 the sides of `roi` change places, and the aspect ratio stays
    /// with the width of `roi`. A side can be 0.
    ///
    /// @return always 0
    int GetOutputSize(_OUTSIZE_INFO& info, CSize& size);

    /// Gives the part of the image that a view shows, in working pixels (rows from the bottom). A
    /// view that shows none of it gives a rectangle without width or height.
    ///
    /// @return always 0
    int GetRenderingROI(_ROI_INFO& info, CRect& rect);

    /// Puts every pixel of a buffer through the modality table of `windowing`, in place: unsigned
    /// bytes, or signed 16-bit words; the low 8 or 16 bits of an entry are stored. A value outside
    /// the table takes its nearest end.
    ///
    /// @param size  pixels of a row, and rows, without gaps
    /// @return 0, also when there is no table and the pixels stay as they are; or, with the pixels
    ///         untouched, 2: another bytesPerPixel than 1 and 2, no pixels, no memory
    int ApplyModalityLUT(CXWindowing* windowing, unsigned char* pixels, CSize size,
                         int bytesPerPixel);
};

}  // namespace quorvex
