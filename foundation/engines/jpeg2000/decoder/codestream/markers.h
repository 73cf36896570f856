/// Marker segments: from bytes to parameters. Nothing is believed before it is checked.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/byte_reader.h"
#include "foundation/engines/jpeg2000/decoder/codestream/parameters.h"

namespace quorvex::j2k {

/// ISO/IEC 15444-1 Table A.2.
enum Marker : unsigned {
    kSoc = 0xFF4F,
    kCap = 0xFF50,
    kSiz = 0xFF51,
    kCod = 0xFF52,
    kCoc = 0xFF53,
    kTlm = 0xFF55,
    kPlm = 0xFF57,
    kPlt = 0xFF58,
    kQcd = 0xFF5C,
    kQcc = 0xFF5D,
    kRgn = 0xFF5E,
    kPoc = 0xFF5F,
    kPpm = 0xFF60,
    kPpt = 0xFF61,
    kMct = 0xFF74,
    kMcc = 0xFF75,
    kMco = 0xFF77,
    kCbd = 0xFF78,
    kSot = 0xFF90,
    kSop = 0xFF91,
    kEph = 0xFF92,
    kSod = 0xFF93,
    kEoc = 0xFFD9,
};

/// The content of SIZ; false where it is damaged.
[[nodiscard]] bool ReadSize(Bytes content, ImageSize& size);

/// The content of COD, COC, QCD, QCC, RGN or POC into `parameters`, whose components are there.
/// Other markers change nothing. False where the segment is damaged. Throws std::bad_alloc.
[[nodiscard]] bool ReadSegment(unsigned marker, Bytes content, Parameters& parameters);

}  // namespace quorvex::j2k
