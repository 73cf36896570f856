/// One colour of a palette: a look-up table of a DICOM object.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// One look-up table of a palette, from its plain or its segmented form.
class QUORVEX_API CxPaletteLUT {
public:
    /// @param representation  1: pixel values are signed 16-bit numbers
    explicit CxPaletteLUT(int representation) noexcept : pixelRepresentation(representation) {}
    virtual ~CxPaletteLUT() = default;

    /// Reads a table; what was loaded before goes.
    ///
    /// 8-bit entries may be stored a byte each. A 16-bit table without an entry above 4095 counts
    /// as one of 12 bits. A linear segment at the start of the table rises from 0.
    ///
    /// @param object         the object that holds descriptor and data
    /// @param descriptorTag  number of entries (0 for 65,536), first mapped value, bits of an entry
    /// @param dataTag        the entries, or the segments that they are made from
    /// @param segmented      0 for entries, otherwise `dataTag` holds segments
    /// @return 1, or 0, and then there is no table: an attribute is absent, the data is too short,
    ///         a segment is unknown or reaches outside the data or the table, or data and table do
    ///         not end together
    int LoadLUT(CDcmObject* object, unsigned long descriptorTag, unsigned long dataTag,
                int segmented);

    /// Bits of an entry: those of the descriptor, or 12 for 16 bits without an entry above 4095.
    [[nodiscard]] std::uint16_t GetEntryBits() const noexcept { return entryBits; }

    /// Pixel value that the first entry belongs to.
    [[nodiscard]] std::int32_t GetFirstValue() const noexcept { return firstValue; }

    /// All entries as stored; empty without a table. Good until the next `LoadLUT`.
    [[nodiscard]] std::span<const std::uint16_t> GetEntries() const noexcept { return table; }

    /// The entry of a pixel value: the first one below the table, the last one above it; 0 without
    /// a table. An 8-bit entry that lies in the high byte comes out in the low one.
    [[nodiscard]] std::uint16_t Lookup(int value) const noexcept;

    /// No entry is above 255.
    [[nodiscard]] bool HoldsOnlyBytes() const noexcept;

private:
    std::int32_t pixelRepresentation;
    std::uint32_t entryCount = 0;
    std::int32_t firstValue = 0;
    std::uint16_t entryBits = 0;
    std::vector<std::uint16_t> table;  ///< `entryCount` entries, or none
};

}  // namespace quorvex
