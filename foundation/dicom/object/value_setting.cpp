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
#include <optional>
#include <utility>

namespace quorvex::dicom {
namespace {

/// US or SS: as the number wants it, or else as Pixel Representation does.
MC_VR UsOrSs(const DataSet& dataSet, const Number& number) {
    if (number.AsWhole() < 0) return MC_VR_SS;
    const Element* pixels = dataSet.Find(tag::kPixelRepresentation);
    const auto isSigned = pixels != nullptr ? BinaryNumber(dataSet, *pixels, 0) : std::nullopt;
    return isSigned && isSigned->AsWhole() != 0 ? MC_VR_SS : MC_VR_US;
}

MC_VR VrFor(const DataSet& dataSet, std::uint32_t tag, const Number* number) {
    const DictionaryEntry& entry = LookUp(tag);
    if (entry.choice == VrChoice::kUsOrSs && number != nullptr) return UsOrSs(dataSet, *number);
    if (entry.vr != MC_VR_UN) return entry.vr;
    const Element* present = dataSet.Find(tag);
    if (present != nullptr && present->vr != MC_VR_UN) return present->vr;
    if (number == nullptr) return MC_VR_LO;
    return number->isReal ? MC_VR_FD : MC_VR_SL;
}

void AppendWhole(ByteBuffer& value, std::int64_t whole, std::size_t unit) {
    const auto bytes = std::bit_cast<std::array<unsigned char, sizeof whole>>(whole);
    value.insert(value.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(unit));
}

void AppendReal(ByteBuffer& value, double real, std::size_t unit) {
    if (unit == sizeof(float)) {
        AppendNumber(value, std::bit_cast<std::uint32_t>(static_cast<float>(real)));
    } else {
        AppendNumber(value, std::bit_cast<std::uint64_t>(real));
    }
}

void AppendBinary(ByteBuffer& value, const ValueRepresentation& vr, const Number& number) {
    if (vr.kind == ValueKind::kTag) {
        const auto tag = number.As<std::uint32_t>();
        AppendNumber(value, static_cast<std::uint16_t>(GroupOf(tag)));
        AppendNumber(value, static_cast<std::uint16_t>(ElementOf(tag)));
    } else if (vr.kind == ValueKind::kReal || vr.vr == MC_VR_OF || vr.vr == MC_VR_OD) {
        AppendReal(value, number.AsReal(), vr.unit);
    } else {
        AppendWhole(value, number.AsWhole(), vr.unit);
    }
}

std::string TextFor(const ValueRepresentation& vr, const Number& number) {
    if (vr.vr == MC_VR_IS) return std::to_string(number.AsWhole());
    return vr.vr == MC_VR_DS ? DecimalString(number) : TextOfNumber(number);
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

/// The numbers of a backslash-separated text as stored; nothing where one of them is none.
std::optional<ByteBuffer> BinaryOfText(std::string_view text, const ValueRepresentation& vr) {
    ByteBuffer bytes;
    std::size_t position = text.empty() ? kBehindLastValue : 0;
    while (position != kBehindLastValue) {
        const auto number = NumberOfText(TakeValue(text, position), vr);
        if (!number) return std::nullopt;
        AppendBinary(bytes, vr, *number);
    }
    return bytes;
}

}  // namespace

bool SetNumber(DataSet& dataSet, std::uint32_t tag, const Number& number, bool isNext) {
    const ValueRepresentation& vr = Describe(VrToUse(dataSet, tag, &number, isNext));
    if (vr.kind == ValueKind::kSequence) return false;
    if (IsKeptAsText(vr)) {
        PutText(dataSet, tag, vr.vr, TextFor(vr, number), isNext);
        return true;
    }
    ByteBuffer bytes;
    AppendBinary(bytes, vr, number);
    PutBinary(dataSet, tag, vr.vr, bytes, isNext);
    return true;
}

bool SetText(DataSet& dataSet, std::uint32_t tag, const std::string& text, bool isNext) {
    const auto hint = LeadingNumber(text);
    const bool isOpen = LookUp(tag).choice == VrChoice::kUsOrSs && hint;
    const MC_VR chosen = VrToUse(dataSet, tag, isOpen ? &*hint : nullptr, isNext);
    const ValueRepresentation& vr = Describe(chosen);
    if (vr.kind == ValueKind::kSequence) return false;
    if (IsKeptAsText(vr) || vr.vr == MC_VR_UN) {
        PutText(dataSet, tag, vr.vr, text, isNext);
        return true;
    }
    const auto bytes = BinaryOfText(text, vr);
    if (bytes) PutBinary(dataSet, tag, vr.vr, *bytes, isNext);
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
