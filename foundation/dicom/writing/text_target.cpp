#include "foundation/dicom/writing/text_target.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/types/utf.h"

#include <algorithm>

namespace quorvex::dicom {
namespace {

constexpr CharacterSets kUtf8 = {{CharacterSet::kIr192}, 1};

ByteBuffer AsBytes(std::string_view text) {
    return {text.begin(), text.end()};
}

bool HoldsAllText(const DataSet& dataSet, const TextTarget& target) {
    return std::ranges::all_of(dataSet.Elements(), [&](const Element& element) {
        if (const Items* items = ItemsOf(element)) {
            return std::ranges::all_of(*items, [&](const auto& item) {
                return HoldsAllText(*item, target.OfItem(*item));
            });
        }
        if (!Describe(element.vr).hasCharacterSet) return true;
        return WrittenText(element, dataSet.ValueOf(element), target).has_value();
    });
}

}  // namespace

TextTarget TextTarget::OfMain(const DataSet& main, bool isForcedToUtf8) {
    const auto stored = ParseCharacterSets(main.CharacterSetText());
    return {stored, isForcedToUtf8 ? kUtf8 : stored, isForcedToUtf8};
}

TextTarget TextTarget::OfItem(const DataSet& item) const {
    const auto itemStored = ParseCharacterSets(item.CharacterSetText());
    const bool hasItsOwn = item.Find(tag::kSpecificCharacterSet) != nullptr && !isForcedToUtf8;
    return {itemStored, hasItsOwn ? itemStored : written, isForcedToUtf8};
}

std::optional<ByteBuffer> WrittenText(const Element& element, Bytes value,
                                      const TextTarget& target) {
    const auto& stored = element.isUtf8 ? kUtf8 : target.stored;
    const std::string_view characters = CharactersOf(value);
    if (stored == target.written || IsPlainText(characters)) return AsBytes(characters);
    const bool isPersonName = element.vr == MC_VR_PN;
    const auto text = DecodeText(characters, stored, isPersonName);
    const auto written = EncodeText(text, target.written, isPersonName);
    if (!written) return std::nullopt;
    return AsBytes(*written);
}

bool HoldsAllText(const DataSet& main) {
    return HoldsAllText(main, TextTarget::OfMain(main, false));
}

}  // namespace quorvex::dicom
