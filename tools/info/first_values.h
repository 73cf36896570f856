/// The first values of an attribute: a file may claim millions.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <vector>

namespace quorvex::tools {

/// At most `most` values, or items of a sequence; none without the attribute.
template <class Value>
std::vector<Value> FirstValues(const CDcmObjectCommon& object, std::uint32_t tag,
                               std::size_t most) {
    std::vector<Value> values;
    Value value{};
    auto result = object.GetValue(tag, value);
    while (result == kDcmSuccess && values.size() < most) {
        values.push_back(value);
        result = object.GetNextValue(tag, value);
    }
    return values;
}

}  // namespace quorvex::tools
