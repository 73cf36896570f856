/// Frames with settings of their own: the functional groups of an enhanced multi-frame object.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace quorvex {

/// The header as a single-frame file of that frame would have it: rescale, window or VOI LUT, and
/// pixel spacing, taken from the frame's own functional groups, else from the shared ones, put at
/// the top level.
///
/// Each of the three stays as it is where any of its attributes lies at the top level already.
///
/// @param frameIndex  0 for the first frame
/// @return nothing where the groups have nothing to add; else a copy, which shares the content
[[nodiscard]] std::optional<CDcmObject> HeaderOfFrame(const CDcmObject& header, int frameIndex);

/// The same for all frames at once: of the three those that are alike in every frame.
[[nodiscard]] std::optional<CDcmObject> HeaderOfAllFrames(const CDcmObject& header);

/// Whether rescale and Modality LUT are the same in these frames.
/// @param frameIndices  empty for all frames
[[nodiscard]] bool HaveOneModality(const CDcmObject& header, std::span<const int> frameIndices);

/// Whether the object has functional groups: settings of frames then belong there.
[[nodiscard]] bool HasFunctionalGroups(const CDcmObject& object) noexcept;

/// Writes into every group of one macro, those of frames and the shared one; into a new shared one
/// where there is none.
void ChangeGroups(CDcmObject& object, std::uint32_t macro,
                  const std::function<void(CDcmItem& group)>& change);

}  // namespace quorvex
