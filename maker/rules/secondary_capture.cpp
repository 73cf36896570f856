#include "maker/rules/secondary_capture.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/functional_groups.h"
#include "maker/attribute_writing.h"
#include "maker/rules/standard_skeleton.h"

#include <algorithm>
#include <string>

namespace quorvex {
namespace {

constexpr const char* kSingleFrame = "1.2.840.10008.5.1.4.1.1.7";
constexpr const char* kGreyBytes = "1.2.840.10008.5.1.4.1.1.7.2";
constexpr const char* kGreyWords = "1.2.840.10008.5.1.4.1.1.7.3";

/// What an earlier step took from a source of other pixels.
constexpr std::uint32_t kOfOtherPixels[] = {
    tag::kPixelPaddingValue,         tag::kPixelPaddingRangeLimit, tag::kSmallestPixelValueInSeries,
    tag::kLargestPixelValueInSeries, tag::kPatientPosition,
};

constexpr std::uint32_t kPaletteAttributes[] = {
    tag::kRedPaletteColorLookupTableDescriptor,     tag::kGreenPaletteColorLookupTableDescriptor,
    tag::kBluePaletteColorLookupTableDescriptor,    tag::kRedPaletteColorLookupTableData,
    tag::kGreenPaletteColorLookupTableData,         tag::kBluePaletteColorLookupTableData,
    tag::kSegmentedRedPaletteColorLookupTableData,  tag::kSegmentedGreenPaletteColorLookupTableData,
    tag::kSegmentedBluePaletteColorLookupTableData,
};

constexpr std::uint32_t kLoss[] = {tag::kLossyImageCompression, tag::kLossyImageCompressionRatio,
                                   tag::kLossyImageCompressionMethod};

bool IsColour(const HostFrames& frames) {
    return frames.forms.samplesPerPixel == 3;
}

bool IsPalette(const HostFrames& frames) {
    return frames.photometric == CString("PALETTE COLOR");
}

QUORVEX_MESSAGE CheckFrames(const HostFrames& frames, int count) {
    const StoredForms& forms = frames.forms;
    const bool isDeepColour = IsColour(frames) && forms.bitsAllocated != 8;
    if (forms.bitsAllocated > 16 || (count > 1 && isDeepColour))
        return QVM_ERROR_INVALID_BITS_ALLOCATED;
    if (count == 1 || IsColour(frames)) return QVM_SUCCESS;
    if (forms.isSigned) return QVM_ERROR_INVALID_PIXEL_REPRESENTATION;
    if (frames.photometric != CString("MONOCHROME2")) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const bool fitsItsClass =
        forms.bitsAllocated == 8 ? forms.bitsStored == 8 : forms.bitsStored > 8;
    return fitsItsClass ? QVM_SUCCESS : QVM_ERROR_INVALID_BITS_STORED;
}

const char* ClassOf(const HostFrames& frames, int count) {
    if (count == 1) return kSingleFrame;
    if (IsColour(frames)) return kColourCaptures;
    return frames.forms.bitsAllocated == 8 ? kGreyBytes : kGreyWords;
}

/// Series of reports, states and the like have modalities that images do not have.
void SetModality(const CDcmObject& source, CDcmObject& object) {
    const bool isOfDocuments =
        !HasElement(source, tag::kRows) &&
        Read<CString>(source, tag::kModality) == Read<CString>(object, tag::kModality);
    const bool isOpen = Read<CString>(object, tag::kModality).value_or(CString()).IsEmpty();
    if (isOfDocuments || isOpen) object.SetValue(tag::kModality, "OT");
}

/// Frames follow each other like the pages of a book.
void NumberThePages(int count, CDcmObject& object) {
    ValueWriter pages(object, tag::kPageNumberVector);
    for (int page = 1; page <= count; ++page) pages.Add(page);
    object.SetValue(tag::kFrameIncrementPointer, static_cast<int>(tag::kPageNumberVector));
}

void SetRescale(const char* intercept, const char* slope, const char* type, CDcmObject& object) {
    object.SetValue(tag::kRescaleIntercept, intercept);
    object.SetValue(tag::kRescaleSlope, slope);
    object.SetValue(tag::kRescaleType, type);
}

/// Words of one sample mean what they mean in the source, in each of its frames.
void TakeRescale(const CDcmObject& source, CDcmObject& object) {
    if (!CopyElement(source, object, tag::kRescaleIntercept)) return;
    if (!CopyElement(source, object, tag::kRescaleSlope)) object.SetValue(tag::kRescaleSlope, "1");
    if (!CopyElement(source, object, tag::kRescaleType)) object.SetValue(tag::kRescaleType, "US");
}

/// Every value as it is.
void SetFullWindow(const StoredForms& forms, CDcmObject& object) {
    const int values = 1 << forms.bitsStored;
    object.SetValue(tag::kWindowCenter, forms.isSigned ? 0 : values / 2);
    object.SetValue(tag::kWindowWidth, values);
}

void DescribeGrey(const CDcmObject& source, const HostFrames& frames, int count,
                  CDcmObject& object) {
    if (IsPalette(frames)) return;
    const bool hasMeaning = frames.forms.bitsAllocated == 16 && count == 1 &&
                            HasElement(source, tag::kRescaleIntercept);
    if (hasMeaning) {
        TakeRescale(source, object);
    } else {
        SetFullWindow(frames.forms, object);
    }
    if (count > 1) {
        object.SetValue(tag::kPresentationLUTShape, "IDENTITY");
        SetRescale("0", "1", "US", object);
    }
}

}  // namespace

QUORVEX_MESSAGE DescribeCapture(const CDcmObject& source, const HostFrames& frames, int count,
                                CDcmObject& object) {
    const auto checked = CheckFrames(frames, count);
    if (checked != QVM_SUCCESS) return checked;
    for (const auto tag : kOfOtherPixels) object.RemoveValue(tag);
    object.SetValue(tag::kSOPClassUID, ClassOf(frames, count));
    SetModality(source, object);
    WritePair<const char*>(object, tag::kImageType, "DERIVED", "SECONDARY");
    object.SetValue(tag::kConversionType, "WSD");
    object.SetValue(tag::kBurnedInAnnotation, "YES");  // nobody has looked whether there is text
    object.SetValue(tag::kContentDate, CxDcmMaker::GetDate());
    object.SetValue(tag::kContentTime, StandardTime());
    RequireElement(object, tag::kInstanceNumber);
    RequireElement(object, tag::kPatientOrientation);
    if (IsPalette(frames)) {
        for (const auto tag : kPaletteAttributes) CopyElement(source, object, tag);
        if (!HasElement(object, tag::kRedPaletteColorLookupTableDescriptor))
            return QVM_ERROR_INVALID_PHOTOMETRIC;
    }
    if (!IsColour(frames)) {
        const auto ofFrames = HeaderOfAllFrames(source);
        DescribeGrey(ofFrames ? *ofFrames : source, frames, count, object);
    }
    if (count > 1) NumberThePages(count, object);
    if (TextIs(source, tag::kLossyImageCompression, "01")) {
        for (const auto tag : kLoss) CopyElement(source, object, tag);
    }
    return QVM_SUCCESS;
}

}  // namespace quorvex
