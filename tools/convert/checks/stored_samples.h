/// The samples of a stored image, as its header says they are to be read.
#pragma once

#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace quorvex::tools {

/// Which bits of a sample are its value.
struct SampleBits {
    unsigned short stored = 0;  ///< Bits Allocated where Bits Stored is absent
    bool isSigned = false;

    [[nodiscard]] double Peak() const { return std::ldexp(1.0, std::max<int>(stored, 1)) - 1; }
};

struct SampleForm {
    unsigned short rows = 0;
    unsigned short columns = 0;
    unsigned short bitsAllocated = 0;
    SampleBits bits;
    CString photometric;

    /// Bytes of one sample of a fetched frame.
    [[nodiscard]] int Width() const {
        if (bitsAllocated <= 8) return 1;
        return bitsAllocated <= 16 ? 2 : 4;
    }
};

SampleForm FormOf(const CDcmObject& header);

/// A stored value of `width` bytes, without the bits above it.
inline long ValueOf(const unsigned char* sample, int width, SampleBits bits) {
    std::uint32_t word = 0;
    std::memcpy(&word, sample, static_cast<std::size_t>(width));
    const unsigned unused = 32 - std::clamp<unsigned>(bits.stored, 1, 32);
    const std::uint32_t atTop = word << unused;
    return bits.isSigned ? long{static_cast<std::int32_t>(atTop) >> unused}
                         : static_cast<long>(atTop >> unused);
}

/// Opens an object for its frames, which stay where they are.
QUORVEX_MESSAGE Open(CxDcmParser& parser, CDcmApp& app, CDcmObject& object);

}  // namespace quorvex::tools
