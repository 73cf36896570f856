/// Writes of attributes as the presentation modules want them: pairs, items, words for numbers.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <utility>

namespace quorvex {

template <class Value>
void WritePair(CDcmObjectCommon& object, std::uint32_t tag, Value first, Value second) {
    object.SetValue(tag, first);
    object.SetNextValue(tag, second);
}

/// Writes the items of one sequence; none, and there is no sequence.
class SequenceWriter {
public:
    SequenceWriter(CDcmObjectCommon& object, std::uint32_t tag) : object_(object), tag_(tag) {}

    void Add(CDcmItem& item) {
        if (std::exchange(isFirst_, false)) {
            object_.SetValue(tag_, &item);
        } else {
            object_.SetNextValue(tag_, &item);
        }
    }

private:
    CDcmObjectCommon& object_;
    std::uint32_t tag_;
    bool isFirst_ = true;
};

/// An empty item.
[[nodiscard]] inline CDcmItem NewItem() {
    CDcmItem item(1);
    item.Create("");
    return item;
}

/// The reference to the image of a record; its frame is left out where it is -1.
[[nodiscard]] CDcmItem ImageReference(const CXGSPSInfo& info);
/// An item with a Referenced Image Sequence of this one reference.
[[nodiscard]] CDcmItem ItemForImage(const CXGSPSInfo& info);

/// A look-up table of a record.
struct LUTContent {
    const std::uint16_t* data = nullptr;
    std::int32_t count = 0;  ///< 0: 65536
    std::uint16_t first = 0;
    std::int32_t bits = 0;
};

/// An item with the descriptor and the entries.
[[nodiscard]] CDcmItem LUTItem(const LUTContent& lut);

}  // namespace quorvex
