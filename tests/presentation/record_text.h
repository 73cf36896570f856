/// Records as text, to compare whole records at once.
#pragma once

#include "quorvex/CXGSPSInfo.h"

#include <cstdint>
#include <string>

namespace quorvex::test {

/// "name value; ..." for each field of a reading that is not 0, null or empty: whole numbers, other
/// numbers, look-up tables (count, first value, bits: at most eight entries), annotations.
std::string TextOf(const CXGSPSInfo& info);

}  // namespace quorvex::test
