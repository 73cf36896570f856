#include "foundation/dicom/encapsulated_items.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kItemHeaderBytes = 8;
constexpr std::array<unsigned char, 4> kItemTag = {0xFE, 0xFF, 0x00, 0xE0};
constexpr std::array<unsigned char, 4> kSequenceDelimiter = {0xFE, 0xFF, 0xDD, 0xE0};

bool StartsWith(Bytes bytes, const std::array<unsigned char, 4>& start) noexcept {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

std::size_t LengthAt(Bytes header) {
    std::size_t length = 0;
    for (std::size_t i = 8; i-- > 4;) length = length << 8U | header[i];
    return length;
}

/// Cuts the next item off `rest` and gives its content.
std::optional<Bytes> TakeItem(Bytes& rest) {
    if (!BeginsWithItem(rest) || rest.size() < kItemHeaderBytes) return std::nullopt;
    const std::size_t length = LengthAt(rest);
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
    return StartsWith(value, kItemTag);
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
    items.isChained = value.empty() || StartsWith(value, kSequenceDelimiter);
    return items;
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
