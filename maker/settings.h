/// What a host wants changed in a new or converted object.
#pragma once

#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// Puts the texts that are not empty over what the object has; "PR" and "SR" choose the SOP Class
/// too. Nothing happens without settings. Half of it may be done when it throws.
void UpdateUserSettingInfo(const _USER_SETTING_INFO* settings, CDcmObject& target);

}  // namespace quorvex
