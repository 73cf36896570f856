/// Data sets made by hand: images and presentation states.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Tags.h"
#include "tests/support/attribute_values.h"

#include <cstdint>
#include <cstring>
#include <utility>
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

/// Sets a value by its bytes, under a representation.
inline void SetBytes(CDcmObject& object, std::uint32_t tag, std::vector<unsigned char> data,
                     MC_VR vr = MC_VR_OW) {
    detail::Bytes bytes{std::move(data)};
    object.SetValue(tag, &bytes, detail::Bytes::Give);
    object.SetValueRepresentation(tag, vr);
}

/// A native image of as many frames as `samples` has frames' worth.
template <class Sample>
void FillImage(CDcmObject& object, const ImageShape& shape, const std::vector<Sample>& samples) {
    object.SetTransferSyntax(kExplicitLittleEndian);
    object.SetValue(tag::kSOPInstanceUID, kImageUID);
    object.SetValue(tag::kSamplesPerPixel, shape.samples);
    object.SetValue(tag::kPhotometricInterpretation, shape.photometric);
    object.SetValue(tag::kRows, static_cast<unsigned short>(shape.size.cy));
    object.SetValue(tag::kColumns, static_cast<unsigned short>(shape.size.cx));
    object.SetValue(tag::kBitsAllocated, shape.bitsAllocated);
    object.SetValue(tag::kBitsStored, shape.bitsStored);
    object.SetValue(tag::kHighBit, static_cast<unsigned short>(shape.bitsStored - 1));
    object.SetValue(tag::kPixelRepresentation, shape.pixelRepresentation);
    detail::Bytes bytes;
    bytes.data.resize(samples.size() * sizeof(Sample));
    std::memcpy(bytes.data.data(), samples.data(), bytes.data.size());
    object.SetValue(tag::kPixelData, &bytes, detail::Bytes::Give);
}

/// The same as a new object, with a list of attributes besides.
template <class Sample>
CDcmObject ImageOf(const ImageShape& shape, const std::vector<Sample>& samples,
                   const std::string& attributes = "") {
    CDcmObject object;
    FillImage(object, shape, samples);
    return test::With(std::move(object), attributes);
}

}  // namespace quorvex::pipeline_test
