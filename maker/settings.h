/// What a host wants changed in a new or converted object.
#pragma once

#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// Puts the texts that are not empty over what the object has.
void SetUserTexts(const _USER_SETTING_INFO& settings, CDcmObject& target);
void SetRecordTexts(const CXGSPSInfo& record, CDcmObject& target);

/// The same by the established rules: "PR" and "SR" choose the SOP Class too. Half of it may be
/// done when it throws.
void UpdateUserSettingInfo(const _USER_SETTING_INFO& settings, CDcmObject& target);
/// The choices of a presentation record by the established rules.
void UpdateByRecord(const CXGSPSInfo& record, CDcmObject& target);

}  // namespace quorvex
