#include "foundation/dicom/object/element_copy.h"

#include "foundation/dicom/model/binary_number.h"
#include "foundation/dicom/object/object_state.h"

#include <memory>
#include <optional>
#include <vector>

namespace quorvex {
namespace {

using dicom::DataSet;
using dicom::Element;

/// An element that owns its value. Nothing for fragments, which count in another source.
std::optional<Element> OwnedCopy(const DataSet& from, const Element& element) {
    if (!from.FragmentsOf(element).IsEmpty()) return std::nullopt;
    Element copy = element;
    copy.isCut = false;
    if (copy.content) return copy;
    const dicom::Bytes stored = from.ValueOf(element);
    copy.content =
        std::make_shared<dicom::Content>(dicom::ByteBuffer(stored.begin(), stored.end()));
    return copy;
}

bool IsWordOfEitherSign(const Element& element) {
    return dicom::LookUp(element.tag).choice == dicom::VrChoice::kUsOrSs &&
           !dicom::IsDescriptor(element.tag) && (element.vr == MC_VR_US || element.vr == MC_VR_SS);
}

/// Whether its first word has the highest bit.
bool IsSignBitSet(const DataSet& dataSet, const Element& element) {
    const auto number = BinaryNumber(dataSet, element, 0);
    return number && (number->AsReal() < 0.0 || number->AsReal() >= 32768.0);
}

}  // namespace

bool HasElement(const CDcmObjectCommon& object, std::uint32_t tag) noexcept {
    return ObjectState::Of(object).Content().Find(tag) != nullptr;
}

bool CopyElement(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag) {
    // Kept here: the two may share their content.
    const auto from = ObjectState::Of(source).SharedContent();
    const Element* element = from->Find(tag);
    if (element == nullptr) return false;
    auto copy = OwnedCopy(*from, *element);
    ObjectState& state = ObjectState::Of(target);
    state.ForgetCursor(tag);
    if (!copy) return false;
    state.Writable().Put(*std::move(copy));
    return true;
}

void CopyElements(const CDcmObjectCommon& source, CDcmObjectCommon& target,
                  bool (*isWanted)(const CDcmObjectCommon& target, std::uint32_t tag)) {
    const auto from = ObjectState::Of(source).SharedContent();
    for (const Element& element : from->Elements()) {
        if (isWanted(target, element.tag)) CopyElement(source, target, element.tag);
    }
}

void FitSigns(CDcmObjectCommon& object, bool wasSigned, bool isSigned) {
    const auto content = ObjectState::Of(object).SharedContent();
    for (const Element& element : content->Elements()) {
        if (!IsWordOfEitherSign(element)) continue;
        if (wasSigned != isSigned && IsSignBitSet(*content, element)) {
            object.RemoveValue(element.tag);
        } else if (element.vr != (isSigned ? MC_VR_SS : MC_VR_US)) {
            object.SetValueRepresentation(element.tag, isSigned ? MC_VR_SS : MC_VR_US);
        }
    }
}

}  // namespace quorvex
