#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace quorvex {
namespace {

struct LutDescriptor {
    unsigned short count = 0;
    unsigned short first = 0;
    unsigned short bits = 0;

    [[nodiscard]] std::size_t Entries() const noexcept { return count == 0 ? 65536 : count; }
};

std::optional<LutDescriptor> ReadDescriptor(const CDcmItem& item) {
    LutDescriptor descriptor;
    if (item.GetValue(tag::kLUTDescriptor, descriptor.count) != kDcmSuccess) return std::nullopt;
    item.GetNextValue(tag::kLUTDescriptor, descriptor.first);
    item.GetNextValue(tag::kLUTDescriptor, descriptor.bits);
    return descriptor;
}

bool ReadEntries(const CDcmItem& item, std::span<unsigned short> entries) {
    int value = 0;
    auto result = item.GetValue(tag::kLUTData, value);
    for (unsigned short& entry : entries) {
        if (result != kDcmSuccess) return false;
        entry = static_cast<unsigned short>(value);
        if (&entry != &entries.back()) result = item.GetNextValue(tag::kLUTData, value);
    }
    return true;
}

}  // namespace

int CXGSPSObject::GetLUTData(CDcmItem* item, unsigned short& count, unsigned short& first,
                             unsigned short& bits, unsigned short*& data) {
    const auto descriptor = ReadDescriptor(*item);
    int valueCount = 0;
    item->GetValueCount(tag::kLUTData, valueCount);
    if (!descriptor || valueCount <= 0) return 0;

    const auto stored = static_cast<std::size_t>(valueCount);
    // Who reads the LUT goes by the descriptor, so there are never fewer entries than it says.
    const std::size_t size = std::max(stored, descriptor->Entries());
    auto block = std::make_unique<unsigned short[]>(size);
    const std::span<unsigned short> entries(block.get(), size);
    if (!ReadEntries(*item, entries.first(stored))) return 0;
    std::ranges::fill(entries.subspan(stored), entries[stored - 1]);

    count = descriptor->count;
    first = descriptor->first;
    bits = descriptor->bits;
    data = block.release();
    return 1;
}

}  // namespace quorvex
