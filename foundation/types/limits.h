/// Every limit on what an input may ask for, in one place. What a file claims is believed up to the
/// limit; no real file of this field comes near one.
#pragma once

#include "quorvex/Limits.h"

#include <cstddef>
#include <cstdint>

namespace quorvex {

/// Notes the limit for this thread, and answers false.
bool RefuseBy(Limit limit) noexcept;

// Memory.

/// Bytes of the largest block that the library ever asks for.
inline constexpr std::size_t kLargestBlock = std::size_t{4} << 30;
/// A header of a few bytes can claim gigabytes. A picture may take the allowance whatever its
/// source is; beyond, the source must hold one byte for each kMostPicturePerByte, as real codings
/// do.
inline constexpr std::size_t kPictureAllowance = std::size_t{64} << 20;
inline constexpr std::size_t kMostPicturePerByte = 4096;
/// The same for all pictures of an object that is converted.
inline constexpr std::size_t kObjectAllowance = std::size_t{512} << 20;
inline constexpr std::size_t kMostObjectPerByte = 4096;
/// The same for a bare stream, of which nothing but the stream itself tells the size.
inline constexpr std::size_t kBarePictureAllowance = std::size_t{16} << 20;
inline constexpr std::size_t kMostBarePicturePerByte = 1024;
/// Bytes of an inflated data set. Images that are mostly empty reach a few hundred for one; a bomb
/// reaches 1,032.
inline constexpr std::size_t kInflatedAllowance = std::size_t{64} << 20;
inline constexpr std::size_t kMostInflatedPerByte = 400;

// Data sets.

/// Sequences nest this deep at most, wherever they come from: every walk over a data set may
/// recurse.
inline constexpr int kDeepestNesting = 64;
/// Elements, items and fragments of one data set, which take up to 20 times their bytes in a file.
inline constexpr std::size_t kMostParts = std::size_t{1} << 25;
/// Bytes of the longest value that an even 32-bit length can tell.
inline constexpr std::size_t kLongestValue = 0xFFFFFFFE;
/// Frames of one object that can be asked for.
inline constexpr int kMostFrames = 1 << 24;
/// Where a damaged file may begin: places that are read from, and bytes of the first value there.
inline constexpr int kMostBeginnings = 16;
inline constexpr std::uint32_t kLongestFirstValue = std::uint32_t{64} << 10;

// Coded pictures.

/// Segments that an RLE header has room for.
inline constexpr std::size_t kMostRleSegments = 15;
/// Bytes ahead of the first scan of a JPEG stream, and scans; real pictures have about ten.
inline constexpr std::size_t kLongestJpegHead = std::size_t{16} << 20;
inline constexpr int kMostJpegScans = 128;
/// JPEG 2000: a tile costs at least its tile-part's markers, a packet at least a byte, and the
/// decoder takes four bytes and more for a sample. Streams that break off keep some of what they
/// were: the allowances are for those.
inline constexpr std::uint64_t kTileAllowance = 1024;
inline constexpr std::uint64_t kLeastBytesOfTile = 14;
inline constexpr std::uint64_t kPacketAllowance = 1 << 17;
inline constexpr std::uint64_t kMostPacketsPerByte = 4;
inline constexpr std::uint64_t kSampleAllowance = std::uint64_t{1} << 27;
inline constexpr std::uint64_t kMostSamplesPerByte = 4096;
/// JPEG XL: frames that are never shown, and pixels of one beyond twice those of the picture.
inline constexpr int kMostHiddenFrames = 16;
inline constexpr std::uint64_t kHiddenPixelAllowance = 1 << 16;
/// The longest side of a coded picture.
inline constexpr std::uint32_t kLongestCodedSide = 65535;

// Tables.

/// Entries of a palette's table, and segments that one is expanded from: those that give nothing
/// and point at each other would never end.
inline constexpr std::uint32_t kMostPaletteEntries = 65536;
inline constexpr int kMostPaletteSegments = 1 << 18;
/// Entries of a windowing table, and values of the domain that a frame gives it.
inline constexpr std::int64_t kLargestWindowingTable = std::int64_t{1} << 28;
inline constexpr std::int64_t kLargestDomain = std::int64_t{1} << 24;

/// Crossings of the rows of a mask with the sides of a polygon, about a second's work: a real
/// shutter has a few in each row.
inline constexpr std::int64_t kMostPolygonCrossings = std::int64_t{1} << 26;

// Annotations. What lies beyond is not drawn.

/// Points of one graphic: Number of Graphic Points has 16 bits.
inline constexpr std::size_t kMostGraphicPoints = 65535;
inline constexpr std::size_t kMostTextLines = 64;
/// Bytes: no text value has more characters.
inline constexpr std::size_t kLongestTextLine = 1024;
/// Pixels of line on one canvas, about a second's work; and corners of an area.
inline constexpr double kMostDrawnPixels = 1e6;
inline constexpr std::size_t kMostAreaCorners = 4096;

/// Bytes of the maker's configuration file.
inline constexpr std::size_t kLargestConfiguration = std::size_t{1} << 20;

}  // namespace quorvex
