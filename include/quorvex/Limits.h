/// How far the library follows what its input claims, and how a host learns that a limit was met.
#pragma once

#include "quorvex/Export.h"

#include <cstdint>

namespace quorvex {

/// The limits past which an input is refused. Further ones, past which something is left out, stand
/// in SECURITY.md.
enum class Limit : std::int32_t {
    kNone,
    kLargestBlock,      ///< bytes of one block of memory
    kLargestPicture,    ///< bytes of a picture for each byte that it is decoded from
    kLargestObject,     ///< bytes of all pictures of an object for each byte that is stored of them
    kDeepestNesting,    ///< levels of sequences
    kMostParts,         ///< elements, items and fragments of one data set
    kMostFrames,        ///< frames of one object
    kLongestValue,      ///< bytes of one value that is written
    kMostInflated,      ///< bytes of a data set for each byte that it is inflated from
    kMostScans,         ///< scans of one JPEG stream
    kJpeg2000Work,      ///< packets of a JPEG 2000 stream for each of its bytes
    kMostSegments,      ///< segments of an RLE frame
    kPolygonCrossings,  ///< crossings of the rows of a mask with the sides of a polygon
    kPaletteSegments,   ///< segments that a segmented palette is expanded from
    kMemory,            ///< the machine's memory ran out: nothing is wrong with the input
};

/// The limit that an operation in this thread met last, since `ForgetLimit`. An operation that
/// fails because of one answers its own result code, and this tells which it was.
[[nodiscard]] QUORVEX_API Limit LatestLimit() noexcept;
QUORVEX_API void ForgetLimit() noexcept;

/// What the limit is, in the unit of its comment above; 0 for `kNone` and `kMemory`.
[[nodiscard]] QUORVEX_API std::uint64_t LimitValue(Limit limit) noexcept;

/// One plain English sentence for a person whose input met the limit, without a full stop; empty
/// for `kNone`.
[[nodiscard]] QUORVEX_API const char* LimitSentence(Limit limit) noexcept;

}  // namespace quorvex
