#include "presentation/reference_matching.h"

#include "foundation/dicom/model/attributes.h"

namespace quorvex {
namespace {

/// True without a list too: every frame is meant.
bool ListsFrame(const CDcmItem& reference, std::int32_t frameNumber) {
    bool hasList = false;
    bool isListed = false;
    ForEachValue<int>(reference, tag::kReferencedFrameNumber, [&](int listed) {
        hasList = true;
        isListed = isListed || listed == frameNumber;
    });
    return isListed || !hasList;
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
