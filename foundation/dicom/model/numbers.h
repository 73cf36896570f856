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

/// A whole number: clamped to what fits, 0 for NaN.
[[nodiscard]] std::int64_t CutTowardsZero(double real) noexcept;

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
    [[nodiscard]] std::int64_t AsWhole() const noexcept {
        return isReal ? CutTowardsZero(real) : whole;
    }

    /// As a type of the language: whole numbers keep their low bits, as a cast does.
    template <class Type>
    [[nodiscard]] Type As() const noexcept {
        if constexpr (std::is_floating_point_v<Type>) {
            return static_cast<Type>(AsReal());
        } else {
            return static_cast<Type>(AsWhole());
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
