#include "states/attribute_writing.h"

#include "foundation/dicom/model/tags.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

namespace quorvex {
namespace {

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

/// The domain of a VOI LUT is what the modality stage gives.
bool HasNegativeDomain(const CXGSPSInfo& info) {
    if (info.pixelRepresentation != 0) return true;
    if (info.modalityLUTData != nullptr || info.rescaleSlope == 0.0) return false;
    const int bits = std::clamp(info.pixelBitDepth, 0, 32);
    const double highest = info.rescaleSlope < 0.0 ? std::ldexp(1.0, bits) - 1.0 : 0.0;
    return info.rescaleIntercept + info.rescaleSlope * highest <= -1.0;
}

/// The entries are words: as US, explicit VR could not hold a table of 32768 entries or more.
CDcmItem ItemOf(const LUTContent& lut, std::size_t words) {
    CDcmItem item = NewItem();
    item.SetValue(tag::kLUTDescriptor, static_cast<unsigned short>(lut.count));
    item.SetNextValue(tag::kLUTDescriptor, lut.first);
    item.SetNextValue(tag::kLUTDescriptor, static_cast<unsigned short>(lut.bits));
    if (lut.isSigned) item.SetValueRepresentation(tag::kLUTDescriptor, MC_VR_SS);
    WholeValue value{lut.data, words * sizeof *lut.data};
    item.SetValue(tag::kLUTData, &value, WholeValue::Give);
    item.SetValueRepresentation(tag::kLUTData, MC_VR_OW);
    return item;
}

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

LUTContent VOILUTOf(const CXGSPSInfo& info) {
    return {info.voiLUTData, info.voiLUTCount, info.voiLUTFirst, info.voiLUTBits,
            HasNegativeDomain(info)};
}

LUTContent PresentationLUTOf(const CXGSPSInfo& info) {
    return {info.presentationLUTData, info.presentationLUTCount, info.presentationLUTFirst,
            info.presentationLUTBits};
}

CDcmItem LUTItem(const LUTContent& lut) {
    return ItemOf(lut, lut.Entries());
}

/// Entries of 8 bits have no higher words.
CDcmItem PackedLUTItem(const LUTContent& lut) {
    constexpr std::int32_t kByte = 8;
    const auto* const end = lut.data + lut.Entries();
    const bool isPacked = lut.bits == kByte && std::any_of(lut.data, end, [](std::uint16_t word) {
                              return word >> kByte != 0;
                          });
    return ItemOf(lut, isPacked ? (lut.Entries() + 1) / 2 : lut.Entries());
}

void SetWords(CDcmObjectCommon& object, std::uint32_t tag, std::span<const unsigned char> bytes) {
    WholeValue value{bytes.data(), bytes.size()};
    object.SetValue(tag, &value, WholeValue::Give);
    object.SetValueRepresentation(tag, MC_VR_OW);
}

}  // namespace quorvex
