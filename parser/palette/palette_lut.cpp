#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "parser/palette/palette_segments.h"
#include "quorvex/CxPaletteLUT.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

constexpr std::size_t kMostBytes = std::size_t{kMostPaletteEntries} * 2;
constexpr std::uint16_t kTwelveBits = 4095;  ///< the highest entry of so many
constexpr int kByteBits = 8;

std::int32_t AsSigned16(std::int32_t value) noexcept {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
}

std::vector<std::uint16_t> AsWords(const std::vector<unsigned char>& bytes) {
    std::vector<std::uint16_t> words(bytes.size() / 2);
    if (!words.empty()) std::memcpy(words.data(), bytes.data(), words.size() * 2);
    return words;
}

std::vector<std::uint16_t> AsFields(const std::vector<unsigned char>& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Whether the length is that of entries of a byte each, with or without padding.
bool AreEntriesBytes(const std::vector<unsigned char>& bytes, std::size_t entries) {
    return bytes.size() >= entries && bytes.size() < 2 * entries;
}

/// Plain data, empty where there is too little of it.
std::vector<std::uint16_t> PlainTable(const std::vector<unsigned char>& bytes, std::size_t entries,
                                      bool hasByteEntries) {
    auto table =
        hasByteEntries && AreEntriesBytes(bytes, entries) ? AsFields(bytes) : AsWords(bytes);
    if (table.size() < entries) return {};
    table.resize(entries);
    return table;
}

/// Segments expanded, empty where they do not make a whole table.
std::vector<std::uint16_t> SegmentedTable(const std::vector<std::uint16_t>& fields,
                                          std::size_t entries, SegmentForm form) {
    std::vector<std::uint16_t> table(entries);
    if (!ExpandPaletteSegments(fields, form, table)) return {};
    return table;
}

std::vector<std::uint16_t> StandardSegmentedTable(const std::vector<unsigned char>& bytes,
                                                  std::size_t entries, bool hasByteEntries) {
    std::vector<std::uint16_t> table;
    if (hasByteEntries) table = SegmentedTable(AsFields(bytes), entries, {1, true});
    return table.empty() ? SegmentedTable(AsWords(bytes), entries, {2, true}) : table;
}

bool IsAnyAbove(const std::vector<std::uint16_t>& table, std::uint16_t limit) {
    return std::ranges::any_of(table, [limit](std::uint16_t entry) { return entry > limit; });
}

// Entries that are stored a word each may be repeated in both bytes, or stand in the high one.
void TakeHighBytes(std::vector<std::uint16_t>& table) {
    for (auto& entry : table) entry = static_cast<std::uint16_t>(entry >> 8);
}

/// A table's descriptor, as the object has it.
struct Descriptor {
    std::uint32_t entryCount = 0;
    std::int32_t firstValue = 0;
    std::uint16_t entryBits = 0;

    [[nodiscard]] bool HasBytes() const noexcept { return entryBits == kByteBits; }
};

std::optional<Descriptor> ReadDescriptor(const CDcmObject& object, std::uint32_t tag) {
    Descriptor descriptor;
    if (object.GetValue(tag, descriptor.entryCount) != kDcmSuccess ||
        object.GetNextValue(tag, descriptor.firstValue) != kDcmSuccess ||
        object.GetNextValue(tag, descriptor.entryBits) != kDcmSuccess) {
        return std::nullopt;
    }
    if (descriptor.entryCount == 0) descriptor.entryCount = kMostPaletteEntries;
    if (descriptor.entryCount > kMostPaletteEntries) return std::nullopt;
    return descriptor;
}

/// What a table's data make of its descriptor; without entries where they make no table.
struct LoadedTable {
    Descriptor descriptor;
    std::vector<std::uint16_t> entries;
};

LoadedTable LoadAsEstablished(Descriptor descriptor, const std::vector<unsigned char>& data,
                              bool isSegmented, bool hasSignedValues) {
    if (hasSignedValues) descriptor.firstValue = AsSigned16(descriptor.firstValue);
    auto entries = isSegmented ? SegmentedTable(AsWords(data), descriptor.entryCount, {})
                               : PlainTable(data, descriptor.entryCount, descriptor.HasBytes());
    const bool isDeep = descriptor.entryBits == 16 && !entries.empty();
    if (isDeep && !IsAnyAbove(entries, kTwelveBits)) descriptor.entryBits = 12;
    return {descriptor, std::move(entries)};
}

LoadedTable LoadByStandard(Descriptor descriptor, const std::vector<unsigned char>& data,
                           bool isSegmented, bool hasSignedValues) {
    descriptor.firstValue = hasSignedValues ? AsSigned16(descriptor.firstValue)
                                            : static_cast<std::uint16_t>(descriptor.firstValue);
    auto entries = isSegmented
                       ? StandardSegmentedTable(data, descriptor.entryCount, descriptor.HasBytes())
                       : PlainTable(data, descriptor.entryCount, descriptor.HasBytes());
    if (descriptor.HasBytes() && IsAnyAbove(entries, UINT8_MAX)) TakeHighBytes(entries);
    return {descriptor, std::move(entries)};
}

}  // namespace

int CxPaletteLUT::LoadLUT(CDcmObject* object, unsigned long descriptorTag, unsigned long dataTag,
                          int segmented) {
    return Answer(0, [&] {
        table.clear();
        if (object == nullptr) return 0;
        const auto descriptor = ReadDescriptor(*object, static_cast<std::uint32_t>(descriptorTag));
        if (!descriptor) return 0;
        const auto data = ReadBytes(*object, static_cast<std::uint32_t>(dataTag), kMostBytes + 1);
        if (!data || data->size() > kMostBytes) return 0;
        const auto load = rules == Rules::kStandard ? LoadByStandard : LoadAsEstablished;
        LoadedTable loaded = load(*descriptor, *data, segmented != 0, pixelRepresentation == 1);
        entryCount = loaded.descriptor.entryCount;
        firstValue = loaded.descriptor.firstValue;
        entryBits = loaded.descriptor.entryBits;
        table = std::move(loaded.entries);
        return table.empty() ? 0 : 1;
    });
}

std::uint16_t CxPaletteLUT::Lookup(int value) const noexcept {
    if (table.empty()) return 0;
    if (pixelRepresentation == 1) value = AsSigned16(value);
    const auto last = static_cast<std::int64_t>(table.size()) - 1;
    const std::int64_t place = std::int64_t{value} - firstValue;
    const auto entry = table[static_cast<std::size_t>(std::clamp<std::int64_t>(place, 0, last))];
    const bool isInHighByte = entryBits == kByteBits && (entry & 0xFF) == 0;
    return isInHighByte ? static_cast<std::uint16_t>(entry >> 8) : entry;
}

bool CxPaletteLUT::HoldsOnlyBytes() const noexcept {
    return !IsAnyAbove(table, UINT8_MAX);
}

}  // namespace quorvex
