#include "foundation/dicom/frames/encapsulated_items.h"

#include "foundation/dicom/model/encoding.h"

#include <algorithm>
#include <optional>

namespace quorvex::dicom {
namespace {

bool BeginsWithTag(Bytes bytes, std::uint32_t tag, bool isBigEndian) noexcept {
    return bytes.size() >= kTagBytes && LoadTag(bytes.data(), isBigEndian) == tag;
}

/// What is left when the items have been cut off is nothing, or a delimiter.
bool IsEndOfItems(Bytes rest, bool isBigEndian) noexcept {
    return rest.empty() || BeginsWithTag(rest, tag::kSequenceDelimitationItem, isBigEndian);
}

/// Cuts the next item off `rest` and gives its content.
std::optional<Bytes> TakeItem(Bytes& rest, bool isBigEndian = false) noexcept {
    if (!BeginsWithTag(rest, tag::kItem, isBigEndian) || rest.size() < kItemHeader)
        return std::nullopt;
    const std::size_t length = LoadItemLength(rest.data(), isBigEndian);
    rest = rest.subspan(kItemHeader);
    const Bytes content = rest.first(std::min(length, rest.size()));
    rest = rest.subspan(content.size());
    return content;
}

void AddFragment(EncapsulatedItems& items, Bytes content) {
    const std::uint64_t offset =
        items.fragments.empty()
            ? 0
            : items.fragments.back().offset + kItemHeader + items.fragments.back().bytes.size();
    items.fragments.push_back({content, offset});
}

}  // namespace

bool BeginsWithItem(Bytes value) noexcept {
    return BeginsWithTag(value, tag::kItem, false);
}

EncapsulatedItems ItemsIn(Bytes value, TRANSFER_SYNTAX syntax) {
    EncapsulatedItems items;
    if (const auto first = TakeItem(value)) {
        if (BeginsImage(*first, syntax)) {
            AddFragment(items, *first);
        } else {
            items.offsetTable = *first;
        }
    }
    while (const auto content = TakeItem(value)) AddFragment(items, *content);
    items.isChained = IsEndOfItems(value, false);
    return items;
}

bool IsChainOfItems(Bytes value) noexcept {
    for (const bool isBigEndian : {false, true}) {
        Bytes rest = value;
        bool hasItem = false;
        while (TakeItem(rest, isBigEndian)) hasItem = true;
        if (hasItem && IsEndOfItems(rest, isBigEndian)) return true;
    }
    return false;
}

EncapsulatedItems ItemsIn(const FragmentView& view) {
    EncapsulatedItems items;
    items.isChained = true;
    if (view.IsEmpty()) return items;
    items.offsetTable = view[0];
    for (std::size_t i = 1; i < view.Count(); ++i) AddFragment(items, view[i]);
    return items;
}

}  // namespace quorvex::dicom
