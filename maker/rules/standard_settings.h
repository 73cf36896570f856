/// What a host wants changed in a new object, by the standard rules.
#pragma once

#include "maker/storage_classes.h"
#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// The class of an object without pixels that the settings choose; null where they choose none.
[[nodiscard]] const StorageClass* DocumentClassOf(const _USER_SETTING_INFO& settings);

/// "KO" for Key Object Selection documents, "SR" for the other reports.
[[nodiscard]] const char* ModalityOf(const StorageClass& row) noexcept;

void ApplyStandardSettings(const _USER_SETTING_INFO& settings, CDcmObject& target);
/// Objects that number themselves have an Instance Number.
void ApplyStandardRecord(const CXGSPSInfo& record, CDcmObject& target);

/// Repeats SOP Class and Instance UID in the file meta information.
void NameMediaStorage(CDcmObject& object);

}  // namespace quorvex
