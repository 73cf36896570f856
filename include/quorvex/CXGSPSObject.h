/// Reads presentation data out of images and Grayscale Softcopy Presentation State objects, and makes
/// such objects.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/Types.h"

#include <cstdint>

namespace quorvex {

/// Fills a `CXGSPSInfo` from a DICOM object.
///
/// In image mode (`imageUID` empty) the object is an image, and the record gets what the image says
/// of itself. In state mode the object is a presentation state, and the record gets what the state
/// says of the image `imageUID` and its frame `frameNumber`: parts that carry references apply only
/// when one names this image and, where it lists frames, this frame (-1 is never listed).
///
/// A module that is not there, or not usable, leaves the record at its default; nothing is
/// reported. What the standard leaves open: a Rescale Intercept without a slope gets the slope 1.0,
/// a Window Center without a width is no window (width 0), a LUT without entries or descriptor is
/// no LUT, and a LUT whose descriptor counts more entries than there are is filled up with its last
/// entry.
///
/// Read into a fresh record: what lies in its pointer fields is overwritten, not released.
class QUORVEX_API CXGSPSObject {
public:
    CXGSPSObject() = default;
    CXGSPSObject(const CXGSPSObject&) = default;
    CXGSPSObject& operator=(const CXGSPSObject&) = default;
    virtual ~CXGSPSObject() = default;

    CString imageUID;               ///< the image that readings are for; empty means image mode
    std::int32_t frameNumber = -1;  ///< frame of that image, counted from 1; -1 for none

    /// Keeps `uid` and `frame`, and reads every module into `info`.
    ///
    /// Set `imageColumns` and `imageRows` of the record before: a shutter of a presentation state
    /// takes its size from them.
    ///
    /// @return 1; or 0 without an object or a record, and then nothing was changed, or without
    /// memory,
    ///         and then the record holds what was read so far
    int GSPSApplier(CDcmObject* object, CXGSPSInfo* info, CString uid, int frame);

    /// Reads one module for the UID and frame that are set.
    ///
    /// @param selector  0 modality, 1 shutter, 2 VOI, 3 presentation LUT, 5 rotation and flip,
    ///                  6 displayed area; any other does nothing
    /// @return 1; or 0 without memory, and then the record holds what was read so far
    int GetGSPSModule(unsigned int selector, CDcmObject* object, CXGSPSInfo* info);

    /// Makes a presentation state for images of one series.
    ///
    /// Patient, study and the modality transform come from `source`, what belongs to one image from its
    /// record, and what a state holds once from the first record. `objectKind` 1 there makes the
    /// object a presentation state. No check of the standard's module rules is made: what a record does
    /// not tell is written empty or as 0. A record that was only read has shutter type 0, a rectangle; -1
    /// writes none. Mask subtraction is the source's; a bitmap shutter is not written.
    ///
    /// @param source  an image of the series
    /// @param infos   `count` records, one for each image; only read
    /// @param result  receives the object, yours, release it with delete; untouched on failure
    /// @return 1; or 0 without a source or a record, or without memory
    int MakeGSPSObject(CDcmObject* source, CXGSPSInfo** infos, int count, CDcmObject*& result);

private:
    int GetModalityLUT(CDcmObject* object, CXGSPSInfo* info);
    int GetVOILUT(CDcmObject* object, CXGSPSInfo* info);
    int GetSoftcopyVOILUT(CDcmObject* object, CXGSPSInfo* info);
    int ProcessVOISequence(CDcmItem item, CXGSPSInfo* info);
    int TakeVOILUT(CDcmItem* item, CXGSPSInfo* info);
    int GetPresentationLUT(CDcmObject* object, CXGSPSInfo* info);
    int GetLUTData(CDcmItem* item, unsigned short& count, unsigned short& first,
                   unsigned short& bits, unsigned short*& data);
    int GetSpatialTransformation(CDcmObject* object, CXGSPSInfo* info);

    int GetShutter(CDcmObject* object, CXGSPSInfo* info);
    int MakeRectangleShutter(CDcmObject* object, CXGSPSInfo* info);
    int MakeCircularShutter(CDcmObject* object, CXGSPSInfo* info);
    int MakePolygonalShutter(CDcmObject* object, CXGSPSInfo* info);
    int MakeBitmapShutter(CDcmObject* object, CXGSPSInfo* info);
    int GetMask(CDcmObject* object, CXGSPSInfo* info);

    int GetDisplayTransformation(CDcmObject* object, CXGSPSInfo* info);
    int ProcessDisplaySequence(CDcmItem item, CXGSPSInfo* info);
    int GetAnnotation(CDcmObject* object, CXGSPSInfo* info);
    int ProcessAnnotationSequence(CDcmItem item, CXGSPSInfo* info);
    int ProcessAnnotationText(CDcmItem item, CXGSPSInfo* info);
    int ProcessAnnotationGraphic(CDcmItem item, CXGSPSInfo* info);

    int SetPresentationStateModule(CDcmObject* source, CXGSPSInfo** infos, int count,
                                   CDcmObject* target);
    int SetDisplayedAreaModule(CXGSPSInfo** infos, int count, CDcmObject* target);
    int SetSoftcopyPresentationLUTModule(CXGSPSInfo* info, CDcmObject* target);
    int SetMaskModule(CDcmObject* source, CDcmObject* target);
    int SetDisplayShutterModule(CXGSPSInfo* info, CDcmObject* target);
    int SetBitmapDisplayShutterModule(CXGSPSInfo* info, CDcmObject* target);
    int SetOverlayCurveActivationModule(CXGSPSInfo* info, CDcmObject* target);
    int SetOverlayPlaneModule(CXGSPSInfo* info, CDcmObject* target);
    int SetGraphicAnnotationModule(CXGSPSInfo** infos, int count, CDcmObject* target);
    int SetGraphicLayerModule(CXGSPSInfo* info, CDcmObject* target);
    int SetSpatialTransformationModule(CXGSPSInfo* info, CDcmObject* target);
    int SetModalityLUTModule(CDcmObject* source, CDcmObject* target);
    int SetSoftcopyVOILUTModule(CXGSPSInfo** infos, int count, CDcmObject* target);
};

}  // namespace quorvex
