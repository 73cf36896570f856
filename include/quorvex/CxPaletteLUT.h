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
    /// 8-bit entries may be stored a byte each. A 16-bit table without an entry above 4095 counts as
    /// one of 12 bits. A linear segment at the table's start comes from 0.
    ///
    /// @param object         the object that holds descriptor and data
    /// @param descriptorTag  number of entries (0 for 65,536), first mapped value, bits of an entry
    /// @param segmented      0 for plain data, otherwise `dataTag` holds segments
    /// @return 1, or 0: an attribute is absent, the data too short, a segment unknown, outside the
    ///         data or past the table's end, or not everything used exactly; then there is no table
    int LoadLUT(CDcmObject* object, unsigned long descriptorTag, unsigned long dataTag,
                int segmented);

    /// Bits of an entry: as the descriptor says, or 12 as told above.
    [[nodiscard]] std::uint16_t GetEntryBits() const noexcept { return entryBits; }

    /// Pixel value that the first entry belongs to.
    [[nodiscard]] std::int32_t GetFirstValue() const noexcept { return firstValue; }

    /// All entries as stored; empty without a table. Good until the next `LoadLUT`.
    [[nodiscard]] std::span<const std::uint16_t> GetEntries() const noexcept { return table; }

    /// The entry of a pixel value: the first one below the table, the last one above it. 8-bit entries
    /// that lie in the high byte come out in the low one. 0 without a table.
    [[nodiscard]] std::uint16_t Lookup(int value) const noexcept;

    /// No entry is above 255.
    [[nodiscard]] bool HoldsOnlyBytes() const noexcept;

private:
    [[nodiscard]] bool ReadDescriptor(const CDcmObject& object, std::uint32_t tag);

    std::int32_t pixelRepresentation;
    std::uint32_t entryCount = 0;
    std::int32_t firstValue = 0;
    std::uint16_t entryBits = 0;
    std::vector<std::uint16_t> table;
};

}  // namespace quorvex
