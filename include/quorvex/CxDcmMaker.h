/// Makes new DICOM objects: from frames of a host's own, or from an object in another compression.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex {

class CXGSPSInfo;
class CxDcmParser;
class FrameSupply;
class PixelDraft;

/// What a host wants changed against the source. Empty or 0 keeps what the source gave.
struct _USER_SETTING_INFO {         // NOLINT(bugprone-reserved-identifier): given name
    CString modality;               ///< (0008,0060); "PR" and "SR" choose the SOP Class too
    std::int32_t documentKind = 0;  ///< with "SR": 1 Basic Text, 2 Enhanced, 3 Comprehensive,
                                    ///< 4 Mammography CAD, 5 Key Object Selection, 6 Chest CAD
    CString seriesNumber;
    CString instanceNumber;
    CString patientName;
    CString seriesDescription;
    CString institutionName;
    CString seriesInstanceUID;
    CString fileName;                  ///< names the object; no file of this name is written
    std::int32_t compressionType = 0;  ///< a QUORVEX_XFERSYNTAX; 0 for a new object means 1
};

/// A host's description of its frames, where they differ from the source.
struct _FRAME_INFO {  // NOLINT(bugprone-reserved-identifier): given name
    std::uint16_t samplesPerPixel = 0;
    CString photometricInterpretation;  ///< for one sample only: several are always "RGB"
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    CString pixelSpacing[2];  ///< between rows, then between columns, in mm
    std::uint16_t bitsAllocated = 0;
    std::uint16_t bitsStored = 0;
    std::uint16_t pixelRepresentation = 0;
    CString windowCenter;
    CString windowWidth;
};

/// What the pixel attributes of an object are to be. 65535 and an empty text count as unset: they
/// are not written, and where the value is needed it is read from the object.
struct _DCM_PIXEL_INFO {              // NOLINT(bugprone-reserved-identifier): given name
    std::int32_t transferSyntax = 0;  ///< of the frames as they come: a TRANSFER_SYNTAX
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
    std::int32_t compressionType = 0;  ///< of the object to be: a QUORVEX_XFERSYNTAX
    std::uint16_t quality = 20;        ///< see CxImageProcessor::CompressFrameData
};

/// One frame on its way into an object. It owns both blocks, which come from new unsigned char[].
struct QUORVEX_API _DCM_FRAME_BUFFER {  // NOLINT(bugprone-reserved-identifier): given name
    _DCM_FRAME_BUFFER() = default;
    _DCM_FRAME_BUFFER(const _DCM_FRAME_BUFFER&) = delete;
    _DCM_FRAME_BUFFER& operator=(const _DCM_FRAME_BUFFER&) = delete;
    ~_DCM_FRAME_BUFFER();

    unsigned char* rawData = nullptr;  ///< as it came in
    unsigned long rawLength = 0;
    unsigned char* processedData = nullptr;  ///< plain, without palette
    unsigned long processedLength = 0;
};

/// All that is needed to write Pixel Data: the record is its holder's, and so are the frames.
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
/// Lossy Image Compression becomes "01" for 5, 6 and 8 and "00" for 7 and 9, whatever it was.
/// Palette colour is written as 8-bit "RGB"; its palette attributes stay. Colour of JPEG Baseline is
/// coded as the R, G, B that its Photometric Interpretation says, not as YCbCr. A host's pixel of 32
/// bits is written, uncompressed only, with Samples per Pixel 3 and its bytes as they are; a converted
/// sample of 32 bits stays one.
///
/// "Quorvex.INI" in the directory of the host's executable, read anew for every object, names the
/// prefix of new UIDs and the manufacturer: pairs of lines, a tag and its value. Without the file
/// they are "1.2.999.700040", "SORVANEX" and "SORVANEX PACS".
class QUORVEX_API CxDcmMaker {
public:
    CxDcmMaker();
    CxDcmMaker(const CxDcmMaker&) = delete;
    CxDcmMaker& operator=(const CxDcmMaker&) = delete;
    virtual ~CxDcmMaker();

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
    /// @return 1; or 0 without memory, and then `target` is as it was
    int MakeDcmSkeleton(CDcmObject* source, CDcmObject* target);

    /// Puts the choices of a presentation record over what the source gave: for `objectKind` 1 to 7
    /// modality and SOP Class; series and instance number also where they are empty; patient name,
    /// series description and institution only where they are not.
    /// @return 1; or 0 without memory, and then `target` is as it was
    int UpdateUserSettingInfo(CXGSPSInfo* info, CDcmObject* target);

    // A new object, frame by frame: DcmMakerInit, AddFrame as often as needed, MakeDcmObject.

    /// Starts a new object. What an earlier start left unfinished is released.
    ///
    /// @param source     where everything comes from that the other two do not tell
    /// @param settings   may be null
    /// @param frameInfo  null: the frames are like those of `source`. May be released on return
    /// @return QVM_SUCCESS, or QVM_ERROR_NO_SOURCE_OBJECT (the maker has not changed),
    ///         QVM_ERROR_INVALID_MAKER_PARAM for no memory
    QUORVEX_MESSAGE DcmMakerInit(CDcmObject* source, _USER_SETTING_INFO* settings,
                                 _FRAME_INFO* frameInfo);

    /// Adds a frame: rows x columns x samples x bits allocated / 8 bytes, rows from the top, without
    /// padding; colour as R, G, B.
    ///
    /// @param pixels  from new unsigned char[]; the maker's from here on, neither copied nor looked
    ///                at before MakeDcmObject()
    /// @return QVM_SUCCESS; or, and then `pixels` stays yours, QVM_ERROR_NO_PIXEL_INFO outside the
    ///         cycle and QVM_ERROR_INVALID_MAKER_PARAM for no memory
    QUORVEX_MESSAGE AddFrame(unsigned char* pixels);

    /// Finishes the object. Each frame is released as soon as it is coded.
    ///
    /// @param result  receives the object, yours, release it with delete; untouched on failure
    /// @return QVM_SUCCESS; or, with nothing lost, so that frames may still be added or the cycle
    ///         begun again:
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT     no frames
    ///         QVM_ERROR_INVALID_TRANSFER_SYNTAX  `compressionType` 4 or unknown
    ///         QVM_ERROR_INVALID_BITS_ALLOCATED, _SAMPLES_PER_PIXEL, _BITS_STORED, _ROWS, _COLUMNS,
    ///         _PHOTOMETRIC, _PIXEL_REPRESENTATION, _PLANAR_CONFIGURATION: neither given nor in the
    ///         object; _PHOTOMETRIC also for palette colour without its tables
    ///         or, with the frames up to the failing one gone, so that the cycle must begin again:
    ///         QVM_ERROR_NULL_SOURCE               a frame that is null, or gone
    ///         QVM_ERROR_FAILED_TO_COMPRESS        a coder refused
    ///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA  the object refused, no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmObject*& result);

    /// An object of one frame, in one call.
    ///
    /// @param pixels  as in AddFrame(); stays yours where the answer is a failure
    /// @param result  as above: start it as null, and null afterwards tells of failure
    /// @return QVM_SUCCESS also where the object could not be made (GetOutcome() says why), or
    ///         QVM_ERROR_NO_SOURCE_OBJECT, QVM_ERROR_INVALID_MAKER_PARAM for no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmObject* source, _USER_SETTING_INFO* settings,
                                  _FRAME_INFO* frameInfo, unsigned char* pixels,
                                  CDcmObject*& result);

    // Conversion.

    /// Brings `object` into the form that `settings` asks for, by decoding and coding every frame,
    /// then applies the settings. An object in that form already keeps its Pixel Data. UIDs stay
    /// unless the settings change them.
    ///
    /// Holds, beside the object, one decoded frame and the new frames (of coded ones two copies, while
    /// they are put into the object). Frames of one sample stay what they are; three samples become
    /// "RGB" by pixel. Refused are frames that would come out changed: of other sample counts, of
    /// colour that the parser cannot read, of samples that bytes do not hold.
    ///
    /// @param settings  null: to uncompressed. `compressionType` 0 is no form: nothing is converted
    /// @return QVM_SUCCESS, also where a frame could not be decoded or coded: the Pixel Data and
    ///         all that describes it are then as they were, settings and name applied all the same,
    ///         and GetOutcome() says why. Or, with nothing changed,
    ///         QVM_ERROR_INVALID_DCMAPP           no `app`, no `object`
    ///         QVM_ERROR_INVALID_TRANSFER_SYNTAX  the object has none that we know of
    ///         QVM_ERROR_FAILED_TO_SET_PIXEL_DATA no memory
    QUORVEX_MESSAGE MakeDcmObject(CDcmApp* app, CDcmObject* object, _USER_SETTING_INFO* settings);

    /// What became of the Pixel Data in this maker's latest MakeDcmObject(): QVM_SUCCESS for made,
    /// QVM_FRAME_COPIED for an object that had the wanted form already, or the failure that
    /// MakeDcmObject() itself may keep to itself.
    [[nodiscard]] QUORVEX_MESSAGE GetOutcome() const noexcept { return outcome; }

    /// The quality that frames are coded with from the next MakeDcmObject() on, as
    /// CxImageProcessor::CompressFrameData() reads it. 0, the default: 20 for new objects, 1 for
    /// conversions (for JPEG Baseline very coarse, for JPEG 2000 nearly lossless).
    void SetQuality(std::uint16_t newQuality) noexcept { quality = newQuality; }
    [[nodiscard]] std::uint16_t GetQuality() const noexcept { return quality; }

private:
    static int SetBasicInfo(CDcmObject* source, CDcmObject* target);
    int MakeBasicObject(CDcmObject* source, _USER_SETTING_INFO* settings, CDcmObject*& target);
    static int UpdateUserSettingInfo(_USER_SETTING_INFO* settings, CDcmObject* target);

    void ReleaseFrames() noexcept;
    QUORVEX_MESSAGE MakeDcmPixelObject(_DCM_MAKER_PARAM* maker, CDcmObject*& target);
    static QUORVEX_MESSAGE MakePixels(const _DCM_PIXEL_INFO& format, FrameSupply& frames,
                                      CDcmObject& target);
    static QUORVEX_MESSAGE ProcessObjectForExportAction(PixelDraft& draft,
                                                        _DCM_FRAME_BUFFER& frame);
    static QUORVEX_MESSAGE CreateDICOMExportObject(PixelDraft& draft, FrameSupply& frames);
    static QUORVEX_MESSAGE ExpandPaletteFrame(PixelDraft& draft, _DCM_FRAME_BUFFER& frame);
    QUORVEX_MESSAGE ConvertPixels(CxDcmParser& parser, CDcmObject& target, TRANSFER_SYNTAX syntax,
                                  const _USER_SETTING_INFO* settings) const;
    static QUORVEX_MESSAGE GetRGBBufferFromPaletteImage(unsigned char* pixels,
                                                        unsigned short columns, unsigned short rows,
                                                        unsigned short& bits,
                                                        unsigned short& samples,
                                                        CString& photometric, unsigned char*& rgb,
                                                        unsigned long reserved, CDcmObject* object);
    static void AdjustImage(unsigned char*& buffer, unsigned short bitsPerPixel,
                            unsigned short width, unsigned short height);

    CDcmObject* object = nullptr;  ///< the latest object, whoever owns it by now
    _DCM_MAKER_PARAM param;
    std::unique_ptr<CDcmObject> unfinished;
    std::unique_ptr<_DCM_PIXEL_INFO> ownFormat;
    std::vector<std::unique_ptr<_DCM_FRAME_BUFFER>> ownFrames;
    QUORVEX_MESSAGE outcome = QVM_SUCCESS;
    std::uint16_t quality = 0;
};

}  // namespace quorvex
