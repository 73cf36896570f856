/// JPEG 2000 pictures through libraries called directly, and through our decoder: for the matrix of
/// streams and for the bench.
#pragma once

#include "tests/engines/jpeg2000/planes.h"

#include <cstdint>
#include <vector>

namespace quorvex::test {

/// How OpenJPH codes a picture.
struct HtCoding {
    Pair origin;  ///< of the picture on the reference grid
    Pair tile;    ///< 0: one tile
    Pair tileOrigin;
    Pair block{64, 64};
    std::vector<Pair> precincts;
    std::uint32_t levels = 5;
    const char* progression = "RPCL";
    bool isReversible = true;
    bool transformsColour = false;
    float step = 0.002F;  ///< of the irreversible quantisation
    /// Of every component but the first.
    Pair subsampling{1, 1};
};

/// Nothing where the library refuses the coding.
Stream EncodeHt(const Planes& picture, const HtCoding& coding);

/// By OpenJPEG, arithmetically coded, with its defaults; irreversible to an eighth.
Stream EncodeJ2k(const Planes& picture, bool isReversible, bool transformsColour);

// Each gives no planes where it does not decode the whole stream.
Planes DecodeByOpenJph(const Stream& stream, std::uint32_t discardedLevels = 0);
Planes DecodeByOpenJpeg(const Stream& stream, std::uint32_t discardedLevels = 0);
Planes DecodeByOurs(const Stream& stream, std::uint32_t discardedLevels = 0);

}  // namespace quorvex::test
