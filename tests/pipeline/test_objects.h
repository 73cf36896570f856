/// Data sets made by hand: images and presentation states.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace quorvex::pipeline_test {

struct ImageShape {
    CSize size{4, 1};
    unsigned short samples = 1;
    unsigned short bitsAllocated = 16;
    unsigned short bitsStored = 12;
    unsigned short pixelRepresentation = 0;
    const char* photometric = "MONOCHROME2";
};

inline constexpr const char* kImageUID = "1.2.3.4";

namespace detail {

struct Bytes {
    std::vector<unsigned char> data;
    static MC_STATUS Give(int, std::uint32_t, void* user, int, int* length, void** data,
                          int* last) {
        auto& bytes = *static_cast<Bytes*>(user);
        *length = static_cast<int>(bytes.data.size());
        *data = bytes.data.data();
        *last = 1;
        return kMcContinue;
    }
};

}  // namespace detail

/// A native image of as many frames as `samples` has frames' worth.
template <class Sample>
void FillImage(CDcmObject& object, const ImageShape& shape, const std::vector<Sample>& samples) {
    object.SetTransferSyntax(kExplicitLittleEndian);
    object.SetValue(0x00080018, kImageUID);
    object.SetValue(0x00280002, shape.samples);
    object.SetValue(0x00280004, shape.photometric);
    object.SetValue(0x00280010, static_cast<unsigned short>(shape.size.cy));
    object.SetValue(0x00280011, static_cast<unsigned short>(shape.size.cx));
    object.SetValue(0x00280100, shape.bitsAllocated);
    object.SetValue(0x00280101, shape.bitsStored);
    object.SetValue(0x00280102, static_cast<unsigned short>(shape.bitsStored - 1));
    object.SetValue(0x00280103, shape.pixelRepresentation);
    detail::Bytes bytes;
    bytes.data.resize(samples.size() * sizeof(Sample));
    std::memcpy(bytes.data.data(), samples.data(), bytes.data.size());
    object.SetValue(0x7FE00010, &bytes, detail::Bytes::Give);
}

}  // namespace quorvex::pipeline_test
