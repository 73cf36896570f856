/// JPEG 2000 pictures through libraries called directly, and through our decoder: for the matrix of
/// streams and for the bench.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::test {

/// A picture's components, all of one precision.
struct Planes {
    struct Plane {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<std::int32_t> samples;
        bool operator==(const Plane&) const = default;
    };
    std::vector<Plane> planes;
    int precision = 8;
    bool isSigned = false;

    bool operator==(const Planes&) const = default;
};

struct Pair {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};

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

using Stream = std::vector<unsigned char>;

/// Nothing where the library refuses the coding.
Stream EncodeHt(const Planes& picture, const HtCoding& coding);

/// By OpenJPEG, arithmetically coded, with its defaults; irreversible to an eighth.
Stream EncodeJ2k(const Planes& picture, bool isReversible, bool transformsColour);

// Each gives no planes where it does not decode the whole stream.
Planes DecodeByOpenJph(const Stream& stream, std::uint32_t discardedLevels = 0);
Planes DecodeByOpenJpeg(const Stream& stream, std::uint32_t discardedLevels = 0);
Planes DecodeByOurs(const Stream& stream, std::uint32_t discardedLevels = 0);

}  // namespace quorvex::test
