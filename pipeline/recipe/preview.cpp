#include "pipeline/recipe/preview.h"

#include "foundation/dicom/model/attributes.h"
#include "pipeline/displayed_image.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/view_layout.h"

namespace quorvex {
namespace {

constexpr int kByteBits = 8;

/// Whether a grey frame is shown through a window that is the same whatever the frame's values are.
bool HasFixedWindow(const StandardImage& image) {
    const GreyStages& stages = image.own;
    const bool hasTables = stages.modality.table != nullptr || !stages.voi.tables.empty();
    return !hasTables && (!stages.voi.windows.empty() || image.form.bitsStored <= kByteBits);
}

bool HasPalette(const CDcmObject& object) {
    int count = 0;
    return TextIs(object, tag::kPhotometricInterpretation, "PALETTE COLOR") ||
           object.GetValueCount(tag::kRedPaletteColorLookupTableDescriptor, count) == kDcmSuccess;
}

/// Whether overlays lie in bits of the pixels, which are not to be mixed into these.
bool HasEmbeddedOverlays(const CDcmObject& object) {
    for (std::uint32_t group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2)
        if (Read<int>(object, tag::InGroup(group, tag::kOverlayBitPosition)).value_or(0) != 0)
            return true;
    return false;
}

}  // namespace

std::optional<CSize> LeastPreviewSize(const StandardImage& image, const PixelHeader& header,
                                      const CDcmObject& object, CSize viewSize) {
    const bool isPlain = header.highBit + 1 == header.bitsStored && !HasPalette(object) &&
                         !HasEmbeddedOverlays(object);
    if (!isPlain || (header.IsGrey() && !HasFixedWindow(image))) return std::nullopt;
    DisplayedImage fitted;
    fitted.standard = image;
    fitted.imageSize = header.size;
    fitted.viewSize = viewSize;
    LayOutByStandard(fitted);
    if (!CanBePlaced(fitted)) return std::nullopt;
    return PlacementOf(fitted).scaled;
}

}  // namespace quorvex
