#include "foundation/dicom/element_header.h"

#include "foundation/dicom/dictionary.h"
#include "foundation/dicom/value_representation.h"

namespace quorvex::dicom {
namespace {

enum class Form { kImplicit, kShort, kLong };

bool IsCapital(unsigned char c) {
    return c >= 'A' && c <= 'Z';
}

/// Letters that this table does not know may be a VR of later days, which have long lengths; the
/// reserved bytes then are zero.
Form FormOf(const unsigned char* eight, Encoding encoding) {
    const bool hasVr =
        encoding.isExplicit && GroupOf(LoadTag(eight, encoding.isBigEndian)) != kDelimiterGroup;
    if (!hasVr) return Form::kImplicit;
    if (const auto* vr = VrOfLetters(eight[4], eight[5])) {
        return vr->hasLongLength ? Form::kLong : Form::kShort;
    }
    if (!IsCapital(eight[4]) || !IsCapital(eight[5])) return Form::kImplicit;
    return eight[6] == 0 && eight[7] == 0 ? Form::kLong : Form::kShort;
}

}  // namespace

bool IsVr(const unsigned char* letters) noexcept {
    return VrOfLetters(letters[0], letters[1]) != nullptr;
}

std::size_t HeaderBytes(const unsigned char* eight, Encoding encoding) noexcept {
    return FormOf(eight, encoding) == Form::kLong ? kLongHeader : kShortHeader;
}

ElementHeader ReadHeader(const unsigned char* bytes, Encoding encoding) noexcept {
    ElementHeader header{.tag = LoadTag(bytes, encoding.isBigEndian)};
    const Form form = FormOf(bytes, encoding);
    if (form == Form::kImplicit) {
        const DictionaryEntry& entry = LookUp(header.tag);
        header.vr = entry.vr;
        header.isUsOrSs = entry.choice == VrChoice::kUsOrSs;
        header.length = Load<std::uint32_t>(bytes + 4, encoding.isBigEndian);
        header.isGuessed = encoding.isExplicit && GroupOf(header.tag) != kDelimiterGroup;
        return header;
    }
    if (const auto* vr = VrOfLetters(bytes[4], bytes[5])) header.vr = vr->vr;
    header.length = form == Form::kLong ? Load<std::uint32_t>(bytes + 8, encoding.isBigEndian)
                                        : Load<std::uint16_t>(bytes + 6, encoding.isBigEndian);
    if (form == Form::kLong) header.bytes = kLongHeader;
    return header;
}

}  // namespace quorvex::dicom
