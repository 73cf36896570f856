/// Objects for the presentation tests, built in memory, and a record that cleans up after itself.
#pragma once

#include "quorvex/CXGSPSObject.h"
#include "quorvex/DicomObject.h"
#include "tests/support/record.h"

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace quorvex::test {

template <class Value>
void Put(CDcmObjectCommon& object, std::uint32_t tag, std::initializer_list<Value> values) {
    bool isFirst = true;
    for (const Value& value : values) {
        if (std::exchange(isFirst, false)) {
            object.SetValue(tag, value);
        } else {
            object.SetNextValue(tag, value);
        }
    }
}

inline void PutItems(CDcmObjectCommon& object, std::uint32_t tag, std::vector<CDcmItem> items) {
    bool isFirst = true;
    for (CDcmItem& item : items) {
        if (std::exchange(isFirst, false)) {
            object.SetValue(tag, &item);
        } else {
            object.SetNextValue(tag, &item);
        }
    }
}

inline CDcmItem LutItem(int count, int first, int bits, const std::vector<int>& entries) {
    CDcmItem item;
    Put(item, 0x00283002,
        {static_cast<unsigned short>(count), static_cast<unsigned short>(first),
         static_cast<unsigned short>(bits)});
    bool isFirst = true;
    for (const int entry : entries) {
        const auto word = static_cast<unsigned short>(entry);
        if (std::exchange(isFirst, false)) {
            item.SetValue(0x00283006, word);
        } else {
            item.SetNextValue(0x00283006, word);
        }
    }
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
    PutItems(item, 0x00081140, std::move(references));
    return item;
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
