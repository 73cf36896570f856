#include "maker/rules/derived_image.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/element_copy.h"
#include "maker/attribute_writing.h"
#include "maker/rules/standard_skeleton.h"
#include "maker/uids.h"

#include <algorithm>
#include <vector>

namespace quorvex {
namespace {

constexpr std::uint32_t kOfOtherPixels[] = {
    tag::kSmallestImagePixelValue,
    tag::kLargestImagePixelValue,
    tag::kIconImageSequence,
    tag::kInstanceCreatorUID,
};

/// Curves, overlays, pixels, signatures and what pads.
bool IsGroupOfOtherPixels(std::uint32_t group) {
    constexpr std::uint32_t kEncryption = 0x0400;
    constexpr std::uint32_t kSignatures = 0xFFFA;
    constexpr std::uint32_t kCurves = 0x50;
    constexpr std::uint32_t kOverlays = 0x60;
    return group == kEncryption || group == dicom::GroupOf(tag::kPixelData) ||
           group >= kSignatures || group >> 8U == kCurves || group >> 8U == kOverlays;
}

bool IsWanted(const CDcmObjectCommon& target, std::uint32_t tag) {
    return !dicom::IsPrivate(tag) && !dicom::IsMetaTag(tag) && !dicom::IsGroupLength(tag) &&
           !IsGroupOfOtherPixels(dicom::GroupOf(tag)) && !HasElement(target, tag) &&
           std::ranges::find(kOfOtherPixels, tag) == std::end(kOfOtherPixels);
}

void SetDerived(CDcmObject& object) {
    std::vector<CString> values;
    ForEachValue<CString>(object, tag::kImageType,
                          [&](const CString& value) { values.push_back(value); });
    if (values.size() < 2) values = {"", "PRIMARY"};
    values.front() = "DERIVED";
    ValueWriter writer(object, tag::kImageType);
    for (const CString& value : values) writer.Add(value);
}

void ReferTo(const CDcmObject& source, CDcmObject& object) {
    const auto sopClass = Read<CString>(source, tag::kSOPClassUID);
    const auto instance = Read<CString>(source, tag::kSOPInstanceUID);
    if (!sopClass || !instance || !IsValidUid(*sopClass) || !IsValidUid(*instance)) return;
    CDcmItem purpose;
    purpose.SetValue(tag::kCodeValue, "121322");
    purpose.SetValue(tag::kCodingSchemeDesignator, "DCM");
    purpose.SetValue(tag::kCodeMeaning, "Source image for image processing operation");
    CDcmItem reference;
    reference.SetValue(tag::kReferencedSOPClassUID, *sopClass);
    reference.SetValue(tag::kReferencedSOPInstanceUID, *instance);
    reference.SetValue(tag::kPurposeOfReferenceCodeSequence, &purpose);
    if (HasElement(object, tag::kSourceImageSequence)) {
        object.SetNextValue(tag::kSourceImageSequence, &reference);
    } else {
        object.SetValue(tag::kSourceImageSequence, &reference);
    }
}

/// Coded photographs have lost something; JPEG 2000 may be reversible, and says so by the flag.
void MarkLossOf(const CDcmObject& source, CDcmObject& object) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    if (source.GetTransferSyntax(syntax) != kDcmSuccess) return;
    const auto* row = TransferSyntaxOf(syntax);
    const bool isPhotograph = row != nullptr && row->isLossy && row->coding == FrameCoding::kJpeg;
    if (isPhotograph) object.SetValue(tag::kLossyImageCompression, "01");
}

}  // namespace

bool AreLikeThoseOf(const CDcmObject& source, const HostFrames& frames, int count) {
    const auto has = [&](std::uint32_t tag, int value) { return Read<int>(source, tag) == value; };
    const StoredForms& forms = frames.forms;
    const bool isSameKind = has(tag::kRows, forms.rows) && has(tag::kColumns, forms.columns) &&
                            has(tag::kSamplesPerPixel, forms.samplesPerPixel) &&
                            has(tag::kBitsAllocated, forms.bitsAllocated) &&
                            has(tag::kBitsStored, forms.bitsStored) &&
                            has(tag::kPixelRepresentation, forms.isSigned ? 1 : 0);
    const bool isSameColour =
        forms.samplesPerPixel == 3 ||
        Read<CString>(source, tag::kPhotometricInterpretation) == frames.photometric;
    return isSameKind && isSameColour && !frames.areBlueGreenRed &&
           HasElement(source, tag::kSOPClassUID) &&
           Read<int>(source, tag::kNumberOfFrames).value_or(1) == count;
}

QUORVEX_MESSAGE DescribeDerivedImage(const CDcmObject& source, CDcmObject& object) {
    CopyElements(source, object, IsWanted);
    SetDerived(object);
    ReferTo(source, object);
    MarkLossOf(source, object);
    const bool saysItElsewhere = HasElement(object, tag::kImageLaterality) ||
                                 HasElement(object, tag::kSharedFunctionalGroupsSequence);
    if (saysItElsewhere && !HasElement(source, tag::kLaterality))
        object.RemoveValue(tag::kLaterality);
    RequireElement(object, tag::kInstanceNumber);
    if (!HasElement(object, tag::kImageOrientationPatient))
        RequireElement(object, tag::kPatientOrientation);
    return QVM_SUCCESS;
}

}  // namespace quorvex
