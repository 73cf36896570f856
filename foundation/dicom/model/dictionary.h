/// The standard's data elements.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>

namespace quorvex::dicom {

/// VRs that the standard leaves open until the data set is known.
enum class VrChoice : std::uint8_t { kFixed, kUsOrSs, kUsOrOw, kUsOrSsOrOw, kObOrOw };

struct DictionaryEntry {
    std::uint32_t tag;
    MC_VR vr;  ///< of an open one the form that implicit VR files have: US or OW
    VrChoice choice;
    const char* vm;       ///< "1", "1-n", "2-2n"
    const char* keyword;  ///< "PatientName"; empty for group lengths and private creators
};

/// A word of such an attribute is one of either sign, whatever VR a file gives it.
[[nodiscard]] constexpr bool HasWordsOfEitherSign(const DictionaryEntry& entry) noexcept {
    return entry.choice == VrChoice::kUsOrSs || entry.choice == VrChoice::kUsOrSsOrOw;
}

/// What is known of a tag; for one that is not known an entry of VR UN and no keyword. Repeating
/// groups are found by their mask, group lengths are UL and private creators LO.
[[nodiscard]] const DictionaryEntry& LookUp(std::uint32_t tag) noexcept;

}  // namespace quorvex::dicom
