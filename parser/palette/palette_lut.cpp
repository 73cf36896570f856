#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "parser/palette/palette_segments.h"
#include "quorvex/CxPaletteLUT.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace quorvex {
namespace {

constexpr std::size_t kMostBytes = std::size_t{kMostPaletteEntries} * 2;
constexpr int kTwelveBitEnd = 4096;

std::int32_t AsSigned16(std::int32_t value) noexcept {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
}

/// Collects a value; refuses one that is longer than any table.
MC_STATUS CollectData(int /*messageId*/, std::uint32_t /*tag*/, void* user, int length, void* data,
                      int /*first*/, int /*last*/) {
    auto& bytes = *static_cast<std::vector<unsigned char>*>(user);
    if (length < 0 || bytes.size() + static_cast<std::size_t>(length) > kMostBytes) {
        return kMcRefuse;
    }
    const auto* piece = static_cast<const unsigned char*>(data);
    bytes.insert(bytes.end(), piece, piece + length);
    return kMcContinue;
}

std::vector<std::uint16_t> AsWords(const std::vector<unsigned char>& bytes) {
    std::vector<std::uint16_t> words(bytes.size() / 2);
    if (!words.empty()) std::memcpy(words.data(), bytes.data(), words.size() * 2);
    return words;
}

/// Plain data, empty where there is too little of it.
std::vector<std::uint16_t> PlainTable(const std::vector<unsigned char>& bytes, std::size_t entries,
                                      bool hasByteEntries) {
    if (hasByteEntries && bytes.size() >= entries && bytes.size() < 2 * entries) {
        return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(entries)};
    }
    auto words = AsWords(bytes);
    if (words.size() < entries) return {};
    words.resize(entries);
    return words;
}

std::vector<std::uint16_t> SegmentedTable(const std::vector<unsigned char>& bytes,
                                          std::size_t entries) {
    std::vector<std::uint16_t> table(entries);
    if (!ExpandPaletteSegments(AsWords(bytes), table)) return {};
    return table;
}

/// A table's descriptor, as the object has it.
struct Descriptor {
    std::uint32_t entryCount = 0;
    std::int32_t firstValue = 0;
    std::uint16_t entryBits = 0;
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

}  // namespace

int CxPaletteLUT::LoadLUT(CDcmObject* object, unsigned long descriptorTag, unsigned long dataTag,
                          int segmented) {
    return Answer(0, [&] {
        table.clear();
        if (object == nullptr) return 0;
        const auto descriptor = ReadDescriptor(*object, static_cast<std::uint32_t>(descriptorTag));
        if (!descriptor) return 0;
        entryCount = descriptor->entryCount;
        firstValue =
            pixelRepresentation == 1 ? AsSigned16(descriptor->firstValue) : descriptor->firstValue;
        entryBits = descriptor->entryBits;
        std::vector<unsigned char> data;
        const auto tag = static_cast<std::uint32_t>(dataTag);
        if (object->GetValue(tag, &data, CollectData) != kDcmSuccess) return 0;
        table = segmented != 0 ? SegmentedTable(data, entryCount)
                               : PlainTable(data, entryCount, entryBits == 8);
        if (table.empty()) return 0;
        if (entryBits == 16 && *std::ranges::max_element(table) < kTwelveBitEnd) entryBits = 12;
        return 1;
    });
}

std::uint16_t CxPaletteLUT::Lookup(int value) const noexcept {
    if (table.empty()) return 0;
    if (pixelRepresentation == 1) value = AsSigned16(value);
    const auto last = static_cast<std::int64_t>(table.size()) - 1;
    const std::int64_t place = std::int64_t{value} - firstValue;
    const auto entry = table[static_cast<std::size_t>(std::clamp<std::int64_t>(place, 0, last))];
    const bool isInHighByte = entryBits == 8 && (entry & 0xFF) == 0;
    return isInHighByte ? static_cast<std::uint16_t>(entry >> 8) : entry;
}

bool CxPaletteLUT::HoldsOnlyBytes() const noexcept {
    return std::ranges::none_of(table, [](std::uint16_t entry) { return entry > 255; });
}

}  // namespace quorvex
