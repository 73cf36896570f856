/// Which elements of an object the user wants to see.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorvex::tools {

/// One attribute, by keyword or number.
struct WantedTag {
    std::string keyword;  ///< in small letters; empty for a number
    std::uint32_t tag = 0;
};

/// "PatientName", "0010,0010", "(0010,0010)" or "00100010". A WrongUsage for any other text.
WantedTag ParseTag(const std::string& text);

/// Walks an object and hands on every element, or, where tags are wanted, those of that tag at any
/// depth, with the sequences that they lie in and all that lies in them.
/// @return whether there was one
bool WalkWanted(const CDcmObject& object, const std::vector<WantedTag>& wanted,
                const std::function<void(const DcmElementView&)>& take);

}  // namespace quorvex::tools
