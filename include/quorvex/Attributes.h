/// Reads of attributes as most callers want them: there, or not there.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <optional>

namespace quorvex {

/// The first value of an attribute: a number of any type of the language, a `CString`, or the first
/// item of a sequence (`CDcmItem`). Nothing where `GetValue` fails.
template <class Value>
[[nodiscard]] std::optional<Value> Read(const CDcmObjectCommon& object, std::uint32_t tag) {
    Value value{};
    if (object.GetValue(tag, value) != kDcmSuccess) return std::nullopt;
    return value;
}

/// Two values of one attribute.
template <class Value>
struct ValuePair {
    Value first{};
    Value second{};
};

/// The first two values of an attribute, where it has both.
template <class Value>
[[nodiscard]] std::optional<ValuePair<Value>> ReadPair(const CDcmObjectCommon& object,
                                                       std::uint32_t tag) {
    ValuePair<Value> pair;
    if (object.GetValue(tag, pair.first) != kDcmSuccess) return std::nullopt;
    if (object.GetNextValue(tag, pair.second) != kDcmSuccess) return std::nullopt;
    return pair;
}

/// Hands each value of an attribute to `take`, in order. Nothing happens without the attribute.
template <class Value, class Take>
void ForEachValue(const CDcmObjectCommon& object, std::uint32_t tag, Take take) {
    Value value{};
    for (auto result = object.GetValue(tag, value); result == kDcmSuccess;
         result = object.GetNextValue(tag, value)) {
        take(value);
    }
}

/// Hands each item of a sequence to `take`, in order. Nothing happens without the sequence.
template <class Take>
void ForEachItem(const CDcmObjectCommon& object, std::uint32_t tag, Take take) {
    CDcmItem item(1);
    for (auto result = object.GetValue(tag, item); result == kDcmSuccess;
         result = object.GetNextValue(tag, item)) {
        take(item);
    }
}

}  // namespace quorvex
