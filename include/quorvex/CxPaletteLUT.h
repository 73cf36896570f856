/// One colour of a palette: a look-up table of a DICOM object.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Export.h"
#include "quorvex/Types.h"

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

    /// Chooses the rules for tables that are loaded from now on; established ones at first.
    void SetRules(Rules newRules) noexcept { rules = newRules; }

    /// Reads a table; what was loaded before goes.
    ///
    /// 8-bit entries may be stored a byte or a word each. A linear segment at the start of the
    /// table rises from 0.
    ///
    ///     established rules                     standard rules
    ///     16 bits without an entry above 4095   the bits that the descriptor states
    ///     count as 12
    ///     a first value is as the descriptor    is as signed as pixel values are
    ///     has it, signed where pixels are
    ///     an 8-bit entry whose low byte is 0    8-bit entries stand in high bytes where one of
    ///     stands in the high byte               them is above 255
    ///     segments are words                    segments of 8-bit tables are bytes, or words where
    ///                                           bytes make no whole table
    ///     lines are cut off to whole numbers    are rounded
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

    /// Bits of an entry: those of the descriptor, or by the established rules 12 for 16 bits
    /// without an entry above 4095.
    [[nodiscard]] std::uint16_t GetEntryBits() const noexcept { return entryBits; }

    /// Pixel value that the first entry belongs to.
    [[nodiscard]] std::int32_t GetFirstValue() const noexcept { return firstValue; }

    /// All entries as stored, by the standard rules those of 8 bits in low bytes; empty without a
    /// table. Good until the next `LoadLUT`.
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
    Rules rules = Rules::kEstablished;
    std::vector<std::uint16_t> table;  ///< `entryCount` entries, or none
};

}  // namespace quorvex
