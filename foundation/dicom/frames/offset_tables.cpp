#include "foundation/dicom/frames/offset_tables.h"

#include <limits>
#include <vector>

namespace quorvex::dicom {
namespace {

constexpr std::uint64_t kItemHeaderBytes = 8;

template <class Number>
void Append(ByteBuffer& buffer, std::uint64_t value) {
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        buffer.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

template <class Number>
ByteBuffer TableOf(std::span<const std::uint64_t> numbers) {
    ByteBuffer table;
    table.reserve(numbers.size() * sizeof(Number));
    for (const std::uint64_t number : numbers) Append<Number>(table, number);
    return table;
}

}  // namespace

OffsetTables OffsetTablesOf(std::span<const std::uint64_t> frameLengths) {
    std::vector<std::uint64_t> offsets;
    std::uint64_t offset = 0;
    for (const std::uint64_t length : frameLengths) {
        offsets.push_back(offset);
        offset += kItemHeaderBytes + length + length % 2;
    }
    if (offsets.empty() || offsets.back() <= std::numeric_limits<std::uint32_t>::max())
        return {
            .basic = TableOf<std::uint32_t>(offsets), .extendedOffsets = {}, .extendedLengths = {}};
    return {.basic = {},
            .extendedOffsets = TableOf<std::uint64_t>(offsets),
            .extendedLengths = TableOf<std::uint64_t>(frameLengths)};
}

}  // namespace quorvex::dicom
