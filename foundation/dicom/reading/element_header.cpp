#include "foundation/dicom/reading/element_header.h"

#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/value_representation.h"

namespace quorvex::dicom {

/// Unknown letters may be a VR that the standard got later. Those have long lengths, and zeros in
/// the reserved bytes.
HeaderForm HeaderFormOf(const unsigned char* eight, Encoding encoding) noexcept {
    const bool hasVr = encoding.isExplicit && !IsItemTag(LoadTag(eight, encoding.isBigEndian));
    if (!hasVr) return HeaderForm::kImplicit;
    if (const auto* vr = VrOfLetters(eight[4], eight[5])) {
        return vr->hasLongLength ? HeaderForm::kLong : HeaderForm::kShort;
    }
    if (!IsCapital(eight[4]) || !IsCapital(eight[5])) return HeaderForm::kImplicit;
    return eight[6] == 0 && eight[7] == 0 ? HeaderForm::kLong : HeaderForm::kShort;
}

bool IsVr(const unsigned char* letters) noexcept {
    return VrOfLetters(letters[0], letters[1]) != nullptr;
}

ElementHeader ReadHeader(const unsigned char* bytes, Encoding encoding, HeaderForm form) noexcept {
    ElementHeader header{.tag = LoadTag(bytes, encoding.isBigEndian)};
    const bool isImplicit = form == HeaderForm::kImplicit;
    if (isImplicit || !IsCapital(bytes[4]) || !IsCapital(bytes[5])) {
        const DictionaryEntry& entry = LookUp(header.tag);
        header.vr = entry.vr;
        header.isUsOrSs = entry.choice == VrChoice::kUsOrSs;
    }
    if (isImplicit) {
        header.length = Load<std::uint32_t>(bytes + 4, encoding.isBigEndian);
        header.isGuessed = encoding.isExplicit && !IsItemTag(header.tag);
        return header;
    }
    if (const auto* vr = VrOfLetters(bytes[4], bytes[5])) header.vr = vr->vr;
    header.length = form == HeaderForm::kLong
                        ? Load<std::uint32_t>(bytes + 8, encoding.isBigEndian)
                        : Load<std::uint16_t>(bytes + 6, encoding.isBigEndian);
    if (form == HeaderForm::kLong) header.bytes = kLongHeader;
    return header;
}

}  // namespace quorvex::dicom
