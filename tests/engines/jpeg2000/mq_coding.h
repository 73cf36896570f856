/// Arithmetic-coded JPEG 2000 streams by OpenJPEG, with every option that it has.
#pragma once

#include "tests/engines/jpeg2000/planes.h"

#include <cstdint>
#include <vector>

namespace quorvex::test {

struct MqCoding {
    Pair origin{};
    Pair tile{};  ///< 0: one tile
    Pair tileOrigin{};
    Pair block{64, 64};
    std::vector<std::uint32_t> precincts{};  ///< squares
    std::uint32_t levels = 5;
    int style = 0;  ///< the style byte of code blocks
    int progression = 0;
    int changedProgression = -1;  ///< of the upper half of the resolutions, by POC
    int layers = 1;
    float rate = 10;  ///< of the layers but a reversible coding's last
    bool isReversible = true;
    bool transformsColour = false;
    bool hasSop = false, hasEph = false, hasPlt = false, hasTlm = false;
    bool hasTileParts = false;  ///< one for each resolution
    int roiShift = 0;           ///< of the first component
    Pair subsampling{1, 1};     ///< of every component but the first
};

/// Nothing where the library refuses the coding. It ends the process for some: call it in a child.
Stream EncodeMq(const Planes& picture, const MqCoding& coding);

}  // namespace quorvex::test
