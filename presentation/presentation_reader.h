/// One reading of presentation data: from an image or a presentation state into a record.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace quorvex {

/// A look-up table as an object holds it, with at least as many entries as its descriptor counts.
struct StoredLUT {
    std::unique_ptr<unsigned short[]> data;
    unsigned short count = 0;  ///< as the descriptor has it: 0 stands for 65536
    unsigned short first = 0;
    unsigned short bits = 0;
};

/// Reads modules, each by itself and in any order.
///
/// `CXGSPSObject` says what image mode and state mode are, and what becomes of a module that is not
/// there. What lies in the pointer fields of the record is overwritten, not released. Every
/// operation may throw std::bad_alloc; the record then holds what was read so far.
class PresentationReader {
public:
    /// All three are kept by reference.
    /// @param imageUID  empty for an image, else the image that a presentation state is read for
    PresentationReader(const CDcmObject& object, CXGSPSInfo& info, const CString& imageUID,
                       std::int32_t frameNumber)
        : object_(object), info_(info), imageUID_(imageUID), frameNumber_(frameNumber) {}

    void GetModalityLUT();
    void GetVOILUT();
    void GetPresentationLUT();
    /// Makes the mask of the one shape that is named; none for several, and none of more pixels
    /// than is plausible. The geometry is read all the same.
    void GetShutter();
    void GetSpatialTransformation();
    void GetDisplayTransformation();
    /// The same of an image, with the aspect that its pixels have by any attribute of theirs.
    void GetPixelShape();
    /// Adds to the annotations that are there.
    void GetAnnotation();
    /// Reads the first item of the Mask Subtraction Sequence, and the viewing mode, into the mask
    /// fields. It belongs to no selector: nothing in the library subtracts masks.
    void GetMask();

    /// The centre that a record has of a state's window: the whole number ahead of its text.
    [[nodiscard]] static std::int32_t WholeCenterOf(const CString& text) noexcept;
    /// Nothing for a table without a descriptor, or whose entries cannot all be read.
    [[nodiscard]] static std::optional<StoredLUT> GetLUTData(const CDcmItem& item);

private:
    void GetSoftcopyVOILUT();
    void ProcessVOISequence(const CDcmItem& item);
    void TakeVOILUT(const CDcmItem& item);

    void MakeRectangleShutter();
    void MakeCircularShutter();
    void MakePolygonalShutter();
    void MakeBitmapShutter();

    void ProcessDisplaySequence(const CDcmItem& item);

    void ProcessAnnotationSequence(const CDcmItem& item);
    void ProcessAnnotationText(const CDcmItem& item, const CString& layer);
    void ProcessAnnotationGraphic(const CDcmItem& item, const CString& layer);

    [[nodiscard]] bool IsForImage() const noexcept { return imageUID_.IsEmpty(); }

    const CDcmObject& object_;
    CXGSPSInfo& info_;
    const CString& imageUID_;
    std::int32_t frameNumber_;
};

}  // namespace quorvex
