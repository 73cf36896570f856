/// Makes new DICOM objects: from frames of a host's own, or from an object in another compression.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/TransferSyntaxes.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>

namespace quorvex {

class CXGSPSInfo;
class ObjectMaker;

/// Learns how many frames of a conversion are done, and how many there are. Anything but 1 ends the
/// conversion.
using FrameProgressCallback = MC_STATUS (*)(int done, int all, void* user);

/// What a host wants changed against the source. Empty or 0 keeps what the source gave.
struct _USER_SETTING_INFO {  // NOLINT(bugprone-reserved-identifier): given name
    CString modality;        ///< "PR" and "SR" choose the SOP Class too
    /// With "SR": 1 Basic Text, 2 Enhanced, 3 Comprehensive, 4 Mammography CAD,
    /// 5 Key Object Selection, 6 Chest CAD.
    std::int32_t documentKind = 0;
    CString seriesNumber;
    CString instanceNumber;
    CString patientName;
    CString seriesDescription;
    CString institutionName;
    CString seriesInstanceUID;
    CString fileName;                  ///< names the object; no file of this name is written
    std::int32_t compressionType = 0;  ///< a QUORVEX_XFERSYNTAX; 0 for a new object means 1
};

/// A host's description of its frames, for frames that differ from those of the source.
struct _FRAME_INFO {  // NOLINT(bugprone-reserved-identifier): given name
    std::uint16_t samplesPerPixel = 0;
    CString photometricInterpretation;  ///< of one sample; several are always "RGB"
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    CString pixelSpacing[2];  ///< between rows, then between columns, in mm
    std::uint16_t bitsAllocated = 0;
    std::uint16_t bitsStored = 0;
    std::uint16_t pixelRepresentation = 0;
    CString windowCenter;
    CString windowWidth;
};

/// What a Key Object Selection document says of the objects that it points at.
struct _KEY_OBJECT_INFO {          // NOLINT(bugprone-reserved-identifier): given pattern
    CString titleCode = "113000";  ///< of PS3.16 CID 7010
    CString titleScheme = "DCM";
    CString titleMeaning = "Of Interest";
    CString description;  ///< free text; empty for none
};

/// What the pixel attributes of an object are to be: the maker's own description of the frames that
/// it is given. 65535 and an empty text mean unset: such a value is not written, and where it is
/// needed it is read from the object.
struct _DCM_PIXEL_INFO {              // NOLINT(bugprone-reserved-identifier): given name
    std::int32_t transferSyntax = 0;  ///< of the frames that are given: a TRANSFER_SYNTAX
    std::uint16_t samplesPerPixel = 65535;
    CString photometricInterpretation;
    std::uint16_t planarConfiguration = 65535;
    std::uint16_t rows = 65535;
    std::uint16_t columns = 65535;
    CString pixelSpacing[2];
    std::uint16_t bitsAllocated = 65535;
    std::uint16_t bitsStored = 65535;
    std::uint16_t highBit = 65535;
    std::uint16_t pixelRepresentation = 65535;
    CString windowCenter;
    CString windowWidth;
    CString rescaleIntercept;
    CString rescaleSlope;
    std::int32_t compressionType = 0;  ///< of the new object: a QUORVEX_XFERSYNTAX
    std::uint16_t quality = 20;        ///< as CxImageProcessor::CompressFrameData() reads it
};

/// One frame on its way into an object. It owns both blocks, which come from new unsigned char[].
/// Lengths are in bytes.
struct QUORVEX_API _DCM_FRAME_BUFFER {  // NOLINT(bugprone-reserved-identifier): given name
    _DCM_FRAME_BUFFER() = default;
    _DCM_FRAME_BUFFER(const _DCM_FRAME_BUFFER&) = delete;
    _DCM_FRAME_BUFFER& operator=(const _DCM_FRAME_BUFFER&) = delete;
    ~_DCM_FRAME_BUFFER();

    unsigned char* rawData = nullptr;  ///< as it was given; null once it is processed
    unsigned long rawLength = 0;
    unsigned char* processedData = nullptr;  ///< plain, its palette expanded
    unsigned long processedLength = 0;
};

/// All that Pixel Data is made from. It owns neither the description nor the frames.
struct _DCM_MAKER_PARAM {  // NOLINT(bugprone-reserved-identifier): given name
    _DCM_PIXEL_INFO* format = nullptr;
    CPtrArray frames;  ///< of _DCM_FRAME_BUFFER, in frame order
};

/// Makes new DICOM objects from a source object, and converts objects.
///
/// A maker serves one thread at a time, different makers any number of threads. Nothing is half
/// done: an object gets its new Pixel Data, with all that describes it, when every frame is coded,
/// and stays as it was when anything fails before that.
///
/// The forms that `compressionType` names:
///     1, 2  Implicit VR Little Endian       6  JPEG Extended, always 12 bits stored
///     3     Explicit VR Little Endian       7  JPEG Lossless, first-order prediction
///     4     RLE: read, never written        8  JPEG 2000
///     5     JPEG Baseline                   9  JPEG 2000 Lossless Only
///
/// What becomes of attributes and pixels:
///     - Lossy Image Compression becomes "01" for 5, 6 and 8 and "00" for 7 and 9, whatever it was;
///     - palette colour is written as 8-bit "RGB", by the tables of the source; palette attributes
///       of a converted object stay;
///     - colour of JPEG Baseline is coded as R, G, B, as its Photometric Interpretation says, not
///       as YCbCr;
///     - a host's pixel of 32 bits is written, uncompressed only, with Samples per Pixel 3 and its
///       bytes as they are; a converted sample of 32 bits stays one sample.
///
/// "Quorvex.INI" in the directory of the host's executable, read anew for every object, has the
/// prefix of new UIDs and the manufacturer: pairs of lines, a tag and its value.
///     [QUORVEX_UID_PREFIX]    1.2.999.700040 without the file
///     [QUORVEX_MANUFACTURER]  SORVANEX
///     [QUORVEX_MODEL_NAME]    SORVANEX PACS
class QUORVEX_API CxDcmMaker {
public:
    /// Throws std::bad_alloc without memory, as no other operation does.
    CxDcmMaker();
    CxDcmMaker(const CxDcmMaker&) = delete;
    CxDcmMaker& operator=(const CxDcmMaker&) = delete;
    virtual ~CxDcmMaker();

    /// Chooses the rules for what is made or converted from now on; established ones at first.
    ///
    /// By the standard rules a conversion changes how pixels are stored and nothing else:
    ///     - stored values, palettes, signs, embedded overlays and bits above Bits Stored stay;
    ///       Photometric Interpretation and Planar Configuration change where the coding demands
    ///       it; windows, tables and all other attributes stay as they are;
    ///     - forms 4 (RLE) and 10 (deflated) are written too; an object in native form takes the
    ///       transfer syntax of another native form;
    ///     - "01" of Lossy Image Compression is never lowered, and an object that was coded with
    ///       losses is marked so; a lossy result has ratio and method behind earlier ones,
    ///       derivation, Image Type DERIVED, its source, and a SOP Instance UID of its own, below
    ///       the prefix of "Quorvex.INI" or below 2.25;
    ///     - what a coding cannot hold is refused: GetOutcome() says by which attribute. So are
    ///       frames that are not whole.
    ///
    /// A new object:
    ///     - its UIDs lie below the prefix of "Quorvex.INI", or below 2.25 without one; a prefix
    ///       that is no UID, or too long, is refused. Times have fractions of a second;
    ///     - what is copied keeps its bytes, with their character set, and all of its values.
    ///       Attributes that have to be there are there, if only empty (type 2);
    ///     - as many frames as the source has, and of its form, make an image of its class: Image
    ///       Type DERIVED with the other values behind it, Source Image Sequence, all that does not
    ///       speak of other pixels. All other frames make a secondary capture, as
    ///       MakeSecondaryCapture() does;
    ///     - three samples are "RGB", or what their coding makes of them; four bytes a pixel are B,
    ///       G, R and one that is dropped; two samples are refused. Palette indices stay;
    ///     - all forms are written. The quality where none is set: JPEG 97, JPEG 2000 5, JPEG
    ///       Extended 1;
    ///     - "PR", "SR" and "KO" are no images: frames for them are refused with
    ///       QVM_ERROR_FAILED_TO_SET_PIXEL_DATA. A Key Object Selection has the modality "KO" (or
    ///       "SR" with kind 5); without frames it is made of its source, as MakeKeyObject() does.
    void SetRules(Rules rules) noexcept;

    /// Tells `callback`, in the converting thread, of each frame that a conversion has done; null
    /// tells nobody, as at first. Where it answers other than 1 the conversion ends with the
    /// outcome QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, and the object stays as it was.
    void SetProgress(FrameProgressCallback callback, void* user) noexcept;

    // Identity. Each text is empty without memory.

    /// Local time as HHMMSS.mmmmmm, the milliseconds unscaled in the last three digits.
    [[nodiscard]] static CString GetTime();
    /// Local date as YYYYMMDD.
    [[nodiscard]] static CString GetDate();
    /// prefix.machine.YYMMDD.HHMMSS.RRRRRR, the last part random. Leading zeros stay.
    [[nodiscard]] static CString GetSeriesUID(CString prefix);
    /// The same with the milliseconds between time and random part.
    [[nodiscard]] static CString GetSOPInstanceUID(CString prefix);

    // Parts of an object.

    /// Fills `target` with everything but pixel attributes: patient and study of `source`, new
    /// series and instance UIDs, new dates, the manufacturer.
    /// @param target  already opened
    /// @return 1; or 0 without memory, and by the standard rules for a prefix of UIDs that is none
    ///         or too long; then `target` is as it was
    int MakeDcmSkeleton(CDcmObject* source, CDcmObject* target);

    /// Puts the choices of a presentation record over what the source gave:
    ///     - modality and SOP Class, for `objectKind` 1 to 7. By the standard rules the modality of
    ///       6 is "KO", and such objects have an Instance Number: 1 where the record has none;
    ///     - series and instance number, also where they are empty;
    ///     - patient name, series description and institution, only where they are not empty.
    /// @return 1; or 0 without memory, and then `target` is as it was
    int UpdateUserSettingInfo(CXGSPSInfo* info, CDcmObject* target);

    // A new object, frame by frame: DcmMakerInit, AddFrame as often as needed, MakeDcmObject.

    /// Starts a new object. What an earlier start left unfinished is released.
    ///
    /// @param source     has everything that the other two do not say
    /// @param settings   may be null
    /// @param frameInfo  null: the frames are like those of `source`. May be released on return
    /// @return QVM_SUCCESS, or QVM_ERROR_NO_SOURCE_OBJECT (the maker has not changed),
    ///         QVM_ERROR_INVALID_MAKER_PARAM for no memory
    QUORVEX_MESSAGE DcmMakerInit(CDcmObject* source, _USER_SETTING_INFO* settings,
                                 _FRAME_INFO* frameInfo);

    /// Adds a frame: rows x columns x samples x bits allocated / 8 bytes, rows from the top,
    /// without padding; colour as R, G, B.
    ///
    /// @param pixels  from new unsigned char[]; the maker's from here on, neither copied nor looked
    ///                at before MakeDcmObject(); yours still where the answer is a failure
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_NO_PIXEL_INFO        before DcmMakerInit() or after MakeDcmObject()
    ///         QVM_ERROR_INVALID_MAKER_PARAM  no memory
    QUORVEX_MESSAGE AddFrame(unsigned char* pixels);

    /// Finishes the object. Each frame is released as soon as it is coded.
    ///
    /// @param result  receives the object, yours, release it with delete; untouched on failure
    /// @return QVM_SUCCESS; or, with nothing lost, so that frames may still be added or the cycle
    ///         begun again,
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT          no frames
    ///         QVM_ERROR_INVALID_TRANSFER_SYNTAX       `compressionType` 4 or unknown
    ///         QVM_ERROR_INVALID_BITS_ALLOCATED        neither given nor in the object;
    ///         QVM_ERROR_INVALID_SAMPLES_PER_PIXEL     the same for all of these
    ///         QVM_ERROR_INVALID_BITS_STORED
    ///         QVM_ERROR_INVALID_ROWS
    ///         QVM_ERROR_INVALID_COLUMNS
    ///         QVM_ERROR_INVALID_PIXEL_REPRESENTATION
    ///         QVM_ERROR_INVALID_PLANAR_CONFIGURATION
    ///         QVM_ERROR_INVALID_PHOTOMETRIC           or palette colour without its tables
    ///         or, with the frames up to the failing one gone, so that the cycle must begin again,
    ///         QVM_ERROR_NULL_SOURCE                   a frame that is null, or gone
    ///         QVM_ERROR_FAILED_TO_COMPRESS            a coder refused
    ///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA      the object refused, no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmObject*& result);

    /// An object of one frame, in one call.
    ///
    /// @param pixels  as in AddFrame(); stays yours where the answer is a failure
    /// @param result  as above: null before the call, it is null after a failure
    /// @return QVM_SUCCESS also where the object could not be made (GetOutcome() says why), or
    ///         QVM_ERROR_NO_SOURCE_OBJECT
    ///         QVM_ERROR_INVALID_MAKER_PARAM  no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmObject* source, _USER_SETTING_INFO* settings,
                                  _FRAME_INFO* frameInfo, unsigned char* pixels,
                                  CDcmObject*& result);

    /// A secondary capture, in one call and always by the standard rules: an object of the study of
    /// `source`, with a class, series and UIDs of its own. One frame is a Secondary Capture Image;
    /// several are Multi-frame Grayscale Byte, Grayscale Word or True Color. Modality stays that of
    /// `source` where it is an image and the settings have none, else "OT".
    ///
    /// @param frameInfo  the forms: grey or palette indices of 8 or 16 bits allocated; R, G, B of 8
    ///                   or, in one frame, 16; B, G, R and a fourth byte (4 samples of 8 bits, or
    ///                   one of 32), which become R, G, B. Several grey frames are unsigned
    ///                   MONOCHROME2 of 8 bits or of 9 to 16
    /// @param frames     `count` frames as in AddFrame(), which stay yours
    /// @param result     receives the object, yours, release it with delete; untouched on failure
    /// @return QVM_SUCCESS, or as MakeDcmObject(); QVM_ERROR_NO_PIXEL_INFO without `frameInfo`;
    ///         QVM_ERROR_NO_SOURCE_OBJECT; QVM_ERROR_INVALID_IMAGE_FORMAT without frames;
    ///         QVM_ERROR_INVALID_MAKER_PARAM for a prefix of UIDs that is none, or too long
    QUORVEX_MESSAGE MakeSecondaryCapture(CDcmObject* source, _USER_SETTING_INFO* settings,
                                         _FRAME_INFO* frameInfo, const unsigned char* const* frames,
                                         int count, CDcmObject*& result);

    /// A Key Object Selection document (PS3.16 TID 2010), always by the standard rules: title,
    /// description, references and evidence. Patient and study are those of the first object.
    ///
    /// @param info      null: "Of Interest"
    /// @param settings  may be null; its modality and kind are not looked at
    /// @param result    receives the object, yours, release it with delete; untouched on failure
    /// @return QVM_SUCCESS, QVM_ERROR_NO_SOURCE_OBJECT for no object or one without the UIDs that
    ///         name it, QVM_ERROR_INVALID_MAKER_PARAM for no memory or a prefix of UIDs that is
    ///         none
    QUORVEX_MESSAGE MakeKeyObject(CDcmObject* const* objects, int count, _KEY_OBJECT_INFO* info,
                                  _USER_SETTING_INFO* settings, CDcmObject*& result);

    // Conversion.

    /// Brings `object` into the form that `settings` asks for, by decoding and coding every frame,
    /// then applies the settings. An object in that form already keeps its Pixel Data. UIDs stay
    /// unless the settings change them.
    ///
    /// Holds, beside the object, one decoded frame and the new frames (coded frames twice, while
    /// they are put into the object). Frames of one sample stay as they are; three samples become
    /// "RGB" by pixel. Frames that would come out changed are refused: of other sample counts, of
    /// colour that the parser cannot read, of samples that do not fill bytes.
    ///
    /// @param settings  null: to uncompressed. `compressionType` 0 is no form: nothing is converted
    /// @return QVM_SUCCESS, also where a frame could not be decoded or coded: the Pixel Data and
    ///         all that describes it are then as they were, settings and name are applied all the
    ///         same, and GetOutcome() says why. Or, with nothing changed,
    ///         QVM_ERROR_INVALID_DCMAPP            no `app`, no `object`
    ///         QVM_ERROR_INVALID_TRANSFER_SYNTAX   the object has none that we know
    ///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA  no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmApp* app, CDcmObject* object, _USER_SETTING_INFO* settings);

    /// What became of the Pixel Data in this maker's latest MakeDcmObject(): QVM_SUCCESS if it was
    /// made, QVM_FRAME_COPIED for an object that had the wanted form already, or the failure, also
    /// one that MakeDcmObject() does not answer with.
    [[nodiscard]] QUORVEX_MESSAGE GetOutcome() const noexcept;

    /// The quality that frames are coded with from the next MakeDcmObject() on, as
    /// CxImageProcessor::CompressFrameData() reads it. 0, the default: by the established rules 20
    /// for new objects, 1 for conversions (for JPEG Baseline very coarse, for JPEG 2000 nearly
    /// lossless); by the standard rules as SetRules() tells.
    void SetQuality(std::uint16_t quality) noexcept;
    [[nodiscard]] std::uint16_t GetQuality() const noexcept;

private:
    std::unique_ptr<ObjectMaker> maker_;
};

}  // namespace quorvex
