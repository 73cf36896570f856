/// Reads of attributes as the presentation readers want them: there, or not there.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <optional>

namespace quorvex {

/// Two values of one attribute.
template <class Value>
struct ValuePair {
    Value first{};
    Value second{};
};

/// The first value of an attribute.
template <class Value>
[[nodiscard]] std::optional<Value> Read(const CDcmObjectCommon& object, std::uint32_t tag) {
    Value value{};
    if (object.GetValue(tag, value) != kDcmSuccess) return std::nullopt;
    return value;
}

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

/// The first two values of an attribute, where it has both.
template <class Value>
[[nodiscard]] std::optional<ValuePair<Value>> ReadPair(const CDcmObjectCommon& object,
                                                       std::uint32_t tag) {
    ValuePair<Value> pair;
    if (object.GetValue(tag, pair.first) != kDcmSuccess) return std::nullopt;
    if (object.GetNextValue(tag, pair.second) != kDcmSuccess) return std::nullopt;
    return pair;
}

/// Hands each item of a sequence to `take`, in order. Nothing happens without the sequence.
template <class Take>
void ForEachItem(const CDcmObjectCommon& object, std::uint32_t tag, Take take) {
    CDcmItem item(1);
    auto result = object.GetValue(tag, item);
    while (result == kDcmSuccess) {
        take(item);
        result = object.GetNextValue(tag, item);
    }
}

/// Whether the text of an attribute is there and is exactly `word`.
[[nodiscard]] inline bool TextIs(const CDcmObjectCommon& object, std::uint32_t tag,
                                 const char* word) {
    return Read<CString>(object, tag) == CString(word);
}

}  // namespace quorvex
