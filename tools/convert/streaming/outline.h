/// An object of many frames without its frames, and where those lie.
#pragma once

#include "quorvex/CxDcmParser.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::tools {

struct Outline {
    CDcmObject object;   ///< Pixel Data of no bytes, or with its table and first fragment alone
    CxDcmParser parser;  ///< has the file open, by the standard rules, its header read
    std::uint64_t storedBytes = 0;  ///< of all frames, and their table
};

/// Nothing for a file that is not plainly one of several whole frames of integers that end with a
/// byte, one item for each where they are coded: such a file is read whole, and what is wrong with
/// it is found then.
std::optional<Outline> OutlineOf(const std::string& path);

}  // namespace quorvex::tools
