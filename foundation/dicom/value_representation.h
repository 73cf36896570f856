/// The value representations as a table: letters, how they are written, what their values are.
#pragma once

#include "quorvex/DicomObject.h"

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
    std::uint8_t unit;     ///< bytes that a change of byte order turns round; 1 for none
    std::uint8_t pad;      ///< the byte that makes an odd value even
};

/// The row of a VR; that of UN for a number that is none.
[[nodiscard]] const ValueRepresentation& Describe(MC_VR vr) noexcept;

/// The VR that two letters name, or null.
[[nodiscard]] const ValueRepresentation* VrOfLetters(unsigned char first,
                                                     unsigned char second) noexcept;

}  // namespace quorvex::dicom
