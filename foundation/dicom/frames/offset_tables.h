/// The offset tables of encapsulated Pixel Data that has one fragment a frame.
#pragma once

#include "foundation/dicom/model/element.h"

#include <cstdint>
#include <span>

namespace quorvex::dicom {

/// Either the basic table or the two extended ones have content.
struct OffsetTables {
    ByteBuffer basic;            ///< 32-bit offsets, content of the first item
    ByteBuffer extendedOffsets;  ///< (7FE0,0001), 64-bit
    ByteBuffer extendedLengths;  ///< (7FE0,0002), 64-bit
};

/// Tables for frames of these lengths, each of which takes an even number of bytes behind its item
/// header. The basic table serves while every offset fits into 32 bits.
[[nodiscard]] OffsetTables OffsetTablesOf(std::span<const std::uint64_t> frameLengths);

}  // namespace quorvex::dicom
