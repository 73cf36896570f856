/// Pixels that a host hands over itself, shown by the standard rules.
#pragma once

#include "pipeline/pixel_header.h"
#include "pipeline/value_range.h"
#include "quorvex/Types.h"

#include <span>

namespace quorvex {

class CDcmObject;
class CLData;
struct DisplayedImage;

/// What a volume's image is to be shown as.
enum class ImageKind { kPlain, kPalette, kSupplemental, kOverlays };

/// The values count as the modality stage's result.
struct CallersPixels {
    PixelHeader header;
    std::span<const unsigned char> pixels;
    ValueSpan range;               ///< of grey; the window where none is stated
    CDcmObject* object = nullptr;  ///< what a data set beside them adds, or null
    const CLData* data = nullptr;  ///< what a volume says, or null; `object` then adds only layers
    ImageKind kind = ImageKind::kPlain;
};

/// Brings them in; throws std::bad_alloc, and the image is as it was then.
void ShowPixelsByStandard(DisplayedImage& image, const CallersPixels& callers, CSize viewSize);

}  // namespace quorvex
