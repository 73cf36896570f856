/// Small images for the command to work on.
#pragma once

#include "tests/support/dicom_builder.h"

namespace quorvex::test {

/// Sixteen by sixteen pixels.
constexpr ImageFacts SmallFacts(unsigned bits, unsigned stored, unsigned representation = 0) {
    return {.rows = 16,
            .columns = 16,
            .bits = bits,
            .representation = representation,
            .stored = stored};
}

/// A native image whose first `count` pixels repeat these samples; the others are missing.
inline Bytes SmallImage(const ImageFacts& facts, const std::vector<unsigned>& samples,
                        std::size_t count = 256) {
    DicomBuilder pixels;
    for (std::size_t i = 0; i < count; ++i)
        pixels.Number(samples[i % samples.size()], static_cast<int>(facts.bits / 8));
    return NativeFile(kExplicitUid, facts, pixels.Bytes());
}

}  // namespace quorvex::test
