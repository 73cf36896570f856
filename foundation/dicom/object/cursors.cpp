#include "foundation/dicom/object/cursors.h"

#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/element_values.h"
#include "foundation/dicom/text/text_codec.h"

namespace quorvex::dicom {
namespace {

/// Numbers in bytes of which nothing is known: those of the two usual sizes.
std::optional<Number> UnknownNumber(Bytes value) {
    if (value.size() == 2) return Number::Whole(Load<std::uint16_t>(value.data(), false));
    if (value.size() == 4) return Number::Whole(Load<std::uint32_t>(value.data(), false));
    return std::nullopt;
}

void LookAtText(const DataSet& dataSet, const Element& element, Cursor& cursor) {
    if (cursor.textForm != Cursor::TextForm::kUnknown) return;
    const bool isPlain = IsPlainText(CharactersOf(dataSet.ValueOf(element)));
    if (!isPlain) cursor.decoded = DecodedText(dataSet, element);
    cursor.textForm = isPlain ? Cursor::TextForm::kPlain : Cursor::TextForm::kDecoded;
}

template <class Text>
CString TakeTrimmed(Text text, ValueKind kind, Cursor& cursor) {
    if (kind != ValueKind::kProse) return Trimmed(TakeValue(text, cursor.position), kind);
    cursor.position = kBehindLastValue;
    return Trimmed(text, kind);
}

}  // namespace

std::optional<Number> TakeWrittenNumber(const DataSet& dataSet, const Element& element,
                                        Place& place) {
    if (place.position == kBehindLastValue) return std::nullopt;
    const Bytes value = dataSet.ValueOf(element);
    const auto number = LeadingNumber(TakeValue(CharactersOf(value), place.position));
    return number || MeaningOf(element).vr != MC_VR_UN ? number : UnknownNumber(value);
}

std::optional<CString> TakeText(const DataSet& dataSet, const Element& element, Cursor& cursor) {
    const ValueRepresentation& vr = MeaningOf(element);
    if (vr.kind == ValueKind::kSequence) return std::nullopt;
    if (!IsText(vr)) {
        const auto text = BinaryText(dataSet, element, cursor.index++);
        return text ? std::optional(CString(*text)) : std::nullopt;
    }
    if (cursor.position == kBehindLastValue) return std::nullopt;
    LookAtText(dataSet, element, cursor);
    const ValueKind kind = vr.vr == MC_VR_UN ? ValueKind::kText : vr.kind;
    if (cursor.textForm == Cursor::TextForm::kDecoded) {
        return TakeTrimmed(std::u16string_view(cursor.decoded), kind, cursor);
    }
    return TakeTrimmed(CharactersOf(dataSet.ValueOf(element)), kind, cursor);
}

std::shared_ptr<DataSet> TakeItem(const Element& element, Place& place) {
    const Items* items = ItemsOf(element);
    if (items == nullptr || place.index >= items->size()) return nullptr;
    return (*items)[place.index++];
}

}  // namespace quorvex::dicom
