#include "foundation/dicom/model/attributes.h"
#include "presentation/presentation_reader.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace quorvex {
namespace {

constexpr std::size_t kFullTable = 65'536;

std::optional<StoredLUT> ReadDescriptor(const CDcmItem& item) {
    StoredLUT lut;
    if (item.GetValue(tag::kLUTDescriptor, lut.count) != kDcmSuccess) return std::nullopt;
    item.GetNextValue(tag::kLUTDescriptor, lut.first);
    item.GetNextValue(tag::kLUTDescriptor, lut.bits);
    return lut;
}

/// False where there are fewer values than entries.
bool ReadEntries(const CDcmItem& item, std::span<unsigned short> entries) {
    std::size_t read = 0;
    ForEachValue<int>(item, tag::kLUTData, [&](int value) {
        if (read < entries.size()) entries[read++] = static_cast<unsigned short>(value);
    });
    return read == entries.size();
}

}  // namespace

std::optional<StoredLUT> PresentationReader::GetLUTData(const CDcmItem& item) {
    auto lut = ReadDescriptor(item);
    int valueCount = 0;
    item.GetValueCount(tag::kLUTData, valueCount);
    if (!lut || valueCount <= 0) return std::nullopt;

    const auto stored = static_cast<std::size_t>(valueCount);
    // Readers of a table go by its descriptor, so there are never fewer entries than it counts.
    const std::size_t size = std::max(stored, lut->count == 0 ? kFullTable : lut->count);
    lut->data = std::make_unique<unsigned short[]>(size);
    const std::span<unsigned short> entries(lut->data.get(), size);
    if (!ReadEntries(item, entries.first(stored))) return std::nullopt;
    std::ranges::fill(entries.subspan(stored), entries[stored - 1]);
    return lut;
}

}  // namespace quorvex
