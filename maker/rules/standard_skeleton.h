/// Patient, study and equipment of a new object, by the standard rules.
#pragma once

#include "quorvex/CxDcmMaker.h"

#include <cstdint>

namespace quorvex {

/// Copies as stored what describes patient and study, gives new UIDs and dates, and leaves empty
/// what has to be there (type 2).
/// @return QVM_SUCCESS, or QVM_ERROR_INVALID_MAKER_PARAM where no UID can be made of the configured
///         prefix
[[nodiscard]] QUORVEX_MESSAGE FillStandardSkeleton(const CDcmObject& source, CDcmObject& target);

/// Local time as HHMMSS.FFFFFF.
[[nodiscard]] CString StandardTime();

/// An empty attribute where there is none.
void RequireElement(CDcmObjectCommon& object, std::uint32_t tag);

/// Whether the body part that is named is one of a pair (PS3.16 Annex L), or none is named: images
/// of such a part have a laterality, if only an unknown one.
[[nodiscard]] bool MayHaveLaterality(const CDcmObjectCommon& object);

}  // namespace quorvex
