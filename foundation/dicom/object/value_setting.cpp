#include "foundation/dicom/object/value_setting.h"

#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/element_values.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/text/text_codec.h"
#include "foundation/types/utf.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace quorvex::dicom {
namespace {

/// US or SS: as the number wants it, or else as Pixel Representation does.
MC_VR UsOrSs(const DataSet& dataSet, const Number& number) {
    if (number.AsReal() <= -1.0) return MC_VR_SS;
    if (!number.WholeWithin(INT16_MIN, INT16_MAX)) return MC_VR_US;
    const Element* pixels = dataSet.Find(tag::kPixelRepresentation);
    const auto isSigned = pixels != nullptr ? BinaryNumber(dataSet, *pixels, 0) : std::nullopt;
    return isSigned && isSigned->whole != 0 ? MC_VR_SS : MC_VR_US;
}

MC_VR VrFor(const DataSet& dataSet, std::uint32_t tag, const Number* number) {
    const DictionaryEntry& entry = LookUp(tag);
    if (entry.choice == VrChoice::kUsOrSs && number != nullptr) return UsOrSs(dataSet, *number);
    if (entry.vr != MC_VR_UN) return entry.vr;
    const Element* present = dataSet.Find(tag);
    if (present != nullptr && present->vr != MC_VR_UN) return present->vr;
    if (number == nullptr) return MC_VR_LO;
    if (number->isReal) return MC_VR_FD;
    return number->As<std::int32_t>() ? MC_VR_SL : MC_VR_SV;
}

void AppendWhole(ByteBuffer& value, std::int64_t whole, std::size_t unit) {
    const auto bytes = std::bit_cast<std::array<unsigned char, sizeof whole>>(whole);
    value.insert(value.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(unit));
}

bool AppendReal(ByteBuffer& value, const Number& number, std::size_t unit) {
    if (unit != sizeof(float)) {
        AppendNumber(value, std::bit_cast<std::uint64_t>(number.AsReal()));
        return true;
    }
    const auto real = number.As<float>();
    if (real) AppendNumber(value, std::bit_cast<std::uint32_t>(*real));
    return real.has_value();
}

struct WholeRange {
    std::int64_t least = 0;
    std::int64_t most = 0;
};

/// What an attribute of whole numbers can hold: either sign where nothing says which one it has.
WholeRange RangeOf(std::uint32_t tag, const ValueRepresentation& vr) {
    const unsigned bits = 8U * vr.unit;
    const std::int64_t half = std::numeric_limits<std::int64_t>::max() >> (64U - bits);
    const bool hasNoSign =
        vr.kind != ValueKind::kWhole || HasWordsOfEitherSign(LookUp(tag)) || IsDescriptor(tag);
    const bool isWide = bits == 64U;  // the upper half of unsigned ones is out of our reach
    return {.least = vr.isSigned || hasNoSign ? -half - 1 : 0,
            .most = isWide || (vr.isSigned && !hasNoSign) ? half : 2 * half + 1};
}

/// False where the attribute cannot hold the number.
bool AppendBinary(ByteBuffer& value, std::uint32_t tag, const ValueRepresentation& vr,
                  const Number& number) {
    if (vr.kind == ValueKind::kReal || vr.vr == MC_VR_OF || vr.vr == MC_VR_OD)
        return AppendReal(value, number, vr.unit);
    if (vr.kind == ValueKind::kTag) {
        const auto named = number.WholeWithin(INT32_MIN, UINT32_MAX);  // in an int they go below 0
        if (!named) return false;
        AppendNumber(value,
                     static_cast<std::uint16_t>(GroupOf(static_cast<std::uint32_t>(*named))));
        AppendNumber(value,
                     static_cast<std::uint16_t>(ElementOf(static_cast<std::uint32_t>(*named))));
        return true;
    }
    const auto [least, most] = RangeOf(tag, vr);
    const auto whole = number.WholeWithin(least, most);
    if (whole) AppendWhole(value, *whole, vr.unit);
    return whole.has_value();
}

/// Nothing for what an integer string or a decimal string cannot say (PS3.5 section 6.2).
std::optional<std::string> TextFor(const ValueRepresentation& vr, const Number& number) {
    if (vr.vr == MC_VR_IS) {
        const auto whole = number.As<std::int32_t>();
        return whole ? std::optional(std::to_string(*whole)) : std::nullopt;
    }
    if (vr.vr != MC_VR_DS) return TextOfNumber(number);
    return std::isfinite(number.AsReal()) ? std::optional(DecimalString(number)) : std::nullopt;
}

bool IsKeptAsText(const ValueRepresentation& vr) {
    return vr.kind == ValueKind::kText || vr.kind == ValueKind::kProse;
}

/// The element for adding to it, its value owned, little endian and, as text, in UTF-8.
Element& Extensible(DataSet& dataSet, Element& element) {
    if (std::get_if<ByteBuffer>(element.content.get()) != nullptr) return element;
    ByteBuffer value;
    const Bytes stored = dataSet.ValueOf(element);
    const bool isText = IsText(MeaningOf(element));
    if (isText) {
        const std::string text = Utf8FromUtf16(DecodedText(dataSet, element));
        value.assign(text.begin(), text.end());
        while (!value.empty() && (value.back() == ' ' || value.back() == 0)) value.pop_back();
    } else {
        value.assign(stored.begin(), stored.end());
        if (element.isBigEndian) SwapBytes(value.data(), value.size(), Describe(element.vr).unit);
    }
    element.content = std::make_shared<Content>(std::move(value));  // nothing fails from here on
    if (isText) element.isUtf8 = true;
    element.isBigEndian = false;
    element.isCut = false;
    return element;
}

/// Whether the meaning of the element's text depends on the data set's character set.
bool DependsOnCharacterSet(const DataSet& dataSet, const Element& element) {
    return MeaningOf(element).hasCharacterSet && !element.isUtf8 &&
           !IsPlainText(CharactersOf(dataSet.ValueOf(element)));
}

/// Keeps the meaning of text that was read when its character set is about to change.
void KeepMeaningOfText(DataSet& dataSet) {
    for (std::size_t i = 0; i < dataSet.Elements().size(); ++i) {
        const std::uint32_t tag = dataSet.Elements()[i].tag;
        Element& element = *dataSet.FindMutable(tag);
        if (DependsOnCharacterSet(dataSet, element)) Extensible(dataSet, element);
    }
}

bool OwnsBytes(const Element& element) {
    return std::get_if<ByteBuffer>(element.content.get()) != nullptr;
}

/// Adds to the value of an element; false when there is none and the attribute must be set.
bool Extend(DataSet& dataSet, std::uint32_t tag, Bytes added) {
    Element* element = dataSet.FindMutable(tag);
    const bool isBytes = element != nullptr && ItemsOf(*element) == nullptr &&
                         dataSet.FragmentsOf(*element).IsEmpty();
    if (!isBytes) return false;
    if (OwnsBytes(*element)) {
        auto& value = Unshared<ByteBuffer>(*element);
        value.insert(value.end(), added.begin(), added.end());
        return true;
    }
    Element owned = *element;
    auto& value = Unshared<ByteBuffer>(Extensible(dataSet, owned));
    value.insert(value.end(), added.begin(), added.end());
    *element = std::move(owned);
    return true;
}

void PutTextAlone(DataSet& dataSet, std::uint32_t tag, MC_VR vr, const std::string& text,
                  bool isNext) {
    ByteBuffer value(text.begin(), text.end());
    if (isNext) {
        value.insert(value.begin(), '\\');
        if (Extend(dataSet, tag, value)) {
            dataSet.FindMutable(tag)->isUtf8 = true;
            return;
        }
        value.erase(value.begin());
    }
    dataSet.PutBytes(tag, vr, std::move(value)).isUtf8 = true;
}

void PutText(DataSet& dataSet, std::uint32_t tag, MC_VR vr, const std::string& text, bool isNext) {
    const bool changesMeaning =
        tag == tag::kSpecificCharacterSet &&
        std::ranges::any_of(dataSet.Elements(), [&](const Element& element) {
            return DependsOnCharacterSet(dataSet, element);
        });
    if (!changesMeaning) return PutTextAlone(dataSet, tag, vr, text, isNext);
    DataSet changed = dataSet;
    KeepMeaningOfText(changed);
    PutTextAlone(changed, tag, vr, text, isNext);
    dataSet = std::move(changed);
}

void PutBinary(DataSet& dataSet, std::uint32_t tag, MC_VR vr, const ByteBuffer& bytes,
               bool isNext) {
    if (isNext && Extend(dataSet, tag, bytes)) return;
    dataSet.PutBytes(tag, vr, bytes);
}

/// The count ahead of a descriptor's first mapped value says nothing of its sign. The bits stay.
void MarkSign(DataSet& dataSet, std::uint32_t tag, const Number& number) {
    if (!IsDescriptor(tag) || number.AsReal() > -1.0) return;
    Element* element = dataSet.FindMutable(tag);
    if (element != nullptr && element->vr == MC_VR_US) element->vr = MC_VR_SS;
}

/// What is added must be of the VR of what is there.
MC_VR VrToUse(const DataSet& dataSet, std::uint32_t tag, const Number* number, bool isNext) {
    const Element* present = isNext ? dataSet.Find(tag) : nullptr;
    return present != nullptr ? MeaningOf(*present).vr : VrFor(dataSet, tag, number);
}

std::optional<Number> NumberOfText(std::string_view text, const ValueRepresentation& vr) {
    if (vr.kind != ValueKind::kTag) return LeadingNumber(text);
    const auto tag = TagOfText(text);
    return tag ? std::optional(Number::Whole(*tag)) : LeadingNumber(text);
}

/// The numbers of a backslash-separated text as stored; nothing where one of them is none, or none
/// that the attribute can hold.
std::optional<ByteBuffer> BinaryOfText(std::string_view text, std::uint32_t tag,
                                       const ValueRepresentation& vr) {
    ByteBuffer bytes;
    std::size_t position = text.empty() ? kBehindLastValue : 0;
    while (position != kBehindLastValue) {
        const auto number = NumberOfText(TakeValue(text, position), vr);
        if (!number || !AppendBinary(bytes, tag, vr, *number)) return std::nullopt;
    }
    return bytes;
}

/// The number that decides between US and SS: the lowest of a descriptor's text, else the first.
std::optional<Number> DecisiveNumber(std::string_view text, std::uint32_t tag) {
    auto decisive = LeadingNumber(text);
    std::size_t position = IsDescriptor(tag) && !text.empty() ? 0 : kBehindLastValue;
    while (position != kBehindLastValue) {
        const auto number = LeadingNumber(TakeValue(text, position));
        if (decisive && number && number->AsReal() < decisive->AsReal()) decisive = number;
    }
    return decisive;
}

}  // namespace

bool SetNumber(DataSet& dataSet, std::uint32_t tag, const Number& number, bool isNext) {
    const ValueRepresentation& vr = Describe(VrToUse(dataSet, tag, &number, isNext));
    if (vr.kind == ValueKind::kSequence) return false;
    if (IsKeptAsText(vr)) {
        const auto text = TextFor(vr, number);
        if (text) PutText(dataSet, tag, vr.vr, *text, isNext);
        return text.has_value();
    }
    ByteBuffer bytes;
    if (!AppendBinary(bytes, tag, vr, number)) return false;
    PutBinary(dataSet, tag, vr.vr, bytes, isNext);
    MarkSign(dataSet, tag, number);
    return true;
}

bool SetText(DataSet& dataSet, std::uint32_t tag, const std::string& text, bool isNext) {
    const auto hint = DecisiveNumber(text, tag);
    const bool isOpen = LookUp(tag).choice == VrChoice::kUsOrSs && hint;
    const MC_VR chosen = VrToUse(dataSet, tag, isOpen ? &*hint : nullptr, isNext);
    const ValueRepresentation& vr = Describe(chosen);
    if (vr.kind == ValueKind::kSequence) return false;
    if (IsKeptAsText(vr) || vr.vr == MC_VR_UN) {
        PutText(dataSet, tag, vr.vr, text, isNext);
        return true;
    }
    const auto bytes = BinaryOfText(text, tag, vr);
    if (bytes) PutBinary(dataSet, tag, vr.vr, *bytes, isNext);
    if (bytes && hint) MarkSign(dataSet, tag, *hint);
    return bytes.has_value();
}

bool SetItem(DataSet& dataSet, std::uint32_t tag, std::shared_ptr<DataSet> item, bool isNext) {
    if (item->Depth() >= kDeepestNesting) return RefuseBy(Limit::kDeepestNesting);
    Element* element = isNext ? dataSet.FindMutable(tag) : nullptr;
    if (element == nullptr || ItemsOf(*element) == nullptr) {
        dataSet.PutItems(tag, {std::move(item)});
    } else {
        Unshared<Items>(*element).push_back(std::move(item));
    }
    return true;
}

}  // namespace quorvex::dicom
