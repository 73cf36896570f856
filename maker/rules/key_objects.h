/// Key Object Selection documents (PS3.3 A.35.4, PS3.16 TID 2010).
#pragma once

#include "quorvex/CxDcmMaker.h"

#include <memory>
#include <span>

namespace quorvex {

/// A document that points at `objects`; patient and study come from the first one.
/// @param settings  may be null
/// @return QVM_SUCCESS, QVM_ERROR_NO_SOURCE_OBJECT for no objects or one without the UIDs that name
///         it, QVM_ERROR_INVALID_MAKER_PARAM for a prefix of UIDs that is none
[[nodiscard]] QUORVEX_MESSAGE MakeKeyObjectDocument(std::span<CDcmObject* const> objects,
                                                    const _KEY_OBJECT_INFO& info,
                                                    const _USER_SETTING_INFO* settings,
                                                    std::unique_ptr<CDcmObject>& made);

}  // namespace quorvex
