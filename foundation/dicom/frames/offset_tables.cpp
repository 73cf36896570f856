#include "foundation/dicom/frames/offset_tables.h"

#include "foundation/dicom/model/encoding.h"

#include <limits>
#include <vector>

namespace quorvex::dicom {
namespace {

template <class Number>
ByteBuffer TableOf(std::span<const std::uint64_t> numbers) {
    ByteBuffer table;
    table.reserve(numbers.size() * sizeof(Number));
    for (const std::uint64_t number : numbers) AppendNumber(table, static_cast<Number>(number));
    return table;
}

}  // namespace

OffsetTables OffsetTablesOf(std::span<const std::uint64_t> frameLengths) {
    std::vector<std::uint64_t> offsets;
    std::uint64_t offset = 0;
    for (const std::uint64_t length : frameLengths) {
        offsets.push_back(offset);
        offset += kItemHeader + length + length % 2;
    }
    if (offsets.empty() || offsets.back() <= std::numeric_limits<std::uint32_t>::max())
        return {
            .basic = TableOf<std::uint32_t>(offsets), .extendedOffsets = {}, .extendedLengths = {}};
    return {.basic = {},
            .extendedOffsets = TableOf<std::uint64_t>(offsets),
            .extendedLengths = TableOf<std::uint64_t>(frameLengths)};
}

}  // namespace quorvex::dicom
