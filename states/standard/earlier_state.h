/// Parts of a state that was read, for the one that is written from its record.
#pragma once

#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSInfo.h"
#include "states/attribute_writing.h"

#include <optional>

namespace quorvex {

/// A copy whose texts mean the same in an object of any character set.
template <class Object>
[[nodiscard]] Object ForAnyCharacterSet(Object object) {
    object.SetValue(tag::kSpecificCharacterSet, "ISO_IR 192");
    object.RemoveValue(tag::kSpecificCharacterSet);
    return object;
}

/// The first item of a sequence of tables, where a reading of it gives this table.
[[nodiscard]] std::optional<CDcmItem> EarlierTable(const CDcmObjectCommon& from,
                                                   std::uint32_t sequence, const LUTContent& lut);

/// Whether the record's window, whole numbers and fractions, is one of the earlier state. The whole
/// part of "4E2" is 4 there.
[[nodiscard]] bool IsEarlierWindow(const CXGSPSInfo& record);

/// The VOI LUT of the earlier state that is the record's.
[[nodiscard]] std::optional<CDcmItem> EarlierVOITable(const CXGSPSInfo& record);

/// Copies the overlay of the earlier state's bitmap shutter, where the record still has its mask.
/// @param pixels  of the mask
[[nodiscard]] bool CopyEarlierBitmap(const CXGSPSInfo& record, std::size_t pixels,
                                     CDcmObject& target);

}  // namespace quorvex
