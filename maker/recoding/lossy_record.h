/// What the standard asks of an object whose pixels were coded with losses.
#pragma once

#include "maker/recoding/recoding_plan.h"
#include "quorvex/DicomObject.h"

namespace quorvex {

/// Sets Lossy Image Compression, with ratio and method behind earlier ones.
void AppendLoss(const TransferSyntax& coding, double ratio, CDcmObject& object);

/// Marks an object that was coded lossily before, where it does not say so itself: an object that
/// says "01" stays as it is.
/// @param ratio  of that coding
void MarkEarlierLoss(const TransferSyntax& coding, double ratio, CDcmObject& object);

/// Makes the object one derived from its former self: Lossy Image Compression with ratio and
/// method behind earlier ones, derivation, Image Type and Frame Types, source, a UID of its own.
/// @param errorBound  no sample is further from its source; 0 where nothing is known
/// @return false where no UID can be made of the configured root
[[nodiscard]] bool RecordLoss(const TransferSyntax& coding, double ratio, unsigned errorBound,
                              CDcmObject& object);

}  // namespace quorvex
