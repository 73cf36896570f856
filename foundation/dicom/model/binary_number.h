/// Values that are not stored as text, as numbers.
#pragma once

#include "foundation/dicom/model/byte_order.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/numbers.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <type_traits>

namespace quorvex::dicom {

/// How the value of an element is to be understood: an element of VR UN whose tag is known is read
/// as what its tag says.
[[nodiscard]] inline const ValueRepresentation& MeaningOf(const Element& element) noexcept {
    return Describe(element.vr == MC_VR_UN ? LookUp(element.tag).vr : element.vr);
}

/// The first number of these is a count, the second a stored pixel value of either sign: they are
/// read as unsigned, whatever the VR of the file says, and callers know the sign themselves.
inline constexpr std::uint32_t kDescriptors[] = {tag::kGrayLookupTableDescriptor,
                                                 tag::kRedPaletteColorLookupTableDescriptor,
                                                 tag::kGreenPaletteColorLookupTableDescriptor,
                                                 tag::kBluePaletteColorLookupTableDescriptor,
                                                 tag::kLargeRedPaletteColorLookupTableDescriptor,
                                                 tag::kLargeGreenPaletteColorLookupTableDescriptor,
                                                 tag::kLargeBluePaletteColorLookupTableDescriptor,
                                                 tag::kLUTDescriptor};

inline bool IsDescriptor(std::uint32_t tag) {
    return std::find(std::begin(kDescriptors), std::end(kDescriptors), tag) !=
           std::end(kDescriptors);
}

/// How a value that is not text splits into numbers.
struct NumberForm {
    std::size_t bytes = 0;  ///< 0 where it does not
    bool isReal = false;
    bool isSigned = false;
    bool isTag = false;
};

inline NumberForm FormOf(const Element& element) noexcept {
    if (element.tag == tag::kLUTData) return {.bytes = 2};
    const ValueRepresentation& vr = MeaningOf(element);
    switch (vr.kind) {
        case ValueKind::kWhole:
            return {.bytes = vr.unit, .isSigned = vr.isSigned && !IsDescriptor(element.tag)};
        case ValueKind::kReal:
            return {.bytes = vr.unit, .isReal = true};
        case ValueKind::kTag:
            return {.bytes = kTagBytes, .isTag = true};
        case ValueKind::kRaw:
            return {.bytes = vr.unit, .isReal = vr.vr == MC_VR_OF || vr.vr == MC_VR_OD};
        default:
            return {};
    }
}

template <std::unsigned_integral Stored>
Number LoadNumber(const unsigned char* bytes, bool isBigEndian, const NumberForm& form) {
    const auto stored = Load<Stored>(bytes, isBigEndian);
    if constexpr (sizeof(Stored) == 4) {
        if (form.isReal) return Number::Real(static_cast<double>(std::bit_cast<float>(stored)));
    }
    if constexpr (sizeof(Stored) == 8) {
        if (form.isReal) return Number::Real(std::bit_cast<double>(stored));
    }
    if constexpr (sizeof(Stored) == 8) {
        const bool isBeyond = !form.isSigned && stored > std::numeric_limits<std::int64_t>::max();
        if (isBeyond) return Number::Real(static_cast<double>(stored));
    }
    using Signed = std::make_signed_t<Stored>;
    return Number::Whole(form.isSigned ? static_cast<std::int64_t>(static_cast<Signed>(stored))
                                       : static_cast<std::int64_t>(stored));
}

inline Number LoadNumber(const unsigned char* bytes, bool isBigEndian,
                         const NumberForm& form) noexcept {
    if (form.isTag) return Number::Whole(LoadTag(bytes, isBigEndian));
    switch (form.bytes) {
        case 1:
            return LoadNumber<std::uint8_t>(bytes, isBigEndian, form);
        case 2:
            return LoadNumber<std::uint16_t>(bytes, isBigEndian, form);
        case 4:
            return LoadNumber<std::uint32_t>(bytes, isBigEndian, form);
        default:
            return LoadNumber<std::uint64_t>(bytes, isBigEndian, form);
    }
}

/// One number of a value. Words of OW and entries of LUT Data count as unsigned.
[[nodiscard]] inline std::optional<Number> BinaryNumber(const DataSet& dataSet,
                                                        const Element& element,
                                                        std::size_t index) noexcept {
    const NumberForm form = FormOf(element);
    const Bytes value = dataSet.ValueOf(element);
    // No division: it would be the slowest step.
    const bool isThere = index < value.size() && (index + 1) * form.bytes <= value.size();
    if (form.bytes == 0 || !isThere) return std::nullopt;
    return LoadNumber(value.data() + index * form.bytes, element.isBigEndian, form);
}

}  // namespace quorvex::dicom
