/// Sets and adds values, in the VR that the attribute has.
#pragma once

#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/numbers.h"

#include <cstdint>
#include <string>

namespace quorvex::dicom {

/// Sets the attribute to one number, or with `isNext` adds the number behind what is there. The VR
/// is that of the dictionary; for an unknown tag that of the element that is there, else one for
/// numbers of this kind. False for a number that the VR cannot hold, and for a sequence.
[[nodiscard]] bool SetNumber(DataSet& dataSet, std::uint32_t tag, const Number& number,
                             bool isNext);

/// The same with text (UTF-8), in which a backslash separates values. False for a text that is no
/// number where the VR wants one, or none that fits, and for a sequence.
[[nodiscard]] bool SetText(DataSet& dataSet, std::uint32_t tag, const std::string& text,
                           bool isNext);

/// The same with an item. False where the items would nest too deeply.
[[nodiscard]] bool SetItem(DataSet& dataSet, std::uint32_t tag, std::shared_ptr<DataSet> item,
                           bool isNext);

}  // namespace quorvex::dicom
