#include "foundation/dicom/element_values.h"

#include "foundation/dicom/byte_order.h"
#include "foundation/dicom/dictionary.h"
#include "foundation/dicom/text_codec.h"
#include "foundation/types/utf.h"

#include <algorithm>
#include <bit>

namespace quorvex::dicom {
namespace {

constexpr std::uint32_t kLutData = 0x00283006;
constexpr std::size_t kTagBytes = 4;
constexpr unsigned char kEscape = 0x1B;

/// The first number of these is a count, the second a stored pixel value of either sign: callers
/// take them unsigned and know the sign themselves, whatever the VR of the file says.
constexpr std::uint32_t kDescriptors[] = {0x00281100, 0x00281101, 0x00281102, 0x00281103,
                                          0x00281111, 0x00281112, 0x00281113, 0x00283002};

bool IsDescriptor(std::uint32_t tag) {
    return std::find(std::begin(kDescriptors), std::end(kDescriptors), tag) !=
           std::end(kDescriptors);
}

/// How a value that is not text splits into numbers.
struct NumberForm {
    std::size_t bytes = 0;  ///< 0 where it does not
    bool isReal = false;
    bool isSigned = false;
    bool isTag = false;
};

NumberForm FormOf(const Element& element) {
    if (element.tag == kLutData) return {.bytes = 2};
    const ValueRepresentation& vr = MeaningOf(element);
    switch (vr.kind) {
        case ValueKind::kWhole:
            return {.bytes = vr.unit, .isSigned = vr.isSigned && !IsDescriptor(element.tag)};
        case ValueKind::kReal:
            return {.bytes = vr.unit, .isReal = true};
        case ValueKind::kTag:
            return {.bytes = kTagBytes, .isTag = true};
        case ValueKind::kRaw:
            return {.bytes = vr.unit, .isReal = vr.vr == MC_VR_OF || vr.vr == MC_VR_OD};
        default:
            return {};
    }
}

template <std::unsigned_integral Stored>
Number LoadNumber(const unsigned char* bytes, bool isBigEndian, const NumberForm& form) {
    const Stored stored = Load<Stored>(bytes, isBigEndian);
    if constexpr (sizeof(Stored) == 4) {
        if (form.isReal) return Number::Real(static_cast<double>(std::bit_cast<float>(stored)));
    }
    if constexpr (sizeof(Stored) == 8) {
        if (form.isReal) return Number::Real(std::bit_cast<double>(stored));
    }
    using Signed = std::make_signed_t<Stored>;
    return Number::Whole(form.isSigned ? static_cast<std::int64_t>(static_cast<Signed>(stored))
                                       : static_cast<std::int64_t>(stored));
}

Number LoadNumber(const unsigned char* bytes, bool isBigEndian, const NumberForm& form) {
    if (form.isTag) {
        const std::uint32_t group = Load<std::uint16_t>(bytes, isBigEndian);
        return Number::Whole(group << 16U | Load<std::uint16_t>(bytes + 2, isBigEndian));
    }
    switch (form.bytes) {
        case 1:
            return LoadNumber<std::uint8_t>(bytes, isBigEndian, form);
        case 2:
            return LoadNumber<std::uint16_t>(bytes, isBigEndian, form);
        case 4:
            return LoadNumber<std::uint32_t>(bytes, isBigEndian, form);
        default:
            return LoadNumber<std::uint64_t>(bytes, isBigEndian, form);
    }
}

bool IsOneValue(const Element& element, const ValueRepresentation& vr) {
    if (element.tag == kLutData) return false;
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

const ValueRepresentation& MeaningOf(const Element& element) noexcept {
    return Describe(element.vr == MC_VR_UN ? LookUp(element.tag).vr : element.vr);
}

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

std::optional<Number> BinaryNumber(const DataSet& dataSet, const Element& element,
                                   std::size_t index) noexcept {
    const NumberForm form = FormOf(element);
    const Bytes value = dataSet.ValueOf(element);
    if (form.bytes == 0 || index >= value.size() / form.bytes) return std::nullopt;
    return LoadNumber(value.data() + index * form.bytes, element.isBigEndian, form);
}

std::optional<std::string> BinaryText(const DataSet& dataSet, const Element& element,
                                      std::size_t index) {
    const auto number = BinaryNumber(dataSet, element, index);
    if (!number) return std::nullopt;
    const MC_VR vr = MeaningOf(element).vr;
    if (vr == MC_VR_AT) return TextOfTag(number->As<std::uint32_t>());
    if (vr == MC_VR_UV) return std::to_string(number->As<std::uint64_t>());
    if (vr == MC_VR_FL || vr == MC_VR_OF) return TextOfFloat(number->As<float>());
    return TextOfNumber(*number);
}

bool IsPlainText(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x80 && byte != kEscape;
    });
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
