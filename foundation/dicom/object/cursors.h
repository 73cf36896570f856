/// Going from value to value through an attribute.
#pragma once

#include "foundation/dicom/model/binary_number.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/element_values.h"
#include "foundation/dicom/model/numbers.h"
#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quorvex::dicom {

/// A place between two values. A new one stands ahead of the first.
struct Place {
    std::size_t index = 0;     ///< of the next value or item
    std::size_t position = 0;  ///< where the next value of a text begins
};

/// The place that one attribute has been read up to.
struct Cursor : Place {
    enum class TextForm : std::uint8_t { kUnknown, kPlain, kDecoded };

    std::uint32_t tag = 0;
    TextForm textForm = TextForm::kUnknown;
    std::u16string decoded{};  ///< text that had to be decoded before it could be split
};

/// Each takes the value behind the place and moves it on; nothing at the end, and for a value that
/// cannot be what is asked for. A text attribute that is there but empty has one empty value.
[[nodiscard]] std::optional<Number> TakeWrittenNumber(const DataSet& dataSet,
                                                      const Element& element, Place& place);
[[nodiscard]] inline std::optional<Number> TakeNumber(const DataSet& dataSet,
                                                      const Element& element, Place& place) {
    return IsText(MeaningOf(element)) ? TakeWrittenNumber(dataSet, element, place)
                                      : BinaryNumber(dataSet, element, place.index++);
}
[[nodiscard]] std::optional<CString> TakeText(const DataSet& dataSet, const Element& element,
                                              Cursor& cursor);
[[nodiscard]] std::shared_ptr<DataSet> TakeItem(const Element& element, Place& place);

}  // namespace quorvex::dicom
