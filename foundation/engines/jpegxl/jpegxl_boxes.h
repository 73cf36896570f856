/// The boxes around a JPEG XL codestream (ISO/IEC 18181-2).
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace quorvex {

struct JpegXlParts {
    std::vector<unsigned char> joined;          ///< of a codestream that lies in several boxes
    std::span<const unsigned char> codestream;  ///< in the stream, or in `joined`
    std::span<const unsigned char> jpegBox;     ///< content of the first "jbrd"; empty for none
};

/// What is of use in a stream, bare or in boxes. Nothing for one that is not JPEG XL; of one that
/// is cut off what is there. Throws std::bad_alloc.
[[nodiscard]] std::optional<JpegXlParts> TakeApart(std::span<const unsigned char> stream);

/// A codestream and the rest of a JPEG stream in boxes of their own. Throws std::bad_alloc.
[[nodiscard]] std::vector<unsigned char> PutIntoBoxes(std::span<const unsigned char> codestream,
                                                      std::span<const unsigned char> jpegBox);

}  // namespace quorvex
