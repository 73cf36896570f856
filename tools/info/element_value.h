/// The value of one element, as text for a reader and as JSON for a program.
#pragma once

#include "quorvex/DicomObject.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::tools {

/// "PN", "OB", ...; "??" for a number that is none.
std::string_view RepresentationName(MC_VR vr) noexcept;

/// Whether the value is text, so that its bytes need a character set to be read.
bool IsText(MC_VR vr) noexcept;

/// Text of `vr` whose bytes are plain ASCII: its own text, without padding. Anything else has to be
/// read through the object library.
bool IsPlainAscii(std::string_view bytes) noexcept;

/// Whether a backslash is part of the text, which is one value: LT, ST, UT, UR.
bool IsProse(MC_VR vr) noexcept;

/// Whether the value is one of bytes or words without a meaning of their own: OB, OW, ..., UN.
bool IsBulk(MC_VR vr) noexcept;

/// An element as its reader is to understand it.
struct UnderstoodElement {
    DcmElementView view;
    bool isBigEndian = false;
};

/// The element itself, or, where a writer stored a known attribute as UN, the value as the standard
/// has it: such bytes are little-endian in every file (PS3.5 6.2.2).
UnderstoodElement Understand(const DcmElementView& element, bool isDataSetBigEndian) noexcept;

/// Each number as text, in full: no limit on how many.
std::vector<std::string> NumbersOf(const UnderstoodElement& element);

/// The bytes of a value without meaning, in little-endian order.
std::string LittleEndianBytes(const UnderstoodElement& element);

/// The value's own bytes; empty for a sequence.
std::string_view ValueBytes(const DcmElementView& element) noexcept;

/// A value that is not text, for a reader: numbers joined with backslashes or bytes in hexadecimal,
/// cut where it gets long.
std::string NumbersAsText(const UnderstoodElement& element);

/// The same for a program: a JSON array of numbers, or a JSON string of hexadecimal digits; "null"
/// where the value is too long to be of use there.
std::string NumbersAsJson(const UnderstoodElement& element);

}  // namespace quorvex::tools
