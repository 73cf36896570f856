/// Numbers between value representations and the types that a caller asks for.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace quorvex::dicom {

/// A number as it was stored: whole or real, so that 64-bit integers lose nothing.
struct Number {
    bool isReal = false;
    std::int64_t whole = 0;
    double real = 0;

    [[nodiscard]] static Number Whole(std::int64_t whole) noexcept { return {false, whole, 0}; }
    [[nodiscard]] static Number Real(double real) noexcept { return {true, 0, real}; }
    [[nodiscard]] double AsReal() const noexcept {
        return isReal ? real : static_cast<double>(whole);
    }
    /// Cut towards zero; nothing for what does not lie within the two, and for NaN.
    [[nodiscard]] std::optional<std::int64_t> WholeWithin(std::int64_t least,
                                                          std::int64_t most) const noexcept {
        constexpr double kLimit = 9223372036854775808.0;
        if (isReal && !(real >= -kLimit && real < kLimit)) return std::nullopt;
        const std::int64_t cut = isReal ? static_cast<std::int64_t>(real) : whole;
        return cut >= least && cut <= most ? std::optional(cut) : std::nullopt;
    }

    /// As a type of the language, cut towards zero for a whole one; nothing where it does not fit.
    template <class Type>
    [[nodiscard]] std::optional<Type> As() const noexcept {
        using Limits = std::numeric_limits<Type>;
        if constexpr (std::is_floating_point_v<Type>) {
            const double value = AsReal();
            const bool fits =
                !std::isfinite(value) || std::abs(value) <= static_cast<double>(Limits::max());
            return fits ? std::optional(static_cast<Type>(value)) : std::nullopt;
        } else {
            static_assert(sizeof(Type) < sizeof whole || std::is_signed_v<Type>);
            const auto value = WholeWithin(Limits::min(), Limits::max());
            return value ? std::optional(static_cast<Type>(*value)) : std::nullopt;
        }
    }
};

/// The number that a text begins with, behind blanks; nothing where that has no digits.
[[nodiscard]] std::optional<Number> LeadingNumber(std::string_view text) noexcept;

/// A tag written "(gggg,eeee)" or as eight hexadecimal digits.
[[nodiscard]] std::optional<std::uint32_t> TagOfText(std::string_view text) noexcept;
[[nodiscard]] std::string TextOfTag(std::uint32_t tag);

/// The shortest text that reads back as the same number.
[[nodiscard]] std::string TextOfNumber(const Number& number);
[[nodiscard]] std::string TextOfFloat(float number);
/// The nearest text that a decimal string (16 characters) has room for.
[[nodiscard]] std::string DecimalString(const Number& number);

}  // namespace quorvex::dicom
