/// Icons, and other pictures inside items, of an object that takes another coding.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"

namespace quorvex {

/// Makes encapsulated Pixel Data in items native: it is coded as the transfer syntax of the whole
/// object says (PS3.5 A.4), and would be unreadable under another one. Native Pixel Data in items
/// is right under every transfer syntax and stays.
/// @return QVM_SUCCESS or what a frame could not be decoded for; the object is then half changed
[[nodiscard]] QUORVEX_MESSAGE DecodeNestedPixels(TRANSFER_SYNTAX from, CDcmObject& object);

}  // namespace quorvex
