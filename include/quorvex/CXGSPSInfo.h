/// The presentation of one image: how stored values are mapped, what is shuttered, how the image is
/// rotated, which area is shown and which annotations lie on it.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex {

/// One pair of Graphic Data: column, then row.
struct GSPSPoint {
    double x = 0.0;
    double y = 0.0;
};

/// A layer of annotations and overlays: how it is to be drawn.
struct GSPSGraphicLayer {
    CString name;
    std::int32_t order = 0;           ///< the lowest one is drawn first
    std::uint16_t greyValue = 65535;  ///< 0 black to 65535 white
    std::int32_t hasColour = 0;
    std::uint16_t cieLab[3] = {};  ///< with `hasColour`: L*, a*, b* as DICOM encodes them
    CString description;
};

/// One annotation text. It owns its coordinate pairs (column, row), which come from new double[2].
struct QUORVEX_API GSPSTextObject {
    GSPSTextObject() = default;
    GSPSTextObject(const GSPSTextObject&) = delete;
    GSPSTextObject& operator=(const GSPSTextObject&) = delete;
    ~GSPSTextObject();

    std::int32_t hasAnchor = 0;
    std::int32_t hasBoundingBox = 0;
    std::int32_t boundingBoxUnits = 0;  ///< 0 "PIXEL", 1 any other word, written as "DISPLAY"
    std::int32_t anchorUnits = 0;       ///< likewise
    CString textValue;
    double* boundingBoxTopLeft = nullptr;      ///< null without a box
    double* boundingBoxBottomRight = nullptr;  ///< null without a box
    std::int32_t horizontalJustification = 0;  ///< 0 "LEFT", 1 "RIGHT", 2 "CENTER"
    double* anchorPoint = nullptr;             ///< null without an anchor
    std::int32_t anchorVisible = 0;
    CString graphicLayer;  ///< name of the layer that it lies in, as read; empty without one
    /// As read: one item with what no field holds (text styles, groups, tracking); else none.
    std::vector<CDcmItem> otherAttributes;
};

/// One annotation shape. It owns its points.
struct QUORVEX_API GSPSGraphicObject {
    GSPSGraphicObject() = default;
    GSPSGraphicObject(const GSPSGraphicObject&) = delete;
    GSPSGraphicObject& operator=(const GSPSGraphicObject&) = delete;
    ~GSPSGraphicObject();

    std::int32_t annotationUnits = 0;  ///< 0 "PIXEL", 1 any other word, written as "DISPLAY"
    std::int32_t pointCount = 0;       ///< as the object states it; may differ from `points`
    CPtrArray points;                  ///< of GSPSPoint, each from new, in order
    /// 1 "POINT", 2 "POLYLINE", 3 "INTERPOLATED", 4 "CIRCLE", 5 "ELLIPSE"
    std::int32_t graphicType = 0;
    std::int32_t filled = 0;
    CString graphicLayer;  ///< name of the layer that it lies in, as read; empty without one
    /// As read: one item with what no field holds (line and fill styles, groups); else none.
    std::vector<CDcmItem> otherAttributes;
};

/// A compound graphic as it is stored (PS3.3 C.10.5). It is kept for writing, not drawn.
struct GSPSCompoundGraphic {
    CString graphicLayer;
    CDcmItem item;
};

/// First and last frame, counted from 1, that a mask applies to.
struct GSPSFrameRange {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

/// Reserved for a host's own use: no operation fills or reads it.
struct ReservedRecord {
    std::uint32_t words[6] = {};
    CString text;
};

/// One presentation of one image: a plain record with public fields.
///
/// Texts start empty, all else at 0 or null. `CXGSPSObject` fills a fresh record from an image or
/// from a presentation state.
///
/// Ownership:
///     - `textObjects` and `graphicObjects` own their elements (each from new), which go with the
///       record;
///     - `modalityLUTData`, `voiLUTData`, `presentationLUTData` and `shutterMask` belong to the
///       holder of the record, who releases them with delete[] before the record ends; reading into
///       a record again does not release what lies there;
///     - `maskFrameRanges` and `maskFrameNumbers` belong to whoever had them read (delete[]).
/// A record cannot be copied.
///
/// A LUT is present exactly when its data pointer is not null. It has at least as many words as
/// its count, 65536 for a count of 0: all who use a LUT go by that number. Words are as the object
/// has them: an 8-bit table that packs two entries into a word has half as many, with the last of
/// them repeated behind; `CXWindowing` tells what becomes of them. A record that was read
/// keeps this promise whatever the object holds; a host that fills one has to.
class QUORVEX_API CXGSPSInfo {
public:
    CXGSPSInfo();
    CXGSPSInfo(const CXGSPSInfo&) = delete;
    CXGSPSInfo& operator=(const CXGSPSInfo&) = delete;
    ~CXGSPSInfo();

    // Settings of a new presentation state object: the caller's.
    CString seriesNumber;
    CString instanceNumber;
    std::int32_t objectKind = 0;  ///< 1 to 7 choose SOP class and modality of the new object
    CString patientName;
    CString seriesDescription;
    CString institutionName;
    CString contentLabel;
    CString contentDescription;
    CString contentCreatorName;
    CString referencedSeriesUID;
    std::vector<ReservedRecord> reservedRecords;

    // The image.
    std::int32_t pixelBitDepth = 0;     ///< bits of a stored value
    std::int32_t pixelValueOffset = 0;  ///< between stored and table values; reading sets it to 0
    std::int32_t imageColumns = 0;     ///< set before reading, for shutters of a state without Rows
    std::int32_t imageRows = 0;        ///< likewise
    CString referencedSOPClassUID;     ///< of the image that a new object refers to: the caller's
    CString referencedSOPInstanceUID;  ///< likewise
    std::int32_t referencedFrameNumber = 0;  ///< likewise; -1 means that none is written

    // Modality stage.
    double rescaleIntercept = 0.0;
    double rescaleSlope = 0.0;             ///< 0.0 means that there is no rescale
    std::int32_t pixelRepresentation = 0;  ///< 0 unsigned, else signed
    std::int32_t modalityLUTCount = 0;     ///< entries; 0 means 65536
    std::uint16_t modalityLUTFirst = 0;    ///< first mapped value; signed where pixels are
    std::uint16_t* modalityLUTData = nullptr;

    // Mask subtraction.
    CString reservedText;
    std::int32_t maskFrameRangeCount = 0;  ///< pairs in `maskFrameRanges`
    GSPSFrameRange* maskFrameRanges = nullptr;
    std::int32_t maskFrameCount = 0;  ///< values in `maskFrameNumbers`
    std::uint16_t* maskFrameNumbers = nullptr;
    std::uint16_t contrastFrameAveraging = 0;
    float maskSubPixelShiftRow = 0.0F;
    float maskSubPixelShiftColumn = 0.0F;
    std::int16_t tidOffset = 0;
    CString recommendedViewingMode;

    // VOI stage. A LUT wins over the window.
    std::uint16_t* voiLUTData = nullptr;
    std::uint16_t voiLUTFirst = 0;
    std::int32_t voiLUTCount = 0;  ///< entries; 0 means 65536
    std::int32_t voiLUTBits = 0;   ///< bits per entry
    std::int32_t windowCenter = 0;
    std::int32_t windowWidth = 0;  ///< 0 means that the record has no window

    // Presentation stage.
    std::uint16_t* presentationLUTData = nullptr;
    std::uint16_t presentationLUTFirst = 0;
    std::int32_t presentationLUTCount = 0;  ///< entries; 0 means 65536
    std::int32_t presentationLUTBits = 0;   ///< bits per entry
    std::int32_t presentationShape = 0;     ///< 0 identity, 1 inverse, 2 neither

    // Shutter. Coordinates as DICOM counts them, from 1.
    /// For writing only: -1 none, 0 rectangle, 1 circle, 2 polygon. By the standard rules also 3,
    /// the bitmap `shutterMask`, and 0 stands for the `shutterShapes` where there are any.
    std::int32_t shutterType = 0;
    std::int32_t reservedWord = 0;
    std::int32_t shutterLeft = 0;
    std::int32_t shutterUpper = 0;
    std::int32_t shutterRight = 0;
    std::int32_t shutterLower = 0;
    std::int32_t shutterCenterColumn = 0;
    std::int32_t shutterCenterRow = 0;
    std::int32_t shutterRadius = 0;
    std::uint16_t shutterPresentationValue = 0;
    std::vector<CPoint> shutterVertices;  ///< x is the column, y the row
    /// One byte for each pixel of the image, row by row; not 0 means shuttered. Null: no shutter.
    std::uint8_t* shutterMask = nullptr;

    // Spatial transform and display.
    std::int32_t imageRotation = 0;  ///< degrees, clockwise
    std::int32_t imageHorizontalFlip = 0;
    std::int32_t displayedAreaLeft = 0;
    std::int32_t displayedAreaTop = 0;
    std::int32_t displayedAreaRight = 0;  ///< with `displayedAreaBottom` also 0: the whole image
    std::int32_t displayedAreaBottom = 0;
    std::int32_t presentationSizeMode = 0;  ///< 0 "SCALE TO FIT", 1 "TRUE SIZE", 2 "MAGNIFY"
    double pixelSpacingX = 0.0;             ///< between columns, in mm; 0.0 where unknown
    double pixelSpacingY = 0.0;             ///< between rows, in mm
    double pixelAspectHorizontal = 0.0;     ///< the second value of the aspect ratio
    double pixelAspectVertical = 0.0;       ///< the first value of the aspect ratio
    double presentationMagnification = 0.0;
    CPtrArray textObjects;     ///< of GSPSTextObject
    CPtrArray graphicObjects;  ///< of GSPSGraphicObject
    /// As read with the annotations of a state, in the order in which they are drawn.
    std::vector<GSPSGraphicLayer> graphicLayers;

    // What a state has besides, as read, so that it can be written again by the standard rules.
    double exactWindowCenter = 0.0;  ///< the window with its fractions; counts for writing where
    double exactWindowWidth = 0.0;   ///< `windowCenter` and `windowWidth` are still its whole parts
    CString windowFunction;          ///< VOI LUT Function; empty where none is named
    CString windowExplanation;
    /// Shapes that are named: 1 rectangle, 2 circle, 4 polygon, 8 bitmap, or several together.
    std::int32_t shutterShapes = 0;
    std::vector<GSPSCompoundGraphic> compoundGraphics;
    std::vector<CDcmItem> graphicGroups;  ///< of the Graphic Group Sequence
    /// The state that was read, null where that was an image. It shares its content with the object
    /// that was read. What no field holds is written from it again: overlays and the layers that
    /// they are activated in, mask subtraction, the modality transform, label, description and
    /// creator where the record has none, tables as they are stored.
    std::unique_ptr<CDcmObject> state;
    /// 1 for a multi-frame image whose frames differ in rescale or Modality LUT, as read by the
    /// standard rules: no state can hold that.
    std::int32_t modalityVaries = 0;
};

}  // namespace quorvex
