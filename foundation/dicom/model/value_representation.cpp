#include "foundation/dicom/model/value_representation.h"

#include <algorithm>
#include <array>

namespace quorvex::dicom {
namespace {

using detail::LetterPlace;

constexpr ValueRepresentation Text(MC_VR vr, const char (&letters)[3], bool hasCharacterSet,
                                   bool hasLongLength = false, std::uint8_t pad = ' ') {
    return {
        vr, {letters[0], letters[1], 0}, ValueKind::kText, false, hasLongLength, hasCharacterSet, 1,
        pad};
}

constexpr ValueRepresentation Prose(MC_VR vr, const char (&letters)[3], bool hasCharacterSet,
                                    bool hasLongLength) {
    return {vr,
            {letters[0], letters[1], 0},
            ValueKind::kProse,
            false,
            hasLongLength,
            hasCharacterSet,
            1,
            ' '};
}

constexpr ValueRepresentation Number(MC_VR vr, const char (&letters)[3], ValueKind kind,
                                     bool isSigned, std::uint8_t unit, bool hasLongLength = false) {
    return {vr, {letters[0], letters[1], 0}, kind, isSigned, hasLongLength, false, unit, 0};
}

constexpr ValueRepresentation Raw(MC_VR vr, const char (&letters)[3], std::uint8_t unit,
                                  ValueKind kind = ValueKind::kRaw) {
    return {vr, {letters[0], letters[1], 0}, kind, false, true, false, unit, 0};
}

constexpr std::array<ValueRepresentation, detail::kVrCount> kRows = {
    // in the order of their numbers
    Text(MC_VR_AE, "AE", false),
    Text(MC_VR_AS, "AS", false),
    Number(MC_VR_AT, "AT", ValueKind::kTag, false, 2),
    Text(MC_VR_CS, "CS", false),
    Text(MC_VR_DA, "DA", false),
    Text(MC_VR_DS, "DS", false),
    Text(MC_VR_DT, "DT", false),
    Text(MC_VR_IS, "IS", false),
    Text(MC_VR_LO, "LO", true),
    Prose(MC_VR_LT, "LT", true, false),
    Text(MC_VR_PN, "PN", true),
    Text(MC_VR_SH, "SH", true),
    Prose(MC_VR_ST, "ST", true, false),
    Text(MC_VR_TM, "TM", false),
    Text(MC_VR_UC, "UC", true, true),
    Text(MC_VR_UI, "UI", false, false, 0),
    Prose(MC_VR_UR, "UR", false, true),
    Prose(MC_VR_UT, "UT", true, true),
    Raw(MC_VR_SQ, "SQ", 1, ValueKind::kSequence),
    Raw(MC_VR_UN, "UN", 1),
    Raw(MC_VR_OB, "OB", 1),
    Raw(MC_VR_OF, "OF", 4),
    Raw(MC_VR_OD, "OD", 8),
    Raw(MC_VR_OW, "OW", 2),
    Raw(MC_VR_OL, "OL", 4),
    Raw(MC_VR_OV, "OV", 8),
    Number(MC_VR_FL, "FL", ValueKind::kReal, true, 4),
    Number(MC_VR_FD, "FD", ValueKind::kReal, true, 8),
    Number(MC_VR_SL, "SL", ValueKind::kWhole, true, 4),
    Number(MC_VR_SS, "SS", ValueKind::kWhole, true, 2),
    Number(MC_VR_SV, "SV", ValueKind::kWhole, true, 8, true),
    Number(MC_VR_UL, "UL", ValueKind::kWhole, false, 4),
    Number(MC_VR_US, "US", ValueKind::kWhole, false, 2),
    Number(MC_VR_UV, "UV", ValueKind::kWhole, false, 8, true),
};

constexpr bool IsInOrder() {
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        if (kRows[i].vr != static_cast<MC_VR>(i + 1)) return false;
    }
    return true;
}
static_assert(IsInOrder());

constexpr auto kNumbers = [] {
    std::array<std::uint8_t, detail::kLetterPairs> numbers{};
    for (const auto& row : kRows) {
        numbers[LetterPlace(static_cast<unsigned char>(row.letters[0]),
                            static_cast<unsigned char>(row.letters[1]))] =
            static_cast<std::uint8_t>(row.vr);
    }
    return numbers;
}();

}  // namespace

namespace detail {

constinit const std::array<ValueRepresentation, kVrCount> kVrRows = kRows;
constinit const std::array<std::uint8_t, kLetterPairs> kVrByLetters = kNumbers;

}  // namespace detail
}  // namespace quorvex::dicom
