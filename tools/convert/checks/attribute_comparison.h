/// How the attributes of two objects differ, element by element, those of items too.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::tools {

/// An attribute whose value, or whose number of items, is not the same.
struct ChangedAttribute {
    std::uint32_t tag = 0;
    std::string name;  ///< its keyword; "(gggg,eeee)" where it has none
};

/// Compares the stored bytes of all values, never decoded text, in tag order.
///
/// Without meaning are: a VR that only one of the objects knows, byte order, the byte that makes a
/// length even, lengths of groups and the meta information, Transfer Syntax UID aside. Pixel Data
/// of the image itself and its offset tables are compared as pixels, not here. Of a sequence that
/// has another number of items, or is in one object only, the items are not looked at.
///
/// @return each attribute once, in the order of their first places
std::vector<ChangedAttribute> CompareAttributes(const CDcmObject& source, const CDcmObject& output);

}  // namespace quorvex::tools
