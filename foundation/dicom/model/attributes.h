/// Reads of attributes: those that hosts have too, and those that only the library's rooms need.
#pragma once

#include "foundation/dicom/model/tags.h"
#include "quorvex/Attributes.h"

#include <cstdint>

namespace quorvex {

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
