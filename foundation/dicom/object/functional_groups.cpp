#include "foundation/dicom/object/functional_groups.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

enum class Holds { kNumbers, kItem };
struct Setting {
    std::uint32_t tag;
    Holds holds = Holds::kNumbers;
};

/// One functional group: its sequence, and the attributes in it that decide how a frame looks.
struct GroupMacro {
    std::uint32_t sequence;
    std::array<Setting, 3> settings;
    std::array<std::uint32_t, 2> companions{};  ///< taken along where a setting is taken
};
constexpr std::uint32_t kNoTag = 0;
constexpr std::size_t kModality = 0;  ///< place in the list
constexpr GroupMacro kMacros[] = {
    // Pixel Value Transformation; a Modality LUT at the top level rules it out
    {tag::kPixelValueTransformationSequence,
     {{{tag::kRescaleIntercept}, {tag::kRescaleSlope}, {tag::kModalityLUTSequence, Holds::kItem}}},
     {tag::kRescaleType}},
    // Frame VOI LUT
    {tag::kFrameVOILUTSequence,
     {{{tag::kWindowCenter}, {tag::kWindowWidth}, {tag::kVOILUTSequence, Holds::kItem}}},
     {tag::kVOILUTFunction, tag::kWindowCenterWidthExplanation}},
    // Pixel Measures
    {tag::kPixelMeasuresSequence, {{{tag::kPixelSpacing}, {kNoTag}, {kNoTag}}}, {}},
};

bool Has(const CDcmObjectCommon& object, const Setting& setting) {
    int count = 0;
    return setting.tag != kNoTag && object.GetValueCount(setting.tag, count) == kDcmSuccess;
}

bool HasAny(const CDcmObjectCommon& object, std::span<const Setting> settings) {
    return std::ranges::any_of(settings,
                               [&](const Setting& setting) { return Has(object, setting); });
}

std::optional<CDcmItem> ItemAt(const CDcmObjectCommon& object, std::uint32_t sequence, int index) {
    CDcmItem item;
    auto result = object.GetValue(sequence, item);
    for (int i = 0; i < index && result == kDcmSuccess; ++i) {
        result = object.GetNextValue(sequence, item);
    }
    if (result != kDcmSuccess) return std::nullopt;
    return item;
}

void CopyValues(const CDcmItem& from, std::uint32_t tag, CDcmObject& to) {
    CString value;
    if (from.GetValue(tag, value) != kDcmSuccess) return;
    to.SetValue(tag, value);
    while (from.GetNextValue(tag, value) == kDcmSuccess) to.SetNextValue(tag, value);
}

void CopyFirstItem(const CDcmItem& from, std::uint32_t tag, CDcmObject& to) {
    auto item = Read<CDcmItem>(from, tag);
    if (item) to.SetValue(tag, &*item);
}

void CopySettings(const CDcmItem& from, std::span<const Setting> settings, CDcmObject& to) {
    for (const Setting& setting : settings) {
        if (!Has(from, setting)) continue;
        if (setting.holds == Holds::kItem) {
            CopyFirstItem(from, setting.tag, to);
        } else {
            CopyValues(from, setting.tag, to);
        }
    }
}

void CopyMacro(const CDcmItem& from, const GroupMacro& macro, CDcmObject& to) {
    CopySettings(from, macro.settings, to);
    for (const std::uint32_t tag : macro.companions) CopyValues(from, tag, to);
}

/// The groups that describe a frame: its own come before those that all frames share.
struct GroupsOfFrame {
    std::optional<CDcmItem> own;
    std::optional<CDcmItem> shared;

    [[nodiscard]] std::optional<CDcmItem> Find(const GroupMacro& macro) const {
        for (const auto* groups : {&own, &shared}) {
            if (!*groups) continue;
            auto item = Read<CDcmItem>(**groups, macro.sequence);
            if (item && HasAny(*item, macro.settings)) return item;
        }
        return std::nullopt;
    }
};

/// What a group says of its frame, for comparison.
struct Said {
    std::vector<std::vector<double>> numbers{};
    std::vector<std::optional<std::vector<unsigned char>>> tables{};
    std::vector<std::optional<CString>> words{};
    friend bool operator==(const Said&, const Said&) = default;
};

Said WhatIsSaid(const CDcmItem& group, const GroupMacro& macro) {
    Said said;
    for (const Setting& setting : macro.settings) {
        if (!Has(group, setting)) {
            said.numbers.emplace_back();
        } else if (setting.holds == Holds::kItem) {
            const auto table = Read<CDcmItem>(group, setting.tag).value_or(CDcmItem());
            for (const auto tag : {tag::kLUTDescriptor, tag::kLUTData})
                said.tables.push_back(ReadBytes(table, tag));
        } else {
            auto& numbers = said.numbers.emplace_back();
            ForEachValue<double>(group, setting.tag, [&](double one) { numbers.push_back(one); });
        }
    }
    for (const std::uint32_t tag : macro.companions)
        said.words.push_back(tag == kNoTag ? std::nullopt : Read<CString>(group, tag));
    return said;
}

/// The group that speaks for all of these frames; nothing where none of them has one.
struct CommonGroup {
    std::optional<CDcmItem> item;
    bool isOfAll = true;  ///< false where frames differ
};

/// @param frameIndices  empty for all frames
CommonGroup FindCommon(const CDcmObject& header, const GroupMacro& macro,
                       std::span<const int> frameIndices) {
    GroupsOfFrame groups{std::nullopt, ItemAt(header, tag::kSharedFunctionalGroupsSequence, 0)};
    CommonGroup common{groups.Find(macro)};
    std::optional<Said> said;
    bool isFirst = true;
    int index = 0;
    ForEachItem(header, tag::kPerFrameFunctionalGroupsSequence, [&](const CDcmItem& own) {
        const bool isMeant =
            frameIndices.empty() || std::ranges::find(frameIndices, index) != frameIndices.end();
        ++index;
        if (!isMeant || !common.isOfAll) return;
        groups.own = own;
        const auto item = groups.Find(macro);
        auto saidHere = item ? std::optional(WhatIsSaid(*item, macro)) : std::nullopt;
        if (std::exchange(isFirst, false)) {
            common.item = item;
            said = std::move(saidHere);
        } else {
            common.isOfAll = said == saidHere;
        }
    });
    return common;
}

std::vector<CDcmItem> ItemsOf(const CDcmObject& object, std::uint32_t sequence) {
    std::vector<CDcmItem> items;
    ForEachItem(object, sequence, [&](const CDcmItem& item) { items.push_back(item); });
    return items;
}

void PutItems(CDcmObject& object, std::uint32_t sequence, std::vector<CDcmItem>& items) {
    bool isFirst = true;
    for (CDcmItem& item : items) {
        if (std::exchange(isFirst, false)) {
            object.SetValue(sequence, &item);
        } else {
            object.SetNextValue(sequence, &item);
        }
    }
}

}  // namespace

bool HasFunctionalGroups(const CDcmObject& object) noexcept {
    return HasElement(object, tag::kSharedFunctionalGroupsSequence) ||
           HasElement(object, tag::kPerFrameFunctionalGroupsSequence);
}

void ChangeGroups(CDcmObject& object, std::uint32_t macro,
                  const std::function<void(CDcmItem& group)>& change) {
    bool isChanged = false;
    for (const auto sequence :
         {tag::kPerFrameFunctionalGroupsSequence, tag::kSharedFunctionalGroupsSequence}) {
        const bool mustHave = sequence == tag::kSharedFunctionalGroupsSequence && !isChanged;
        auto items = ItemsOf(object, sequence);
        if (mustHave && items.empty()) items.emplace_back();
        for (CDcmItem& item : items) {
            auto group = Read<CDcmItem>(item, macro);
            if (!group && mustHave) group.emplace();
            if (!group) continue;
            change(*group);
            item.SetValue(macro, &*group);
            isChanged = true;
        }
        if (isChanged) PutItems(object, sequence, items);
    }
}

std::optional<CDcmObject> HeaderOfFrame(const CDcmObject& header, int frameIndex) {
    const GroupsOfFrame groups{ItemAt(header, tag::kPerFrameFunctionalGroupsSequence, frameIndex),
                               ItemAt(header, tag::kSharedFunctionalGroupsSequence, 0)};
    std::optional<CDcmObject> ofFrame;
    for (const GroupMacro& macro : kMacros) {
        if (HasAny(header, macro.settings)) continue;
        const auto item = groups.Find(macro);
        if (!item) continue;
        if (!ofFrame) ofFrame = header;
        CopyMacro(*item, macro, *ofFrame);
    }
    return ofFrame;
}

std::optional<CDcmObject> HeaderOfAllFrames(const CDcmObject& header) {
    std::optional<CDcmObject> ofAll;
    for (const GroupMacro& macro : kMacros) {
        if (HasAny(header, macro.settings)) continue;
        const auto [item, isOfAll] = FindCommon(header, macro, {});
        if (!item || !isOfAll) continue;
        if (!ofAll) ofAll = header;
        CopyMacro(*item, macro, *ofAll);
    }
    return ofAll;
}

bool HaveOneModality(const CDcmObject& header, std::span<const int> frameIndices) {
    const GroupMacro& macro = kMacros[kModality];
    return HasAny(header, macro.settings) || FindCommon(header, macro, frameIndices).isOfAll;
}

}  // namespace quorvex
