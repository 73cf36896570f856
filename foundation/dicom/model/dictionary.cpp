#include "foundation/dicom/model/dictionary.h"

#include "foundation/dicom/model/tags.h"

#include <algorithm>
#include <iterator>

namespace quorvex::dicom {
namespace {

/// An entry for every tag that agrees with its own in the bits of the mask.
struct RepeatingEntry {
    std::uint32_t mask;
    DictionaryEntry entry;
};

#include "foundation/dicom/model/dictionary_table.inc"

constexpr bool IsAscending() {
    for (std::size_t i = 1; i < std::size(kEntries); ++i) {
        if (kEntries[i - 1].tag >= kEntries[i].tag) return false;
    }
    return true;
}
static_assert(IsAscending());

constexpr DictionaryEntry kUnknown = {0, MC_VR_UN, VrChoice::kFixed, "1", ""};
constexpr DictionaryEntry kGroupLength = {0, MC_VR_UL, VrChoice::kFixed, "1", ""};
constexpr DictionaryEntry kPrivateCreator = {0, MC_VR_LO, VrChoice::kFixed, "1", ""};

const DictionaryEntry& LookUpByRule(std::uint32_t tag) noexcept {
    const std::uint32_t element = ElementOf(tag);
    if (IsGroupLength(tag)) return kGroupLength;
    if (IsPrivate(tag)) return element >= 0x10 && element <= 0xFF ? kPrivateCreator : kUnknown;
    const auto* repeating =
        std::find_if(std::begin(kRepeating), std::end(kRepeating),
                     [&](const RepeatingEntry& row) { return (tag & row.mask) == row.entry.tag; });
    return repeating == std::end(kRepeating) ? kUnknown : repeating->entry;
}

}  // namespace

const DictionaryEntry& LookUp(std::uint32_t tag) noexcept {
    const auto* place = std::lower_bound(
        std::begin(kEntries), std::end(kEntries), tag,
        [](const DictionaryEntry& entry, std::uint32_t t) { return entry.tag < t; });
    if (place != std::end(kEntries) && place->tag == tag) return *place;
    return LookUpByRule(tag);
}

}  // namespace quorvex::dicom
