/// Data sets by hand, and one number that stands for everything in a data set.
#pragma once

#include "fuzz/memory_feed.h"
#include "fuzz/options.h"
#include "quorvex/DicomObject.h"

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace quorvex::fuzz {

inline void PutBytes(CDcmObjectCommon& object, std::uint32_t tag, std::vector<unsigned char> bytes,
                     MC_VR vr = MC_VR_OW) {
    MemoryFeed feed(std::move(bytes));
    object.SetValue(tag, &feed, MemoryFeed::GiveValue);
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
    object.SetValue(0x00080016, "1.2.840.10008.5.1.4.1.1.7");
    object.SetValue(0x00080018, kImageUid);
    object.SetValue(0x00280002, shape.samples);
    object.SetValue(0x00280004, photometric);
    object.SetValue(0x00280010, shape.rows);
    object.SetValue(0x00280011, shape.columns);
    object.SetValue(0x00280100, shape.bits);
    object.SetValue(0x00280101, shape.bits);
    object.SetValue(0x00280102, static_cast<unsigned short>(shape.bits - 1));
    object.SetValue(0x00280103, shape.isSigned);
    std::vector<unsigned char> pixels(shape.FrameBytes());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<unsigned char>(i * 37 + i / 64);
    }
    PutBytes(object, 0x7FE00010, std::move(pixels), shape.bits > 8 ? MC_VR_OW : MC_VR_OB);
}

/// A small image, grey or in colour.
inline void DrawImage(CDcmObject& object, Options& options) {
    constexpr Shape kShapes[] = {
        {.bits = 16}, {.bits = 16, .isSigned = 1}, {.bits = 8}, {.samples = 3, .bits = 8}};
    const Shape& shape = options.OneOf(kShapes);
    FillImage(object, shape, shape.samples == 3 ? "RGB" : "MONOCHROME2");
}

namespace detail {

inline void Mix(std::uint64_t& sum, std::uint64_t number) {
    sum = (sum ^ number) * 0x100000001B3U;
}

inline MC_STATUS MixElement(const DcmElementView& element, void* user) {
    auto& sum = *static_cast<std::uint64_t*>(user);
    Mix(sum, element.tag);
    Mix(sum, static_cast<std::uint64_t>(element.vr));
    Mix(sum, static_cast<std::uint64_t>(element.depth));
    Mix(sum, element.length);
    for (unsigned long i = 0; element.data != nullptr && i < element.length; ++i) {
        Mix(sum, element.data[i]);
    }
    return kMcContinue;
}

}  // namespace detail

/// Changes when any element does; reads every byte of every value.
inline std::uint64_t Fingerprint(const CDcmObjectCommon& object) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    (void)object.WalkElements(&sum, detail::MixElement);
    return sum;
}

}  // namespace quorvex::fuzz
