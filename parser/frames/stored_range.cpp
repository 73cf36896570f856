#include "parser/frames/stored_range.h"

#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg2000/jpeg2000_header.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

template <class Sample>
void Clamp(std::span<unsigned char> samples, int bits) {
    const int span = 1 << bits;
    const int lowest = std::is_signed_v<Sample> ? -span / 2 : 0;
    for (std::size_t at = 0; at + sizeof(Sample) <= samples.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, samples.data() + at, sizeof sample);
        sample = static_cast<Sample>(std::clamp<int>(sample, lowest, lowest + span - 1));
        std::memcpy(samples.data() + at, &sample, sizeof sample);
    }
}

template <class Sample>
bool AreNear(std::span<const unsigned char> samples, int bits) {
    const int span = 1 << bits;
    const int lowest = (std::is_signed_v<Sample> ? -span / 2 : 0) - span / 4;
    for (std::size_t at = 0; at + sizeof(Sample) <= samples.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, samples.data() + at, sizeof sample);
        if (sample < lowest || sample >= lowest + span + span / 2) return false;
    }
    return true;
}

}  // namespace

bool MayOvershoot(const FrameShape& shape, std::span<const unsigned char> stream) {
    constexpr std::uint16_t kMostBits = 16;
    const bool hasRoom = shape.bitsStored > 0 && shape.bitsStored < shape.bitsAllocated &&
                         shape.bitsAllocated <= kMostBits;
    if (!hasRoom || CodingOf(shape.syntax) != FrameCoding::kJpeg2000) return false;
    const auto codestream = FindCodestream(stream);
    const auto header = codestream ? ReadJpeg2000Header(*codestream) : std::nullopt;
    return header && !header->isReversible && header->precision > shape.bitsStored;
}

void ClampToBitsStored(const FrameShape& shape, std::span<unsigned char> samples) {
    const bool isSigned = shape.pixelRepresentation != 0;
    if (shape.bitsAllocated <= 8) {
        return isSigned ? Clamp<std::int8_t>(samples, shape.bitsStored)
                        : Clamp<std::uint8_t>(samples, shape.bitsStored);
    }
    return isSigned ? Clamp<std::int16_t>(samples, shape.bitsStored)
                    : Clamp<std::uint16_t>(samples, shape.bitsStored);
}

bool BringNearToStored(const FrameShape& shape, std::span<unsigned char> samples) {
    const bool isSigned = shape.pixelRepresentation != 0;
    const int bits = shape.StoredBits();
    const bool isByte = shape.bitsAllocated <= 8;
    const bool areNear = isByte     ? isSigned ? AreNear<std::int8_t>(samples, bits)
                                               : AreNear<std::uint8_t>(samples, bits)
                             : isSigned ? AreNear<std::int16_t>(samples, bits)
                                    : AreNear<std::uint16_t>(samples, bits);
    if (areNear) ClampToBitsStored(shape, samples);
    return areNear;
}

}  // namespace quorvex
