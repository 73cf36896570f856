#include "presentation/reference_matching.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"

namespace quorvex {
namespace {

bool ListsFrame(const CDcmItem& reference, std::int32_t frameNumber) {
    int listed = 0;
    auto result = reference.GetValue(tag::kReferencedFrameNumber, listed);
    if (result != kDcmSuccess) return true;  // no list: every frame
    while (result == kDcmSuccess) {
        if (listed == frameNumber) return true;
        result = reference.GetNextValue(tag::kReferencedFrameNumber, listed);
    }
    return false;
}

bool Names(const CDcmItem& reference, const CString& imageUID, std::int32_t frameNumber) {
    const auto uid = Read<CString>(reference, tag::kReferencedSOPInstanceUID);
    return uid && uid->CompareNoCase(imageUID) == 0 && ListsFrame(reference, frameNumber);
}

}  // namespace

bool AppliesTo(const CDcmItem& item, const CString& imageUID, std::int32_t frameNumber) {
    bool hasReference = false;
    bool isNamed = false;
    ForEachItem(item, tag::kReferencedImageSequence, [&](const CDcmItem& reference) {
        hasReference = true;
        isNamed = isNamed || Names(reference, imageUID, frameNumber);
    });
    return isNamed || !hasReference;
}

}  // namespace quorvex
