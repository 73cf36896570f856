/// Attributes that go from one object to another as they are stored.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>

namespace quorvex {

/// Copies an attribute, where there is one: its bytes, whatever their character set, its value
/// representation, its items. Pixel Data in fragments is not copied.
/// @return whether it is there
bool CopyElement(const CDcmObjectCommon& source, CDcmObjectCommon& target, std::uint32_t tag);

/// Copies all attributes that `isWanted` answers for.
void CopyElements(const CDcmObjectCommon& source, CDcmObjectCommon& target,
                  bool (*isWanted)(const CDcmObjectCommon& target, std::uint32_t tag));

[[nodiscard]] bool HasElement(const CDcmObjectCommon& object, std::uint32_t tag) noexcept;

/// Words that are pixel values of either sign become US or SS as Pixel Representation has it. One
/// that the other sign would change is taken out.
void FitSigns(CDcmObjectCommon& object, bool wasSigned, bool isSigned);

}  // namespace quorvex
