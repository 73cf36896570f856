#include "presentation/grey/grey_table_reading.h"

#include "foundation/dicom/model/attributes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kFullTable = 65'536;
constexpr std::size_t kMostBytes = 2 * kFullTable;
constexpr int kMostBits = 16;

struct Descriptor {
    std::size_t count = 0;
    int first = 0;
    int bits = 0;
};

std::optional<Descriptor> ReadDescriptor(const CDcmItem& item) {
    Descriptor descriptor;
    int count = 0;
    if (item.GetValue(tag::kLUTDescriptor, count) != kDcmSuccess) return std::nullopt;
    item.GetNextValue(tag::kLUTDescriptor, descriptor.first);
    item.GetNextValue(tag::kLUTDescriptor, descriptor.bits);
    // A count of 65,536 is stored as 0; a signed descriptor makes large counts negative.
    const auto stored = static_cast<std::uint16_t>(count);
    descriptor.count = stored == 0 ? kFullTable : stored;
    return descriptor;
}

bool AreAllInHighByte(const std::vector<std::uint16_t>& words) {
    return std::ranges::all_of(words, [](std::uint16_t word) { return (word & 0xFFU) == 0; });
}

std::vector<std::uint16_t> EntriesOf(const std::vector<unsigned char>& bytes,
                                     const Descriptor& descriptor) {
    const bool areBytes = descriptor.bits <= 8 && bytes.size() < 2 * descriptor.count;
    if (areBytes) {
        const auto end = static_cast<std::ptrdiff_t>(std::min(bytes.size(), descriptor.count));
        return {bytes.begin(), bytes.begin() + end};
    }
    std::vector<std::uint16_t> words(std::min(bytes.size() / 2, descriptor.count));
    if (words.empty()) return words;
    std::memcpy(words.data(), bytes.data(), 2 * words.size());
    if (descriptor.bits <= 8 && AreAllInHighByte(words)) {
        for (std::uint16_t& word : words) word = static_cast<std::uint16_t>(word >> 8);
    }
    return words;
}

/// The bits that the descriptor states, or more where the entries have them.
int BitsOf(const std::vector<std::uint16_t>& entries, int stated) {
    const auto needed =
        static_cast<int>(std::bit_width(unsigned{*std::ranges::max_element(entries)}));
    return stated >= 1 && stated <= kMostBits ? std::max(stated, needed) : kMostBits;
}

}  // namespace

std::shared_ptr<const GreyTable> ReadGreyTable(const CDcmItem& item, FirstValue firstValue) {
    const auto descriptor = ReadDescriptor(item);
    if (!descriptor) return nullptr;
    auto table = std::make_shared<GreyTable>();
    table->entries =
        EntriesOf(ReadBytes(item, tag::kLUTData, kMostBytes).value_or(std::vector<unsigned char>()),
                  *descriptor);
    if (table->entries.empty()) return nullptr;
    table->entries.resize(descriptor->count, table->entries.back());
    const auto first = static_cast<std::uint16_t>(descriptor->first);
    table->first = firstValue == FirstValue::kSigned
                       ? std::int64_t{static_cast<std::int16_t>(first)}
                       : std::int64_t{first};
    table->bits = BitsOf(table->entries, descriptor->bits);
    table->explanation = Read<CString>(item, tag::kLUTExplanation).value_or(CString());
    return table;
}

}  // namespace quorvex
