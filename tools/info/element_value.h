/// The value of one element, as text for a reader and as JSON for a program.
#pragma once

#include "quorvex/DicomObject.h"

#include <string>
#include <string_view>

namespace quorvex::tools {

/// "PN", "OB", ...; "??" for a number that is none.
std::string_view RepresentationName(MC_VR vr) noexcept;

/// Whether the value is text, so that its bytes need a character set to be read.
bool IsText(MC_VR vr) noexcept;

/// Text of `vr` whose bytes are plain ASCII: its own text, without padding. Anything else has to be
/// read through the object library.
bool IsPlainAscii(std::string_view bytes) noexcept;

/// The value's own bytes; empty for a sequence.
std::string_view ValueBytes(const DcmElementView& element) noexcept;

/// A value that is not text, for a reader: numbers joined with backslashes or bytes in hexadecimal,
/// cut where it gets long. `bigEndian` is the byte order of the data set; meta information is
/// little-endian in every file.
std::string NumbersAsText(const DcmElementView& element, bool bigEndian);

/// The same for a program: a JSON array of numbers, or a JSON string of hexadecimal digits; "null"
/// where the value is too long to be of use there.
std::string NumbersAsJson(const DcmElementView& element, bool bigEndian);

}  // namespace quorvex::tools
