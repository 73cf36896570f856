/// An image of the class of its source, derived from it.
#pragma once

#include "maker/rules/host_frames.h"

namespace quorvex {

/// Whether as many frames of this kind could stand in place of those of the source.
[[nodiscard]] bool AreLikeThoseOf(const CDcmObject& source, const HostFrames& frames, int count);

/// Takes over, as stored, what the object does not have yet and what does not speak of other
/// pixels: no overlays, icon, signatures, extreme pixel values or private attributes. Image Type
/// keeps its values behind DERIVED; the source is named.
QUORVEX_MESSAGE DescribeDerivedImage(const CDcmObject& source, CDcmObject& object);

}  // namespace quorvex
