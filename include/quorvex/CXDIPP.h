/// The object that a viewer keeps for one displayed image.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/FileSource.h"
#include "quorvex/PixelTarget.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <memory>

namespace quorvex {

class CLData;
struct DisplayedImage;

/// One displayed image: a frame after the modality stage, the presentation that governs it, its
/// window, and its place in the view (zoom, pan, rotation, flip).
///
/// `Initialize` brings an image in, the `Update...` operations change how it is seen, `Render`
/// makes the visible image and `Draw` puts it on a surface. Updates do not render: window,
/// presentation table, zoom, rotation and flip show at the next `Render`, a pan at the next `Draw`.
///
/// Different objects may work in different threads at once; one object serves one thread at a time.
/// A copy is deep: it goes its own way, and keeps what it shows when the first one ends.
/// After a failure an object is as usable as before.
class QUORVEX_API CXDIPP {
public:
    CXDIPP();
    CXDIPP(const CXDIPP& other);
    CXDIPP& operator=(const CXDIPP& other);
    virtual ~CXDIPP();

    /// Chooses the rules for images that come in from now on; established ones at first. The image
    /// on show keeps those that it came in by.
    ///
    /// By the standard rules the picture is the one that the DICOM standard defines: windows with
    /// their fractions and functions, look-up tables in every layout, palette images in colour,
    /// pixels that are not square in their true shape whatever the turn, exact sizes; shrinking
    /// averages areas. Where the notes of an operation say "by the standard rules", that holds.
    void SetRules(Rules rules) noexcept;

    /// Images that come in from now on are to be seen as they come in, fitted and with the window
    /// or colours that they state, and no larger: by the standard rules, JPEG 2000 frames are then
    /// decoded no finer than the view needs, many times as fast. Such an image counts as one of the
    /// size that was decoded, and has no overlays and no shutter; a state that is laid over it
    /// makes it come in whole. Off at first.
    ///
    /// Images that are shown over the range of their values, by a table or with a palette come in
    /// whole, and so does everything else.
    void SetPreview(bool on) noexcept;

    // --- Bringing an image in ------------------------------------------------------------------

    /// Opens a file and shows one of its frames, fitted to the view.
    ///
    /// Defaults of absent attributes: 1 for Samples per Pixel, 0 for Pixel Representation, Bits
    /// Allocated for Bits Stored. Frames of 1 bit a pixel show 0 black and 1 white. Grey frames
    /// whose values do not fit into 16 bits are scaled to 16 bits, and those with a rescale slope
    /// below 1/8 keep the detail of their stored values; windows and look-up tables count in
    /// modality units all the same. Bits beyond Bits Stored are ignored.
    /// Colour frames with more than 8 bits a sample show the highest 8 stored ones. A frame shorter
    /// than its header says ends in zeros. Palette colour is shown as grey indices.
    ///
    /// The window starts as the image states it, or over the full range of values met so far on
    /// this object (0 always included).
    ///
    /// @param app         the library context, handed to the parser
    /// @param path        full path of the file
    /// @param viewSize    the drawing area in device pixels
    /// @param frameIndex  0 for the first frame
    /// @return QVM_SUCCESS, or what `Initialize` and `GetAFrame` of `CxDcmParser` answer, or
    ///         QVM_ERROR_FAILED_TO_GET_PIXEL_DATA  no memory, or a size that nothing can hold.
    ///         After a failure the former image stays.
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CString path, CSize viewSize, int frameIndex);

    /// The same of bytes that a host gives: from an archive, an object store, memory.
    /// @param source  used as long as the image is shown; see FileSource
    QUORVEX_MESSAGE Initialize(CDcmApp* app, std::shared_ptr<FileSource> source, CSize viewSize,
                               int frameIndex);

    /// The same from a data set, which stays the caller's and must outlive later frame changes and
    /// presentation states.
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CDcmObject* object, CSize viewSize, int frameIndex);

    /// Shows the caller's pixels under the header of a data set.
    ///
    /// No modality stage: the values count as its result.
    ///
    /// @param pixelData  rows from the top; Bits Allocated x Columns x Rows / 8 bytes for grey (two
    ///                   bytes a pixel: least significant first), else one byte a sample, R, G, B
    ///                   interleaved. Copied.
    /// @param maxValue   highest value of grey pixels; colour uses 0 to 255
    /// @param minValue   lowest value of grey pixels
    /// @param reserved   has no effect
    /// @return QVM_SUCCESS, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA without an object, pixels or
    ///         memory
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CDcmObject* object, unsigned char* pixelData,
                               CSize viewSize, int maxValue, int minValue, int reserved);

    /// Shows the caller's pixels without any header: square pixels, no rotation, no flip.
    ///
    /// @param pixelData      as above: imageSize.cx x imageSize.cy x bytesPerPixel bytes, copied
    /// @param bytesPerPixel  1 or 2 for grey, 3 for colour
    /// @return QVM_SUCCESS, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA for null pixels, a size below 1
    ///         or no memory
    QUORVEX_MESSAGE Initialize(unsigned char* pixelData, CSize viewSize, CSize imageSize,
                               int bytesPerPixel, int maxValue, int minValue,
                               int pixelRepresentation);

    /// Shows an image of a loaded volume, with what a data set beside it adds.
    ///
    /// No modality stage, no parser; rotation and flip stay as they were. The overlay and palette
    /// layers, and which of them is drawn, stay until this overload is called again; a layer is not
    /// drawn over an image of another size. Sizes are those of the volume, whatever the object
    /// says.
    ///
    /// imageKind  what it shows
    /// 2          one byte or word a pixel in the colours of the object's palette, as grey where it
    ///            has no whole one; without an object the volume has three bytes a pixel
    /// 3          the object's supplemental palette in colour over grey: like `MakeSPCOverlay`, but
    ///            with 16-bit entries scaled to bytes, words signed where the volume is, and black
    ///            entries shown; without an object the present layer
    /// 5          the object's overlays burnt in, in their colours on a colour image
    /// other      the volume alone
    ///
    /// @param object    may be null
    /// @param data      see `CLData`; copied
    /// @param maxValue  highest value of grey pixels; colour uses 0 to 255, kind 3 at least that
    /// @param minValue  lowest value of grey pixels
    /// @return QVM_SUCCESS, or QVM_ERROR_FAILED_TO_GET_PIXEL_DATA without data, pixels, a usable
    ///         size or memory; the former image then stays
    QUORVEX_MESSAGE Initialize(CDcmObject* object, CLData* data, CSize viewSize, int maxValue,
                               int minValue, int imageKind);

    /// Shows an image of a loaded volume as it is. Layers stay as they were.
    QUORVEX_MESSAGE Initialize(CLData* data, CSize viewSize, int maxValue, int minValue);

    /// Shows another frame of the file or data set that is open.
    QUORVEX_MESSAGE Initialize(CDcmApp* app, CSize viewSize, int frameIndex);

    /// Lays a presentation state, from a file, over the image that is open.
    ///
    /// Its window or tables, rotation and flip replace those of the image; its displayed area takes
    /// effect when the view next gets another size; its modality stage is not shown; its shutter
    /// and annotations are shown where `ShowShutter` and `ShowAnnotations` ask for them. A state
    /// that cannot be read leaves the image without presentation.
    ///
    /// @return QVM_SUCCESS, also without an open image, where nothing happens; QVM_ERROR_NO_IMAGE
    ///         without memory, nothing changed
    QUORVEX_MESSAGE ApllyGSPSObject(CDcmApp* app, CString path);
    /// The same from a data set, which stays the caller's.
    QUORVEX_MESSAGE ApllyGSPSObject(CDcmApp* app, CDcmObject* object);

    // --- Changing how it is seen (all answer QVM_SUCCESS) --------------------------------------

    /// Moves window level and width against the deltas, in steps that depend on the bit depth: 2
    /// modality units with 12 Bits Allocated, 3 with 16, else 1.
    QUORVEX_MESSAGE UpdateVOILUT_Offset(int levelDelta, int widthDelta);
    /// Sets window level and width, in modality units. By the standard rules it replaces a table of
    /// the image or its state too.
    QUORVEX_MESSAGE UpdateVOILUT_ABS(int level, int width);
    /// The same with fractions. By the established rules they are cut off, unless the rescale slope
    /// is below 1/8; by the standard ones the function stays the present one (the image's, linear
    /// where it states none), and a width that is not above 0 changes nothing.
    QUORVEX_MESSAGE UpdateVOILUT_ABS(double level, double width);
    /// The same with a function, which has no effect by the established rules.
    QUORVEX_MESSAGE UpdateVOILUT_ABS(double level, double width, VoiFunction function);
    /// How many look-up tables and windows the image or its state offers, tables first. By the
    /// established rules 0.
    [[nodiscard]] int GetVOIChoiceCount() const noexcept;
    /// What the image or its state says about a choice; empty where it says nothing, and without
    /// memory.
    [[nodiscard]] CString GetVOIExplanation(int choice) const;
    /// A choice that is always there: the window over the values of the image, as one without any
    /// window or table is shown.
    static constexpr int kOverTheValues = -1;
    /// Shows by a choice, from the next render on, in place of any window that was set. The first
    /// one at first; a choice that is not there changes nothing.
    QUORVEX_MESSAGE SelectVOI(int choice);
    /// Turns black to white and back at every call.
    QUORVEX_MESSAGE UpdatePresentationLUT_Toggle();
    /// Adds hundredths to the zoom factor and keeps the result between 0.1 and 10.
    QUORVEX_MESSAGE UpdateZoom_Offset(int percent);
    /// Sets the zoom factor: display pixels per image pixel in x. There is no limit here; a zoom
    /// that leads to no usable image is answered by `Render`.
    QUORVEX_MESSAGE UpdateZoom_ABS(double zoomFactor);
    /// Moves the image by device pixels, x to the right, y down.
    QUORVEX_MESSAGE UpdatePan_Offset(CPoint delta);
    /// Sets the distance from the centred place in device pixels.
    QUORVEX_MESSAGE UpdatePan_ABS(CPoint pan);
    /// Turns the image further, in degrees clockwise; multiples of 90.
    QUORVEX_MESSAGE UpdateRotate_Offset(int degrees);
    /// Sets the rotation in degrees clockwise; multiples of 90.
    QUORVEX_MESSAGE UpdateRotate_ABS(int degrees);
    /// Mirrors left to right, and back.
    QUORVEX_MESSAGE UpdateHFlip_Toggle();
    /// A new size of the drawing area: the image is laid out afresh, zoom and pan start over. The
    /// present size changes nothing.
    QUORVEX_MESSAGE UpdateViewSize(CSize newViewSize);
    /// How images are enlarged, by the standard rules; linear at first.
    void SetInterpolation(Interpolation enlarging) noexcept;
    /// The size of a pixel of the screen in mm, for displayed areas of mode TRUE SIZE by the
    /// standard rules, from the next layout on. 0, as at first, fits such areas into the view.
    void SetScreenPixelSize(double millimetres) noexcept;
    /// Complements the image from the next render on, for the rest of the object's life: black
    /// shows as white. A second call changes nothing.
    QUORVEX_MESSAGE Inverse();

    /// Shows the shutter of the image or its state from the next render on; 0 stops that. Off at
    /// first, and kept when another image comes in.
    ///
    /// Hidden pixels take the high 8 bits of the shutter's presentation value, in colour images for
    /// red, green and blue alike, whatever the window and `Inverse` make of the others; what
    /// scaling mixes is mixed with it. Overlays lie over the shutter. A mask of another size than
    /// the image's hides nothing.
    QUORVEX_MESSAGE ShowShutter(int on);
    /// Draws the annotations of the image or its state over it, from the next `Draw` on; 0 stops
    /// that. Off at first, and kept when another image comes in. The rendered result has none.
    ///
    /// Image coordinates ("PIXEL", (0, 0) the upper left corner of the upper left pixel) turn,
    /// flip, zoom and pan with the result that `Draw` shows. Display coordinates ("DISPLAY") stay
    /// with the displayed area as it lies when it has just been laid out in the view: the user's
    /// zoom and pan do not move them. Text is upright and stands in its box, as large as the box's
    /// height allows within limits. Lines and text are white with a dark rim; areas are tinted.
    ///
    /// A build without its drawing library, Cairo, draws none; so does a surface with a side above
    /// 32,767 pixels.
    QUORVEX_MESSAGE ShowAnnotations(int on);
    /// Whether the overlays of an opened file or data set are burnt into the image, those in unused
    /// bits of its pixels included: non-zero shows them from the next render on. Off at first.
    QUORVEX_MESSAGE ShowOverlays(int on) noexcept;

    /// How much of the frame on show, from an opened file or data set, is what the file says.
    [[nodiscard]] FrameQuality GetFrameQuality() const noexcept;
    [[nodiscard]] double GetZoomFactor() const noexcept;
    [[nodiscard]] CPoint GetPanOffset() const noexcept;
    /// The window that stands, in modality units; rounded where it has fractions.
    void GetWindowingFactor(int& width, int& level) const;
    void GetWindowingFactor(double& width, double& level) const;
    /// The size at which one column of the image is one pixel of the screen: rows times the aspect
    /// ratio, both sides exchanged where the image is turned by a quarter. 0, 0 without an image.
    [[nodiscard]] CSize GetDisplayedSize() const noexcept;
    /// Pixel spacing in mm as the presentation states it; 0 where it does not.
    void GetPixelSpace(double& x, double& y) const noexcept;

    // --- Making it visible ---------------------------------------------------------------------

    /// Makes the visible image: the whole frame at the present zoom, however small the view is. By
    /// the standard rules only what lies in the view, at its exact size.
    ///
    /// By the established rules the width is rounded down to a multiple of 4, with a quarter turn
    /// the height too. A zoom so small that nothing is left gives an empty result, which draws
    /// nothing.
    ///
    /// @return QVM_SUCCESS, or, with the last result kept,
    ///         QVM_ERROR_NO_IMAGE             nothing is open, or no memory
    ///         QVM_ERROR_INVALID_OUTPUT_SIZE  a zoom that is negative, infinite or NaN, a result
    ///                                        larger than 4 GiB, or a rotation that is no multiple
    ///                                        of 90
    QUORVEX_MESSAGE Render();

    /// Renders into the host's memory: the pixels that `Render` makes, of which nothing is kept
    /// here. The last result, which `Draw` and `GetResultImage` use, stays as it is.
    ///
    /// By the standard rules no memory is taken when a window, the pan or the frame has changed
    /// since the last render at the same zoom; an image that is shown by a window of its own values
    /// and layers that are newly shown apart.
    ///
    /// @param target  the host's, and no thread may use it meanwhile; the picture's rows and
    ///                columns come to its upper left corner, all else stays as it is
    /// @return as `Render`, or, with the target as it was,
    ///         QVM_ERROR_INVALID_OUTPUT_SIZE   no pixels, a size below that of `GetPictureInfo`, or
    ///                                         a stride below the bytes of a row
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT  an unknown format, or grey for a colour picture
    QUORVEX_MESSAGE RenderInto(const PixelTarget& target);

    /// What `Render` and `RenderInto` would make now.
    /// @return as `Render`, with `picture` unchanged after a failure
    QUORVEX_MESSAGE GetPictureInfo(PictureInfo& picture) const;

    /// Puts the last result on the surface, centred in the view and moved by the pan; what lies
    /// outside the surface is cut off.
    /// @return QVM_SUCCESS, or QVM_ERROR_NO_IMAGE without a result
    QUORVEX_MESSAGE Draw(CDC* deviceContext);

    /// Size of the last result, and its bytes a pixel: 1 grey, 3 blue, green, red.
    /// @return QVM_SUCCESS, or QVM_ERROR_NO_IMAGE without a result, arguments unchanged
    QUORVEX_MESSAGE GetResultImageInfo(CSize& size, int& pixelSize) const;

    /// Copies the last result, rows from the bottom, into the caller's block.
    ///
    /// @param destination  where to copy to; itself not changed
    /// @param length       size.cx x size.cy x pixelSize of `GetResultImageInfo`; more copies
    ///                     no more than there is
    /// @return QVM_SUCCESS always
    QUORVEX_MESSAGE GetResultImage(unsigned char*& destination, int length) const;

    // --- Layers and colour images of a data set ------------------------------------------------

    /// Draws the first overlay plane that has Overlay Data of one bit a pixel.
    ///
    /// Overlay groups run from (6000) to (601E); one that lacks rows, columns, origin or bits
    /// allocated is skipped. What hangs over an edge of the image is cut off. Overlay Data that
    /// ends early leaves the rest clear.
    ///
    /// @param object   the image's header
    /// @param pixels   has no effect
    /// @param overlay  Rows x Columns pixels, rows from the top: of one byte for images of up to 2
    ///                 bytes a pixel, else as wide as a pixel. Cleared by the caller. A set bit
    ///                 becomes 255, in a wide pixel in its first three bytes.
    /// @param length   receives Rows x Columns
    /// @param outWidth has no effect
    /// @param reserved has no effect
    /// @return QVM_SUCCESS; QVM_ERROR_NO_IMAGE without memory: part of `overlay` may be drawn then
    QUORVEX_MESSAGE MakeOverlayImage(CDcmObject* object, unsigned char* pixels,
                                     unsigned char* overlay, unsigned long& length,
                                     unsigned short& outWidth, int reserved) const;

    /// Draws all overlay planes, those that lie in the pixel data from `data` included.
    ///
    /// In a colour image a plane with Overlay Data has the colour that its group states (red,
    /// green, blue in the pixel's first three bytes), else white; later planes win. A plane of more
    /// pixels than the image shows only what it shares, bit by bit, with the planes merged before
    /// it. Where a plane has Bits Allocated 1 and Bit Position 0 its bits are in Overlay Data, else
    /// in the pixel data.
    ///
    /// @param data  may be null: then planes in the pixel data have no bits
    /// @param bitsAllocated,samplesPerPixel,columns,rows,pixelRepresentation  of the image; with
    ///              bits and samples both 0 all five come from the object
    /// The others, and the result, as above.
    QUORVEX_MESSAGE MakeOverlayImage2(CDcmObject* object, CLData* data, unsigned char* overlay,
                                      unsigned long& length, unsigned short& outWidth, int reserved,
                                      unsigned short bitsAllocated, unsigned short samplesPerPixel,
                                      unsigned short columns, unsigned short rows,
                                      unsigned short pixelRepresentation) const;

    /// Colours the pixels that the supplemental palette has entries for in all three of its tables;
    /// the others stay black.
    ///
    /// @param object  the frame's header, with the palette
    /// @param pixels  Rows x Columns pixels of 1 byte or, signed, 2 bytes; rows from the top
    /// @param rgb     receives a new block of `length` bytes, red, green, blue: the low 8 bits of
    ///                entry x 255 / 256. Yours to release with delete[].
    /// @param length  receives Rows x Columns x 3
    /// @return QVM_SUCCESS (for an image without a size too, with nothing in the block), or
    ///         QVM_ERROR_NO_IMAGE with `rgb` and `length` untouched: a colour has no usable table,
    ///         or there is no object, no pixels, no memory
    QUORVEX_MESSAGE MakeSPCOverlay(CDcmObject* object, unsigned char* pixels, unsigned char*& rgb,
                                   unsigned long& length) const;

    /// The same for a reformatted slice of the object, width x height pixels.
    ///
    /// Pixels of 2 bytes are unsigned, and entry x 255 / 65536 is stored; otherwise the low byte of
    /// the entry.
    QUORVEX_MESSAGE MakeSPCOverlayForMPR(CDcmObject* object, unsigned char* pixels,
                                         unsigned short width, unsigned short height,
                                         unsigned char*& rgb, unsigned long& length) const;

    /// Colours every pixel by the palette; values outside the tables take their nearest entry.
    ///
    /// Entries scale to bytes as in `CxDcmParser::GetRGBBufferFromPaletteImage`.
    ///
    /// @param rgb            receives a new block of paddedColumns x Rows x 3 bytes; rows are
    ///                       packed at Columns x 3 bytes, the tail stays 0
    /// @param length         receives Rows x Columns x 3
    /// @param paddedColumns  receives Columns rounded up to a multiple of 4; untouched on failure
    QUORVEX_MESSAGE MakePaletteColorImage(CDcmObject* object, unsigned char* pixels,
                                          unsigned char*& rgb, unsigned long& length,
                                          unsigned short& paddedColumns) const;

private:
    std::unique_ptr<DisplayedImage> image_;
};

}  // namespace quorvex
