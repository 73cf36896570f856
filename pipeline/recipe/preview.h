/// Images that are to be seen as they come in, and no larger.
#pragma once

#include "quorvex/Types.h"

#include <optional>

namespace quorvex {

class CDcmObject;
struct StandardImage;
struct PixelHeader;

/// The columns and rows that a view needs of an image; nothing where the picture goes by more than
/// local means of its values: a range over all of them, a table, a palette, bits above the stored
/// ones.
[[nodiscard]] std::optional<CSize> LeastPreviewSize(const StandardImage& image,
                                                    const PixelHeader& header,
                                                    const CDcmObject& object, CSize viewSize);

}  // namespace quorvex
