#include "foundation/dicom/model/element_values.h"

#include "foundation/dicom/model/binary_number.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/text/text_codec.h"
#include "foundation/types/utf.h"

#include <algorithm>

namespace quorvex::dicom {
namespace {

bool IsOneValue(const Element& element, const ValueRepresentation& vr) {
    if (element.tag == tag::kLUTData) return false;
    return vr.kind == ValueKind::kRaw || vr.kind == ValueKind::kProse;
}

std::size_t Backslashes(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\\'));
}

std::size_t TextCount(const DataSet& dataSet, const Element& element, std::string_view text) {
    if (IsPlainText(text)) return 1 + Backslashes(text);
    const std::u16string decoded = DecodedText(dataSet, element);
    return 1 + static_cast<std::size_t>(std::count(decoded.begin(), decoded.end(), u'\\'));
}

template <class Text>
Text TrimmedAt(Text text, bool bothEnds) {
    const auto isPadding = [](auto c) { return c == ' ' || c == 0; };
    while (!text.empty() && isPadding(text.back())) text.remove_suffix(1);
    while (bothEnds && !text.empty() && isPadding(text.front())) text.remove_prefix(1);
    return text;
}

}  // namespace

std::size_t ValueCount(const DataSet& dataSet, const Element& element) {
    if (const Items* items = ItemsOf(element)) return items->size();
    const Bytes value = dataSet.ValueOf(element);
    const ValueRepresentation& vr = MeaningOf(element);
    if (!dataSet.FragmentsOf(element).IsEmpty()) return 1;
    if (value.empty()) return 0;
    if (IsOneValue(element, vr)) return 1;
    if (vr.kind == ValueKind::kText) return TextCount(dataSet, element, CharactersOf(value));
    const NumberForm form = FormOf(element);
    return form.bytes == 0 ? 0 : value.size() / form.bytes;
}

std::optional<std::size_t> ValueLength(const DataSet& dataSet, const Element& element,
                                       std::size_t index) {
    const ValueRepresentation& vr = MeaningOf(element);
    const Bytes value = dataSet.ValueOf(element);
    if (ItemsOf(element) != nullptr || value.empty()) return std::nullopt;
    if (IsOneValue(element, vr)) return index == 0 ? std::optional(value.size()) : std::nullopt;
    if (vr.kind != ValueKind::kText) {
        const std::size_t bytes = FormOf(element).bytes;
        return bytes != 0 && index < value.size() / bytes ? std::optional(bytes) : std::nullopt;
    }
    std::size_t position = 0;
    for (; index > 0 && position != kBehindLastValue; --index) {
        static_cast<void>(TakeValue(CharactersOf(value), position));
    }
    if (position == kBehindLastValue) return std::nullopt;
    return TakeValue(CharactersOf(value), position).size();
}

std::optional<std::string> BinaryText(const DataSet& dataSet, const Element& element,
                                      std::size_t index) {
    const auto number = BinaryNumber(dataSet, element, index);
    if (!number) return std::nullopt;
    const MC_VR vr = MeaningOf(element).vr;
    if (vr == MC_VR_AT) return TextOfTag(static_cast<std::uint32_t>(number->whole));
    if (vr == MC_VR_UV && number->isReal) {
        const unsigned char* stored =
            dataSet.ValueOf(element).data() + index * sizeof number->whole;
        return std::to_string(Load<std::uint64_t>(stored, element.isBigEndian));
    }
    if (vr == MC_VR_FL || vr == MC_VR_OF) return TextOfFloat(static_cast<float>(number->real));
    return TextOfNumber(*number);
}

std::u16string DecodedText(const DataSet& dataSet, const Element& element) {
    const std::string_view text = CharactersOf(dataSet.ValueOf(element));
    const ValueRepresentation& vr = MeaningOf(element);
    if (element.isUtf8 || IsPlainText(text)) return Utf16FromUtf8(text);
    const bool hasCharacterSet = vr.hasCharacterSet || vr.vr == MC_VR_UN;
    const std::string_view sets = hasCharacterSet ? dataSet.CharacterSetText() : std::string_view();
    return DecodeText(text, ParseCharacterSets(sets), vr.vr == MC_VR_PN);
}

std::string_view Trimmed(std::string_view text, ValueKind kind) noexcept {
    return TrimmedAt(text, kind == ValueKind::kText);
}

std::u16string_view Trimmed(std::u16string_view text, ValueKind kind) noexcept {
    return TrimmedAt(text, kind == ValueKind::kText);
}

}  // namespace quorvex::dicom
