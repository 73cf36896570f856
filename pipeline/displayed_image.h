/// What a `CXDIPP` keeps: the image on show, what governs it, and how it lies in the view.
#pragma once

#include "foundation/types/scratch_memory.h"
#include "pipeline/owned.h"
#include "pipeline/pixel_block.h"
#include "pipeline/recipe/standard_image.h"
#include "pipeline/recipe/view_layout.h"
#include "pipeline/rendered_view.h"
#include "pipeline/value_range.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Types.h"

#include <memory>
#include <optional>

namespace quorvex {

class CXGSPSInfo;

/// A copy is deep, but for the presentation record, which nobody changes.
struct DisplayedImage {
    Owned<CxDcmParser> parser;  ///< of the file or data set that is open; else without a header
    Owned<CXWindowing> windowing;
    std::shared_ptr<const CXGSPSInfo> presentation;  ///< null before the first image

    Rules rules = Rules::kEstablished;      ///< of images that come in
    bool isPreview = false;                 ///< images that come in need be no finer than the view
    std::optional<StandardImage> standard;  ///< there where the image came in by standard rules
    /// Of the frame on show, at the size of the last render; nothing where that was not smaller.
    std::optional<ShrunkImage> shrunk;

    // The frame.
    /// Colour: 3 bytes a pixel. Grey: modality values, 1 or 2 bytes a pixel; by standard rules
    /// stored values, up to 4.
    PixelBlock pixels;
    CSize imageSize;        ///< Columns and Rows
    int bytesPerPixel = 0;  ///< of `pixels`
    unsigned short bitsStored = 0;
    int pixelRepresentation = 0;  ///< 0 unsigned, 1 signed
    ValueRange valueRange;
    ValueScale valueScale;  ///< of the elements; plain where they are the values
    /// Where the elements are scaled: what a window over the full range covers, and the window that
    /// stands. `windowing` counts in elements then.
    ExactSpan fullRange;
    std::optional<ValueWindow> valueWindow;
    int minValue = 0;  ///< over all frames that this object met; 0 always lies between the two
    int maxValue = 0;

    // Layers. One of another size than the image is not drawn.
    PixelBlock overlayImage;    ///< overlays of a volume to burn in; laid out like the result
    PixelBlock headerOverlays;  ///< overlays of an opened header; laid out likewise
    PixelBlock paletteImage;    ///< colours of a supplemental palette, 3 bytes a pixel
    int renderMode = 0;         ///< as in `_IMAGE_INFO`
    int inverse = 0;            ///< complement the display table
    int shutterShown = 0;
    int annotationsShown = 0;
    int overlaysShown = 0;  ///< `headerOverlays`

    // The place in the view.
    CSize viewSize;    ///< in device pixels
    int rotation = 0;  ///< degrees clockwise; may be negative
    int horizontalFlip = 0;
    double zoom = 0.0;         ///< device pixels per image pixel in x
    CPoint panOffset;          ///< device pixels from the centred place to the drawn one
    CRect roi;                 ///< part of the image that is rendered: all of it
    double aspectRatio = 0.0;  ///< pixel height over pixel width, as the presentation states it
    Interpolation enlarging = Interpolation::kLinear;  ///< by standard rules
    double screenPixelSize = 0.0;                      ///< mm; 0 where the host has not said

    ScratchMemory scratch;  ///< of renders

    // The last result, which stays when another image comes in.
    PixelBlock resultImage;
    CSize resultSize;
    int renderedPixelSize = 0;  ///< bytes of one pixel of `resultImage`
    RenderedView renderedView;
    ViewPlacement renderedPlacement;  ///< by standard rules: where the whole image lay,
    CPoint resultCorner;              ///< and where the upper left corner of the result
    int resultPixelSize = 0;  ///< bytes of one pixel of the next result, without a palette layer

    /// Lays the image out as its presentation asks: zoom, pan, region and aspect ratio. There must
    /// be a presentation.
    void PrepareDisplayAreaTransform() noexcept;
    /// Fits the displayed area, or without one the image, and centres it.
    void PrepareScaleToFit() noexcept;
    /// Pans to the displayed area at the zoom that stands.
    void PrepareMagnify() noexcept;
    /// Fits the whole image, centred. Rotation does not count.
    void DoFit() noexcept;
    /// Makes the whole image the region that is rendered.
    void UpdateDisplayArea() noexcept;

    /// The pan in the axes of the image before it is turned and flipped: for hosts' tools that
    /// count in image pixels. Rows run from the top, other than for the job's pan in
    /// `CXImageCreator`, whose image is bottom-up.
    [[nodiscard]] CPoint CalcImagePanOffset() const noexcept;

    /// The aspect ratio to draw with: 1 for what is no positive number.
    [[nodiscard]] double EffectiveAspectRatio() const noexcept;
    /// The rotation as 0, 90, 180 or 270; what is no quarter turn stays between 0 and 359.
    [[nodiscard]] int QuarterTurns() const noexcept;
};

}  // namespace quorvex
