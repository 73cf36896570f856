#include "tools/info/element_owner.h"

#include "quorvex/Attributes.h"
#include "tools/info/element_value.h"

#include <string_view>

namespace quorvex::tools {
namespace {

std::string_view WithoutPadding(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
    return text;
}

// Moves `item` from the item `present` (-1: none yet) of a sequence on to the item `wanted`.
bool Advance(const CDcmObjectCommon& owner, std::uint32_t sequence, int present, int wanted,
             CDcmItem& item) {
    for (int index = present + 1; index <= wanted; ++index) {
        const auto result =
            index == 0 ? owner.GetValue(sequence, item) : owner.GetNextValue(sequence, item);
        if (result != kDcmSuccess) return false;
    }
    return true;
}

}  // namespace

void ElementOwner::Follow(const DcmElementView& element) {
    const auto depth = static_cast<std::size_t>(element.depth);
    if (depth > path_.size())
        path_.push_back({.sequence = lastTag_, .index = 0, .itemIndex = -1, .item = {}});
    path_.resize(depth);
    if (depth > 0) path_.back().index = element.itemIndex;
    lastTag_ = element.tag;
}

std::string ElementOwner::Text(const DcmElementView& element) {
    const auto bytes = ValueBytes(element);
    if (IsPlainAscii(bytes)) return std::string(WithoutPadding(bytes));
    std::string text;
    const auto values = Values(element);
    for (std::size_t i = 0; i < values.size(); ++i)
        text.append(i == 0 ? "" : "\\").append(values[i]);
    return text;
}

std::vector<std::string> ElementOwner::Values(const DcmElementView& element) {
    const auto bytes = ValueBytes(element);
    std::vector<std::string> values;
    if (IsPlainAscii(bytes)) {
        std::size_t begin = 0;
        for (bool isLast = false; !isLast;) {
            const auto end = IsProse(element.vr) ? std::string_view::npos : bytes.find('\\', begin);
            isLast = end == std::string_view::npos;
            values.emplace_back(WithoutPadding(bytes.substr(begin, end - begin)));
            begin = end + 1;
        }
        return values;
    }
    if (const auto* owner = Resolve(); owner != nullptr)
        ForEachValue<CString>(*owner, element.tag,
                              [&](const CString& value) { values.push_back(value.ToValidUtf8()); });
    if (values.empty()) values.emplace_back(WithoutPadding(bytes));
    return values;
}

const CDcmObjectCommon* ElementOwner::Resolve() {
    const CDcmObjectCommon* owner = &root_;
    bool isNewBranch = false;
    for (auto& step : path_) {
        const bool isHeld = !isNewBranch && step.item && step.itemIndex <= step.index;
        isNewBranch = isNewBranch || !isHeld || step.itemIndex != step.index;
        if (!isHeld) {
            step.item.emplace(1);
            step.itemIndex = -1;
        }
        if (!Advance(*owner, step.sequence, step.itemIndex, step.index, *step.item)) return nullptr;
        step.itemIndex = step.index;
        owner = &*step.item;
    }
    return owner;
}

}  // namespace quorvex::tools
