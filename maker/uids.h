/// New unique identifiers (DICOM PS3.5 section 9).
#pragma once

#include "quorvex/Types.h"

#include <optional>

namespace quorvex {

/// A new UID below `root`, of 64 characters at most and without leading zeros; below 2.25, as a
/// UUID, where `root` is empty. Nothing for a root that is none, or too long for 64 random bits
/// behind it.
[[nodiscard]] std::optional<CString> NewUid(const CString& root);

[[nodiscard]] bool IsValidUid(const CString& uid);

}  // namespace quorvex
