#include "foundation/dicom/frames/encapsulated_items.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kItemHeaderBytes = 8;

using TagBytes = std::array<unsigned char, 4>;

/// Item headers in one byte order.
struct ItemForm {
    TagBytes item;
    TagBytes sequenceDelimiter;
    std::array<std::size_t, 4> lengthBytes;  ///< where they lie, the most significant first
};
constexpr ItemForm kLittleEndian = {
    {0xFE, 0xFF, 0x00, 0xE0}, {0xFE, 0xFF, 0xDD, 0xE0}, {7, 6, 5, 4}};
constexpr ItemForm kBigEndian = {{0xFF, 0xFE, 0xE0, 0x00}, {0xFF, 0xFE, 0xE0, 0xDD}, {4, 5, 6, 7}};

bool StartsWith(Bytes bytes, const TagBytes& start) noexcept {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

/// What is left when the items have been cut off is nothing, or a delimiter.
bool IsEndOfItems(Bytes rest, const ItemForm& form) noexcept {
    return rest.empty() || StartsWith(rest, form.sequenceDelimiter);
}

/// Cuts the next item off `rest` and gives its content.
std::optional<Bytes> TakeItem(Bytes& rest, const ItemForm& form = kLittleEndian) noexcept {
    if (!StartsWith(rest, form.item) || rest.size() < kItemHeaderBytes) return std::nullopt;
    std::size_t length = 0;
    for (const std::size_t at : form.lengthBytes) length = length << 8U | rest[at];
    rest = rest.subspan(kItemHeaderBytes);
    const Bytes content = rest.first(std::min(length, rest.size()));
    rest = rest.subspan(content.size());
    return content;
}

void AddFragment(EncapsulatedItems& items, Bytes content) {
    const std::uint64_t offset = items.fragments.empty()
                                     ? 0
                                     : items.fragments.back().offset + kItemHeaderBytes +
                                           items.fragments.back().bytes.size();
    items.fragments.push_back({content, offset});
}

}  // namespace

bool BeginsWithItem(Bytes value) noexcept {
    return StartsWith(value, kLittleEndian.item);
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
    items.isChained = IsEndOfItems(value, kLittleEndian);
    return items;
}

bool IsChainOfItems(Bytes value) noexcept {
    for (const ItemForm& form : {kLittleEndian, kBigEndian}) {
        Bytes rest = value;
        bool hasItem = false;
        while (TakeItem(rest, form)) hasItem = true;
        if (hasItem && IsEndOfItems(rest, form)) return true;
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
