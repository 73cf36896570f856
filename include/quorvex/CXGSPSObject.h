/// Reads presentation data out of images and of Grayscale Softcopy Presentation State objects, and
/// makes such objects.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <cstdint>

namespace quorvex {

/// Fills a `CXGSPSInfo` from a DICOM object, and makes presentation states from such records.
///
/// In image mode (`imageUID` empty) the object that is read is an image, and the record gets what
/// the image says of itself. In state mode the object is a presentation state, and the record gets
/// what the state says of the image `imageUID` and its frame `frameNumber`: an item that carries
/// references applies only when one of them names this image and, where it lists frames, this frame
/// (-1 is never listed).
///
/// A module that is absent or not usable leaves the record at its default; nothing is reported.
/// What the standard leaves open:
///     - a Rescale Intercept without a slope gets the slope 1.0;
///     - a Window Center without a width is no window (width 0);
///     - a LUT without entries or without a descriptor is no LUT;
///     - a LUT with fewer entries than its descriptor counts is filled up with its last entry.
///
/// Read into a fresh record: what lies in its pointer fields is overwritten, not released.
///
/// The two fields, the rules and an outcome are all that an object keeps between calls. Different
/// objects may work in different threads at once.
class QUORVEX_API CXGSPSObject {
public:
    CXGSPSObject() = default;
    CXGSPSObject(const CXGSPSObject&) = default;
    CXGSPSObject& operator=(const CXGSPSObject&) = default;
    virtual ~CXGSPSObject() = default;

    /// Chooses the rules by which states are made; established ones at first. What is read is the
    /// same by both, with two exceptions: where a multi-frame image keeps rescale, window, VOI LUT
    /// or pixel spacing in its functional groups alone, `GSPSApplier` by the standard rules takes
    /// those of the frame that it is given, or else those that all of its frames have; and an image
    /// without Pixel Spacing and aspect has the aspect of its imager or nominal scanned spacing.
    void SetRules(Rules rules) noexcept { rules_ = rules; }

    CString imageUID;               ///< the image that readings are for; empty means image mode
    std::int32_t frameNumber = -1;  ///< frame of that image, counted from 1; -1 for none

    /// Stores `uid` and `frame` in the two fields, and reads every module into `info`.
    ///
    /// Set `imageColumns` and `imageRows` of the record before the call: a shutter of a
    /// presentation state takes its size from them.
    ///
    /// @return 1; or 0
    ///         - without an object or a record: nothing has changed;
    ///         - without memory: the record holds what was read so far
    int GSPSApplier(CDcmObject* object, CXGSPSInfo* info, CString uid, int frame);

    /// Reads one module, for the image and frame that the two fields name.
    ///
    /// @param selector  0  modality
    ///                  1  shutter
    ///                  2  VOI
    ///                  3  presentation LUT
    ///                  5  rotation and flip
    ///                  6  displayed area
    ///                  any other does nothing
    /// @return 1; or 0 without memory, and then the record holds what was read so far
    int GetGSPSModule(unsigned int selector, CDcmObject* object, CXGSPSInfo* info);

    /// Reads the first item of the Mask Subtraction Sequence and the Recommended Viewing Mode into
    /// the mask fields of the record; what belongs to whom is told there.
    ///
    /// @return 1; or 0 without an object, a record or memory
    int GetMask(CDcmObject* object, CXGSPSInfo* info);

    /// Makes a presentation state for images of one series.
    ///
    /// Patient, study, modality transform and mask subtraction come from `source`, what belongs to
    /// one image from its record, and what a state has only once from the first record.
    /// `objectKind` 1 there makes the object a presentation state. The modules are not checked
    /// against the standard: what a record does not have is written empty or as 0.
    ///
    /// A record that was only read has shutter type 0, a rectangle; -1 writes no shutter. A bitmap
    /// shutter is not written.
    ///
    /// By the standard rules the object is a valid one, whatever the records lack:
    ///     - images may be of several series: each record names its own, or has that of the first
    ///       record. A record without a reference is for `source`; frame numbers below 1 mean all;
    ///     - patient and study come as CxDcmMaker::MakeDcmSkeleton() has them by these rules;
    ///       nothing of the source's pixels (padding, extreme values) does;
    ///     - a rescale has its Rescale Type ("HU" for CT, else "US", where the source has none);
    ///     - the displayed area is the whole image where the record has none, and names the pixels
    ///       that lie in its corners when the image is turned and flipped; pixel size, or else
    ///       aspect; magnification where that is the size mode;
    ///     - only records with a window or a table have a VOI: windows with the fractions of
    ///       `exactWindowCenter` and `exactWindowWidth`, where those belong to the whole numbers;
    ///     - shutters of several shapes, and bitmaps; annotations in their layers, with styles,
    ///       groups and compound graphics. What is read from a state and written again is the same
    ///       when it is read. Left out are texts without a text and graphics without a type or
    ///       points.
    ///
    /// A record that was read from a state keeps that state, and what is written from it is told
    /// there; private attributes are not. A state has one modality transform, that of the state
    /// which the first record was read from, or else of `source`: images that differ need a state
    /// each (PS3.3 A.33.1.1), and are refused.
    ///
    /// @param source  an image of the series
    /// @param infos   `count` records, one for each image; only read
    /// @param result  receives the object; yours, release it with delete; untouched on failure
    /// @return 1; or 0 without a source, without a record or without memory; by the standard rules
    ///         also for a rotation that is no quarter turn, for an image without UIDs or size, for
    ///         images whose rescale or Modality LUT differs, and for a prefix of UIDs that is none
    ///         or too long; `GetOutcome` tells which
    int MakeGSPSObject(CDcmObject* source, CXGSPSInfo** infos, int count, CDcmObject*& result);

    /// Why the latest `MakeGSPSObject` made nothing:
    ///     QVM_ERROR_NO_SOURCE_OBJECT              no source, no record, or an image without UIDs
    ///     QVM_ERROR_INVALID_IMAGE_FORMAT          an image without size, or a rotation that is no
    ///                                             quarter turn
    ///     QVM_ERROR_INVALID_PIXEL_REPRESENTATION  images, or frames of one, that differ in rescale
    ///                                             or Modality LUT
    ///     QVM_ERROR_INVALID_MAKER_PARAM           no UID can be made of the configured prefix
    ///     QVM_ERROR_FAILED_TO_SET_PIXEL_DATA      no memory
    [[nodiscard]] QUORVEX_MESSAGE GetOutcome() const noexcept { return outcome_; }

    /// Whether one state can be for the images of both records: whether they have the same rescale
    /// or Modality LUT. A record that was neither read nor given a rescale or a table has that of
    /// any other one.
    [[nodiscard]] static bool HaveOneModality(const CXGSPSInfo& one, const CXGSPSInfo& other);

private:
    Rules rules_ = Rules::kEstablished;
    QUORVEX_MESSAGE outcome_ = QVM_SUCCESS;
};

}  // namespace quorvex
