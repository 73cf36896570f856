/// The passes one plane below the clean-up pass: significance propagation and magnitude refinement
/// (ISO/IEC 15444-15 clause 7).
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/ht_scratch.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex::j2k {

struct HtRefinement {
    int width = 0;
    int height = 0;
    unsigned shift = 0;  ///< planes below the clean-up pass, at least 1
    bool isVerticallyCausal = false;
    bool refines = false;  ///< the second pass is there too
    std::span<const unsigned char> segment;
};

/// Changes the coefficients that the clean-up pass wrote, whose significance is in
/// HtScratch::groups. Whatever bits there are mean something: no segment is unsound.
void DecodeHtRefinement(const HtRefinement& passes, std::int32_t* out, std::ptrdiff_t stride,
                        HtScratch& scratch);

}  // namespace quorvex::j2k
