/// The value representations as a table: letters, how they are written, what their values are.
#pragma once

#include "quorvex/DicomObject.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex::dicom {

enum class ValueKind : std::uint8_t {
    kText,   ///< backslash between values, affected by nothing else
    kProse,  ///< one text, in which a backslash is a character like any other
    kWhole,  ///< integers of `unit` bytes
    kReal,   ///< IEEE numbers of `unit` bytes
    kTag,    ///< pairs of 16-bit words
    kRaw,    ///< bytes or words that only the reader of the attribute can split
    kSequence,
};

struct ValueRepresentation {
    MC_VR vr;
    char letters[3];
    ValueKind kind;
    bool isSigned;
    bool hasLongLength;    ///< explicit VR writes it with two reserved bytes and a 32-bit length
    bool hasCharacterSet;  ///< Specific Character Set says how the text is encoded
    std::uint8_t unit;     ///< bytes that a change of byte order reverses; 1 for none
    std::uint8_t pad;      ///< the byte that makes an odd value even
};

namespace detail {

inline constexpr std::size_t kVrCount = 34;
inline constexpr std::size_t kLetters = 26;
inline constexpr std::size_t kLetterPairs = kLetters * kLetters;

constexpr std::size_t LetterPlace(unsigned char first, unsigned char second) {
    return static_cast<std::size_t>(first - 'A') * kLetters +
           static_cast<std::size_t>(second - 'A');
}

/// In the order of their numbers, which begin with 1.
extern const std::array<ValueRepresentation, kVrCount> kVrRows;
/// Number of the VR that two letters name; 0 for none.
extern const std::array<std::uint8_t, kLetterPairs> kVrByLetters;

}  // namespace detail

/// The row of a VR; that of UN for a number that is none.
[[nodiscard]] inline const ValueRepresentation& Describe(MC_VR vr) noexcept {
    const auto index = static_cast<std::size_t>(vr) - 1;
    return detail::kVrRows[index < detail::kVrCount ? index : MC_VR_UN - 1];
}

[[nodiscard]] constexpr bool IsCapital(unsigned char c) noexcept {
    return c >= 'A' && c <= 'Z';
}

/// The VR that two letters name, or null.
[[nodiscard]] inline const ValueRepresentation* VrOfLetters(unsigned char first,
                                                            unsigned char second) noexcept {
    if (!IsCapital(first) || !IsCapital(second)) return nullptr;
    const std::uint8_t number = detail::kVrByLetters[detail::LetterPlace(first, second)];
    return number == 0 ? nullptr : &detail::kVrRows[number - std::size_t{1}];
}

}  // namespace quorvex::dicom
