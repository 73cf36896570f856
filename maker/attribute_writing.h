/// Writes of attributes: several values behind one another, and values of another object.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <utility>

namespace quorvex {

/// Writes the values of an attribute, or the items of a sequence, one behind the other. The first
/// one replaces what is there; without any, nothing is written.
class ValueWriter {
public:
    ValueWriter(CDcmObjectCommon& object, std::uint32_t tag) : object_(object), tag_(tag) {}

    template <class Value>
    void Add(const Value& value) {
        if (std::exchange(isFirst_, false)) {
            object_.SetValue(tag_, value);
        } else {
            object_.SetNextValue(tag_, value);
        }
    }
    void Add(CDcmItem&& item) { Add(&item); }

private:
    CDcmObjectCommon& object_;
    std::uint32_t tag_;
    bool isFirst_ = true;
};

template <class Value>
void WritePair(CDcmObjectCommon& object, std::uint32_t tag, const Value& first,
               const Value& second) {
    object.SetValue(tag, first);
    object.SetNextValue(tag, second);
}

/// Copies the first value as text, where there is one.
/// @return whether it reached the target
bool CopyFirst(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag);
/// Copies all values as text, up to the first one that cannot be copied.
void CopyAll(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag);
/// Copies the first `count` values as text; those that cannot be copied are left out.
void CopyUpTo(int count, const CDcmObjectCommon& source, CDcmObjectCommon& target,
              std::uint32_t tag);
/// Copies the first item of a sequence, where there is one.
/// @return whether there is one
bool CopyFirstItem(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag);

}  // namespace quorvex
