/// The values of one element: how many, how long, and each as a number or as text.
#pragma once

#include "foundation/dicom/model/binary_number.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/numbers.h"
#include "foundation/dicom/model/value_representation.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::dicom {

/// Where a text value ends, so that the next one is found without starting over.
inline constexpr std::size_t kBehindLastValue = static_cast<std::size_t>(-1);

/// Takes the value at `position` out of backslash-separated text and moves `position` behind it
/// (`kBehindLastValue` behind the last one).
template <class Text>
[[nodiscard]] Text TakeValue(Text text, std::size_t& position) noexcept {
    const std::size_t first = position;
    const std::size_t end = text.find('\\', first);
    position = end == Text::npos ? kBehindLastValue : end + 1;
    return text.substr(first, end == Text::npos ? Text::npos : end - first);
}

/// Values of the element; 1 for raw bytes, whatever their number, and 0 where nothing is stored.
[[nodiscard]] std::size_t ValueCount(const DataSet& dataSet, const Element& element);
/// Bytes of one value; nothing where there is no such value. Sequences have none.
[[nodiscard]] std::optional<std::size_t> ValueLength(const DataSet& dataSet, const Element& element,
                                                     std::size_t index);

/// A number that is not stored as text, as text; attribute tags as "(gggg,eeee)".
[[nodiscard]] std::optional<std::string> BinaryText(const DataSet& dataSet, const Element& element,
                                                    std::size_t index);

/// The whole value, all its values with the backslashes between them, decoded.
[[nodiscard]] std::u16string DecodedText(const DataSet& dataSet, const Element& element);
/// Without the padding that the VR allows at its ends.
[[nodiscard]] std::string_view Trimmed(std::string_view text, ValueKind kind) noexcept;
[[nodiscard]] std::u16string_view Trimmed(std::u16string_view text, ValueKind kind) noexcept;

/// Text kinds, and bytes of unknown meaning.
[[nodiscard]] inline bool IsText(const ValueRepresentation& vr) noexcept {
    return vr.kind == ValueKind::kText || vr.kind == ValueKind::kProse || vr.vr == MC_VR_UN;
}

}  // namespace quorvex::dicom
