/// What a target cannot hold, and what cannot be read here: the file is good, and stays as it is.
#pragma once

#include "quorvex/DicomObject.h"
#include "tools/convert/refusal.h"
#include "tools/convert_target.h"

namespace quorvex::tools {

/// Throws a Refusal of kUnsupported for frames without a decoder here, and for what would make no
/// sense under the target whatever its coder does. Whatever is in the target's form already passes.
void RefuseWhatTheTargetCannotHold(const CDcmObject& source, const ConvertTarget& target);

/// Why frames were not coded: kUnsupported where the target cannot hold what the attribute says
/// that the maker's outcome names, kBad for all else.
Refusal RefusalOf(QUORVEX_MESSAGE outcome, const CDcmObject& source, const ConvertTarget& target);

}  // namespace quorvex::tools
