/// Data sets by hand.
#pragma once

#include "fuzz/options.h"
#include "quorvex/Tags.h"
#include "tests/support/memory_file.h"

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace quorvex::fuzz {

inline void PutBytes(CDcmObjectCommon& object, std::uint32_t tag, std::vector<unsigned char> bytes,
                     MC_VR vr = MC_VR_OW) {
    test::MemoryFile feed{.bytes = std::move(bytes)};
    object.SetValue(tag, &feed, test::MemoryFile::GiveValue);
    object.SetValueRepresentation(tag, vr);
}

/// A few whole numbers, the last ones possibly left out.
inline void PutNumbers(CDcmObjectCommon& object, std::uint32_t tag,
                       std::initializer_list<int> numbers) {
    bool isFirst = true;
    for (const int number : numbers) {
        if (std::exchange(isFirst, false)) {
            object.SetValue(tag, number);
        } else {
            object.SetNextValue(tag, number);
        }
    }
}

struct Shape {
    unsigned short rows = 20;
    unsigned short columns = 24;
    unsigned short samples = 1;
    unsigned short bits = 16;
    unsigned short isSigned = 0;

    [[nodiscard]] std::size_t FrameBytes() const {
        return std::size_t{rows} * columns * samples * (bits > 8 ? 2 : 1);
    }
};

inline constexpr const char* kImageUid = "1.2.3.4";

/// A native image with a ramp in it.
inline void FillImage(CDcmObject& object, const Shape& shape, const char* photometric) {
    object.SetTransferSyntax(kExplicitLittleEndian);
    object.SetValue(tag::kSOPClassUID, "1.2.840.10008.5.1.4.1.1.7");
    object.SetValue(tag::kSOPInstanceUID, kImageUid);
    object.SetValue(tag::kSamplesPerPixel, shape.samples);
    object.SetValue(tag::kPhotometricInterpretation, photometric);
    object.SetValue(tag::kRows, shape.rows);
    object.SetValue(tag::kColumns, shape.columns);
    object.SetValue(tag::kBitsAllocated, shape.bits);
    object.SetValue(tag::kBitsStored, shape.bits);
    object.SetValue(tag::kHighBit, static_cast<unsigned short>(shape.bits - 1));
    object.SetValue(tag::kPixelRepresentation, shape.isSigned);
    std::vector<unsigned char> pixels(shape.FrameBytes());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<unsigned char>(i * 37 + i / 64);
    }
    PutBytes(object, tag::kPixelData, std::move(pixels), shape.bits > 8 ? MC_VR_OW : MC_VR_OB);
}

/// A small image, grey or in colour.
inline void DrawImage(CDcmObject& object, Options& options) {
    constexpr Shape kShapes[] = {
        {.bits = 16}, {.bits = 16, .isSigned = 1}, {.bits = 8}, {.samples = 3, .bits = 8}};
    const Shape& shape = options.OneOf(kShapes);
    FillImage(object, shape, shape.samples == 3 ? "RGB" : "MONOCHROME2");
}

}  // namespace quorvex::fuzz
