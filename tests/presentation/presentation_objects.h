/// Objects for tests of presentation data, built in memory, and what is read out of them.
#pragma once

#include "maker/attribute_writing.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/DicomObject.h"
#include "tests/support/attribute_values.h"
#include "tests/support/record.h"

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace quorvex::test {

template <class Value>
void Put(CDcmObjectCommon& object, std::uint32_t tag, std::initializer_list<Value> values) {
    ValueWriter writer(object, tag);
    for (const Value& value : values) writer.Add(value);
}

inline void PutItems(CDcmObjectCommon& object, std::uint32_t tag, std::vector<CDcmItem> items) {
    ValueWriter writer(object, tag);
    for (CDcmItem& item : items) writer.Add(std::move(item));
}

/// The same object with a sequence besides.
template <class Object>
Object With(Object object, std::uint32_t tag, std::vector<CDcmItem> items) {
    PutItems(object, tag, std::move(items));
    return object;
}

inline CDcmItem LutItem(int count, int first, int bits, const std::vector<int>& entries) {
    CDcmItem item;
    Put(item, 0x00283002,
        {static_cast<unsigned short>(count), static_cast<unsigned short>(first),
         static_cast<unsigned short>(bits)});
    ValueWriter writer(item, 0x00283006);
    for (const int entry : entries) writer.Add(static_cast<unsigned short>(entry));
    return item;
}

/// An item of a Referenced Image Sequence; without frames where the list is empty.
inline CDcmItem Reference(const char* uid, std::initializer_list<int> frames = {}) {
    CDcmItem item;
    item.SetValue(0x00081155, uid);
    Put(item, 0x00081160, frames);
    return item;
}

inline CDcmItem Referring(CDcmItem item, std::vector<CDcmItem> references) {
    return With(std::move(item), 0x00081140, std::move(references));
}

inline constexpr const char* kImage = "1.2.3.4";

inline int ReadImage(CDcmObject& object, CXGSPSInfo& info) {
    return CXGSPSObject().GSPSApplier(&object, &info, "", -1);
}

inline int ReadState(CDcmObject& object, CXGSPSInfo& info, int frame = -1) {
    return CXGSPSObject().GSPSApplier(&object, &info, kImage, frame);
}

inline std::vector<int> Entries(const std::uint16_t* data, int count) {
    return data == nullptr ? std::vector<int>() : std::vector<int>(data, data + count);
}

}  // namespace quorvex::test
