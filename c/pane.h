/// Pictures drawn into a C host's memory.
#pragma once

#include "c/handles.h"

namespace quorvex::c {

[[nodiscard]] quorvex_picture PictureOf(const PictureInfo& info) noexcept;

/// Draws what a view shows, in its place, and black around it.
[[nodiscard]] QUORVEX_MESSAGE DrawPane(quorvex_view& view, const quorvex_target& target);

}  // namespace quorvex::c
