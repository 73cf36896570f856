#include "states/attribute_writing.h"

#include "foundation/dicom/model/tags.h"

#include <cstddef>
#include <string>

namespace quorvex {
namespace {

constexpr std::int32_t kFullTable = 65536;

/// The bytes of a value that lies in one place.
struct WholeValue {
    const void* data;
    std::size_t length;

    static MC_STATUS Give(int, std::uint32_t, void* user, int, int* length, void** data,
                          int* last) {
        const auto& value = *static_cast<const WholeValue*>(user);
        *length = static_cast<int>(value.length);
        *data = const_cast<void*>(value.data);  // only read
        *last = 1;
        return kMcContinue;
    }
};

}  // namespace

CDcmItem NewItem() {
    CDcmItem item(1);
    item.Create("");
    return item;
}

CDcmItem ImageReference(const CXGSPSInfo& info) {
    constexpr std::int32_t kNoFrame = -1;
    CDcmItem item = NewItem();
    item.SetValue(tag::kReferencedSOPClassUID, info.referencedSOPClassUID);
    item.SetValue(tag::kReferencedSOPInstanceUID, info.referencedSOPInstanceUID);
    if (info.referencedFrameNumber != kNoFrame) {
        const CString frame = std::to_string(info.referencedFrameNumber);
        item.SetValue(tag::kReferencedFrameNumber, frame);
    }
    return item;
}

CDcmItem ItemForImage(const CXGSPSInfo& info) {
    CDcmItem item = NewItem();
    CDcmItem reference = ImageReference(info);
    item.SetValue(tag::kReferencedImageSequence, &reference);
    return item;
}

/// The entries are words: as US, explicit VR could not hold a table of 32768 entries or more.
CDcmItem LUTItem(const LUTContent& lut) {
    CDcmItem item = NewItem();
    const std::int32_t entries = lut.count == 0 ? kFullTable : lut.count;
    item.SetValue(tag::kLUTDescriptor, static_cast<unsigned short>(lut.count));
    item.SetNextValue(tag::kLUTDescriptor, lut.first);
    item.SetNextValue(tag::kLUTDescriptor, static_cast<unsigned short>(lut.bits));
    WholeValue value{lut.data, static_cast<std::size_t>(entries) * sizeof *lut.data};
    item.SetValue(tag::kLUTData, &value, WholeValue::Give);
    item.SetValueRepresentation(tag::kLUTData, MC_VR_OW);
    return item;
}

}  // namespace quorvex
