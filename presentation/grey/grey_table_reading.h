/// Look-up tables as objects hold them, in every layout that writers use.
#pragma once

#include "presentation/grey/grey_stages.h"

#include <memory>

namespace quorvex {

/// How the first mapped value of a table is meant: objects do not always say so by its VR.
enum class FirstValue { kUnsigned, kSigned };

/// The table of an item with LUT Descriptor and LUT Data; null without one. Entries of up to 8 bits
/// may be stored one or two a word. Data that ends early repeats its last entry.
[[nodiscard]] std::shared_ptr<const GreyTable> ReadGreyTable(const CDcmItem& item,
                                                             FirstValue firstValue);

}  // namespace quorvex
