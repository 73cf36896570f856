/// One stored frame made into one finished 8-bit grey or 24-bit colour image of a requested size.
#pragma once

#include "quorvex/Export.h"
#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

class CXWindowing;
struct WordRamp;

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
/// at the bottom of the picture, and keeps blue ahead of green ahead of red.
struct _IMAGE_INFO {
    /// Stored bytes of one source pixel: 1 or 2 for grey; more than 2 means colour, which is read
    /// as three bytes a pixel: red, green, blue.
    int bytesPerPixel = 1;
    int imageWidth = 0;               ///< source columns
    int imageHeight = 0;              ///< source rows
    unsigned char* pixels = nullptr;  ///< rows from the top, each directly behind the last
    /// Receives outputWidth x outputHeight pixels: three bytes each for colour and for
    /// kRenderSupplementalPalette, else one.
    unsigned char* output = nullptr;
    int outputWidth = 0;   ///< pixels; a multiple of 4
    int outputHeight = 0;  ///< pixels; a multiple of 4 when `rotation` is 90 or 270
    /// What to show, in working pixels; what reaches outside the image is cut off. Nothing left
    /// means a black image.
    CRect roi;
    int rotation = 0;        ///< degrees clockwise on the screen: 0, 90, 180 or 270
    int horizontalFlip = 0;  ///< non-zero mirrors left to right, ahead of the rotation
    int shutterValue = 0;    ///< output of a grey pixel under the mask; the low byte counts
    /// Null, or one byte a source pixel in source row order; non-zero hides a grey pixel.
    unsigned char* shutterMask = nullptr;
    /// Output byte of the stored value `lutOffset` and of those that follow; null takes the table
    /// of `windowing`.
    ///
    /// It must cover every value that occurs inside `roi` and not under the mask: the job is not
    /// told its length. For colour it has 256 entries and `lutOffset` plays no part; a colour job
    /// without one is black. A table fetched from `windowing` is gone when the job has ended, so
    /// null must be set again before the record is used again.
    unsigned char* lut = nullptr;
    /// Stored value that lut[0] belongs to. Below 0 it also says that 2-byte pixels are signed;
    /// 1-byte pixels never are.
    int lutOffset = 0;
    int renderMode = kRenderPlain;
    /// kRenderSupplementalPalette: three bytes a pixel (red, green, blue), source row order; the
    /// grey image shows through where all three are 0, and everywhere when it is null.
    unsigned char* paletteImage = nullptr;
    /// kRenderOverlay: size, row order and pixel width of the working image, or null.
    unsigned char* overlayImage = nullptr;
    CXWindowing* windowing = nullptr;  ///< read only when `lut` is null
    double aspectRatio = 1.0;          ///< height of one pixel over its width; 0 counts as 1
    unsigned short bitsStored = 8;     ///< 8: only the low byte of a 2-byte pixel is its value
    /// Entries of `lut`, or 0. Not needed; a job that knows that the table has an entry for every
    /// word (65,536 from 0, or from -32,768) works out a plain window faster than it looks it up.
    int lutCount = 0;
};

/// Question of `CXImageCreator::GetOutputSize`.
struct _OUTSIZE_INFO {
    CRect roi;                 ///< the part to show, image pixels
    double zoom = 1.0;         ///< display pixels for one image pixel
    double aspectRatio = 1.0;  ///< pixel height over pixel width; 0 counts as 1
    int rotation = 0;          ///< degrees
};

/// Question of `CXImageCreator::GetRenderingROI`.
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
/// destination pixel i samples the source at (i + 0.5) / factor - 0.5, held inside `roi`.
class QUORVEX_API CXImageCreator {
public:
    CXImageCreator();
    CXImageCreator(const CXImageCreator& other) noexcept;
    CXImageCreator& operator=(const CXImageCreator& other) noexcept;
    virtual ~CXImageCreator();

    /// Runs one job.
    ///
    /// The horizontal factor is outputHeight over the height of `roi` times `aspectRatio` (over its
    /// width for a quarter turn), the vertical one that times `aspectRatio`. What goes beyond the
    /// output is cut off; an output that goes beyond the scaled image repeats its last column.
    ///
    /// @return 0, and `output` is complete; or, with `output` untouched,
    ///         1  a size below 1 or not a multiple of 4 where it must be, bytesPerPixel below 1,
    ///            another rotation, no pixels, no output
    ///         3  no table, or no memory
    int GetImageWithInfo(_IMAGE_INFO& info);

    /// Says how large the finished image of `roi` is: roi x zoom, the height times `aspectRatio`,
    /// rounded, then down to a multiple of 4 where a job asks for one. For any rotation but 0 and
    /// 180 the sides of `roi` change places, and the aspect ratio stays with the width of `roi`. A
    /// side may come out as 0. Always 0.
    int GetOutputSize(_OUTSIZE_INFO& info, CSize& size);

    /// Says which part of the image a view shows, in working pixels (rows from the bottom). A view
    /// that shows none of it gives a rectangle without width or height. Always 0.
    int GetRenderingROI(_ROI_INFO& info, CRect& rect);

    /// Puts every pixel of a buffer through the modality table of `windowing`, in place: unsigned
    /// bytes, or signed 16-bit words; the low 8 or 16 bits of an entry are stored. A value outside
    /// the table takes its nearest end.
    ///
    /// @param size  pixels a row and rows, without gaps
    /// @return 0, also when there is no table and the pixels stay as they are; or, with the pixels
    ///         untouched, 2: another bytesPerPixel than 1 and 2, no pixels, no memory
    int ApplyModalityLUT(CXWindowing* windowing, unsigned char* pixels, CSize size,
                         int bytesPerPixel);

private:
    using Bytes = std::unique_ptr<unsigned char[]>;

    int RunStages(_IMAGE_INFO& info);
    int PrepareRender(_IMAGE_INFO& info);
    int FetchLut(_IMAGE_INFO& info);
    void FindRamp(const _IMAGE_INFO& info, int tableCount);
    const unsigned char* Render(const _IMAGE_INFO& info, int row, int soon);
    void ReleaseBuffers() noexcept;

    void RawImg2PValue(const _IMAGE_INFO& info, int row, int soon);
    void RawImg2PValue16(const _IMAGE_INFO& info, int row, int soon);
    void RawImg2PValue16Half(const _IMAGE_INFO& info, int row, int soon);
    void RenderColorImage(const _IMAGE_INFO& info, int row, int soon);
    void RenderSuppPal(const _IMAGE_INFO& info, int row);
    template <class Reader>
    void MapRow(const _IMAGE_INFO& info, int row, int soon);
    void MapRowByRamp(const _IMAGE_INFO& info, int row, int soon);
    unsigned char* WorkRow(const _IMAGE_INFO& info, int row) const noexcept;
    unsigned char* CompositeRow(const _IMAGE_INFO& info, int row) const noexcept;

    int ArrangeRender(const _IMAGE_INFO& info);
    void ApplyOverlay(const _IMAGE_INFO& info, int row);
    void ResizeInto(const _IMAGE_INFO& info, unsigned char* destination, CSize size);
    void HorizontalFlipImage(unsigned char* image, CSize size) const;
    void RotateImage(const unsigned char* image, CSize size, int angle,
                     unsigned char* rotated) const;
    static CPoint CalcImagePanOffset(int rotation, int flip, CPoint pan);

    // The working image is never whole in memory: the resampler asks for the rows that it needs, two
    // at a time at most, and no other row is ever mapped.
    Bytes workImage;       ///< two rows of the working image, even and odd
    Bytes workLut;         ///< made of the table of `windowing`, for every value of a pixel
    Bytes compositeImage;  ///< two rows of grey with the supplemental palette's colours
    int workPixelSize = 1;
    double scale = 1.0;
    int outputPixelSize = 1;
    CRect workRoi;                              ///< the record's `roi`, cut to the image
    const unsigned char* valueTable = nullptr;  ///< `workLut` or the record's `lut`
    int valueTableStart = 0;                    ///< stored value of its first entry
    std::unique_ptr<const WordRamp> ramp;       ///< `valueTable` worked out, where that can be
};

}  // namespace quorvex
