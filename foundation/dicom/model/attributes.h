/// Reads of attributes: those that hosts have too, and those that only the library's rooms need.
#pragma once

#include "foundation/dicom/model/tags.h"
#include "quorvex/Attributes.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace quorvex {

/// The bytes of an attribute's value in this machine's byte order, the first `most` of them.
/// Nothing without the attribute.
[[nodiscard]] std::optional<std::vector<unsigned char>> ReadBytes(
    const CDcmObjectCommon& object, std::uint32_t tag,
    std::size_t most = std::numeric_limits<std::size_t>::max());

/// Hands the values of an attribute to `take`, pair by pair; one at the end without a partner is
/// dropped.
template <class Value, class Take>
void ForEachPair(const CDcmObjectCommon& object, std::uint32_t tag, Take take) {
    ValuePair<Value> pair;
    auto result = object.GetValue(tag, pair.first);
    while (result == kDcmSuccess && object.GetNextValue(tag, pair.second) == kDcmSuccess) {
        take(pair);
        result = object.GetNextValue(tag, pair.first);
    }
}

/// Whether the text of an attribute is there and is exactly `word`.
[[nodiscard]] inline bool TextIs(const CDcmObjectCommon& object, std::uint32_t tag,
                                 const char* word) {
    return Read<CString>(object, tag) == CString(word);
}

}  // namespace quorvex
