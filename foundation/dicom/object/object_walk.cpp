#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/element_values.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/types/answer.h"
#include "quorvex/DicomObject.h"

namespace quorvex {
namespace {

using dicom::Bytes;
using dicom::DataSet;
using dicom::Element;

DcmElementView ViewOf(const DataSet& dataSet, const Element& element, int depth, int itemIndex) {
    const Bytes value = dataSet.ValueOf(element);
    const auto& entry = dicom::LookUp(element.tag);
    return {.tag = element.tag,
            .vr = element.vr,
            .dictionaryVr = entry.vr,
            .keyword = entry.keyword,
            .depth = depth,
            .itemIndex = itemIndex,
            .length = value.size(),
            .valueCount = dicom::ValueCount(dataSet, element),
            .data = value.data(),
            .isCut = element.isCut};
}

MC_STATUS Visit(const DcmElementView& view, void* user, ElementVisitor visitor) {
    const HostCode host;
    return visitor(view, user);
}

/// Data sets nest `kDeepestNesting` levels at most, so the walk may recurse.
bool Walk(const DataSet& dataSet, int depth, int itemIndex, void* user, ElementVisitor visitor) {
    for (const Element& element : dataSet.Elements()) {
        if (Visit(ViewOf(dataSet, element, depth, itemIndex), user, visitor) != kMcContinue)
            return false;
        const dicom::Items* items = dicom::ItemsOf(element);
        if (items == nullptr) continue;
        int index = 0;
        for (const auto& item : *items) {
            if (!Walk(*item, depth + 1, index++, user, visitor)) return false;
        }
    }
    return true;
}

}  // namespace

DCMRESULT CDcmObjectCommon::WalkElements(void* user, ElementVisitor visitor) const {
    return Answer(DCMRESULT{kDcmOutOfMemory}, [&]() -> DCMRESULT {
        if (visitor == nullptr) return kDcmFailure;
        const std::shared_ptr<const DataSet> kept =
            ObjectState::Of(*this).SharedContent();  // the visitor may change the object
        return Walk(*kept, 0, -1, user, visitor) ? kDcmSuccess : kDcmFailure;
    });
}

}  // namespace quorvex
