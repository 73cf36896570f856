/// Objects for tests of presentation data, built in memory, and what is read out of them.
#pragma once

#include "maker/attribute_writing.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/DicomObject.h"
#include "quorvex/Tags.h"
#include "tests/support/attribute_values.h"
#include "tests/support/record.h"

#include <cstdint>
#include <initializer_list>
#include <string>
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
    const auto put = [&item](std::uint32_t tag, const std::vector<int>& words) {
        ValueWriter writer(item, tag);
        for (const int word : words) writer.Add(static_cast<unsigned short>(word));
    };
    put(tag::kLUTDescriptor, {count, first, bits});
    put(tag::kLUTData, entries);
    return item;
}

/// An item of a Referenced Image Sequence; without frames where the list is empty.
inline CDcmItem Reference(const char* uid, std::initializer_list<int> frames = {}) {
    CDcmItem item;
    item.SetValue(tag::kReferencedSOPInstanceUID, uid);
    Put(item, tag::kReferencedFrameNumber, frames);
    return item;
}

inline CDcmItem Referring(CDcmItem item, std::vector<CDcmItem> references) {
    return With(std::move(item), tag::kReferencedImageSequence, std::move(references));
}

inline constexpr const char* kImage = "1.2.3.4";

inline int ReadImage(CDcmObject& object, CXGSPSInfo& info) {
    return CXGSPSObject().GSPSApplier(&object, &info, "", -1);
}

inline int ReadState(CDcmObject& object, CXGSPSInfo& info, int frame = -1) {
    return CXGSPSObject().GSPSApplier(&object, &info, kImage, frame);
}

/// A record as "name value; ..." for each field of a reading that is not 0, null or empty: whole
/// numbers, other numbers, look-up tables (count, first value, bits: at most eight entries),
/// annotations.
std::string TextOf(const CXGSPSInfo& info);

inline std::vector<int> Entries(const std::uint16_t* data, int count) {
    return data == nullptr ? std::vector<int>() : std::vector<int>(data, data + count);
}

}  // namespace quorvex::test
