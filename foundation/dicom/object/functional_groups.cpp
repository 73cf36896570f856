#include "foundation/dicom/object/functional_groups.h"

#include "foundation/dicom/model/attributes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

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
constexpr GroupMacro kMacros[] = {
    // Pixel Value Transformation; a Modality LUT at the top level rules it out
    {tag::kPixelValueTransformationSequence,
     {{{tag::kRescaleIntercept}, {tag::kRescaleSlope}, {tag::kModalityLUTSequence, Holds::kItem}}},
     {}},
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

}  // namespace

std::optional<CDcmObject> HeaderOfFrame(const CDcmObject& header, int frameIndex) {
    const GroupsOfFrame groups{ItemAt(header, tag::kPerFrameFunctionalGroupsSequence, frameIndex),
                               ItemAt(header, tag::kSharedFunctionalGroupsSequence, 0)};
    std::optional<CDcmObject> ofFrame;
    for (const GroupMacro& macro : kMacros) {
        if (HasAny(header, macro.settings)) continue;
        const auto item = groups.Find(macro);
        if (!item) continue;
        if (!ofFrame) ofFrame = header;
        CopySettings(*item, macro.settings, *ofFrame);
        for (const std::uint32_t tag : macro.companions) CopyValues(*item, tag, *ofFrame);
    }
    return ofFrame;
}

}  // namespace quorvex
