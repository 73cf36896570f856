#include "pipeline/recipe/standard_view.h"

#include "foundation/platform/surface.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/checked_size.h"
#include "pipeline/displayed_image.h"
#include "pipeline/layers/annotation_drawing.h"
#include "pipeline/layers/annotation_geometry.h"
#include "pipeline/recipe/view_values.h"
#include "pipeline/view/host_pixels.h"
#include "quorvex/CXGSPSInfo.h"
#include "render/view_job.h"

#include <algorithm>
#include <memory_resource>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;

/// The part of the placed image that lies in the view, counted from the image's corner; without
/// extent where none does.
RasterRect VisiblePart(const ViewPlacement& placement, CSize view) noexcept {
    const auto cut = [](std::int64_t corner, std::int64_t length, std::int64_t viewLength) {
        const std::int64_t first = std::clamp<std::int64_t>(-corner, 0, length);
        const std::int64_t end = std::clamp<std::int64_t>(viewLength - corner, first, length);
        return std::pair(static_cast<int>(first), static_cast<int>(end - first));
    };
    const auto [x, width] = cut(placement.corner.x, placement.turned.cx, view.cx);
    const auto [y, height] = cut(placement.corner.y, placement.turned.cy, view.cy);
    return {x, y, width, height};
}

/// A state stands for all of the presentation: without a shutter of its own there is none.
const OwnedShutter* ShownShutter(const DisplayedImage& image) {
    const auto& applied = image.standard->applied;
    const auto& shutter = applied ? applied->shutter : image.standard->shutter;
    return image.shutterShown != 0 && shutter ? &*shutter : nullptr;
}

std::span<const OwnedMarks> ShownMarks(const DisplayedImage& image) {
    if (image.overlaysShown == 0) return {};
    const auto& applied = image.standard->applied;
    return applied ? applied->overlays : image.standard->overlays;
}

bool IsGreyTone(const Rgb& colour) {
    return colour[0] == colour[1] && colour[1] == colour[2];
}

/// Whether a render has three bytes a pixel.
bool IsSeenInColour(const DisplayedImage& image) {
    if (!image.standard->isGrey || !image.standard->colours.empty()) return true;
    const OwnedShutter* const shutter = ShownShutter(image);
    if (shutter != nullptr && !IsGreyTone(shutter->colour)) return true;
    return !std::ranges::all_of(ShownMarks(image), IsGreyTone, &OwnedMarks::colour);
}

/// What of an image is rendered.
struct ShownPart {
    ViewPlacement placement;
    RasterRect part;  ///< of the placed image
    int pixelBytes = 1;

    [[nodiscard]] CSize Size() const noexcept { return {part.width, part.height}; }
};

ShownPart PartInView(const DisplayedImage& image) {
    const ViewPlacement placement = PlacementOf(image);
    return {placement, VisiblePart(placement, image.viewSize),
            IsSeenInColour(image) ? kColourBytes : 1};
}

QUORVEX_MESSAGE CheckView(const DisplayedImage& image) {
    if (!image.pixels.data) return QVM_ERROR_NO_IMAGE;
    return CanBePlaced(image) ? QVM_SUCCESS : QVM_ERROR_INVALID_OUTPUT_SIZE;
}

/// Whether what was shrunk for the last render serves this one, or another frame of that size.
bool TakeUpShrunk(DisplayedImage& image, CSize size) {
    if (!image.shrunk || image.shrunk->frame.Size() != size ||
        image.shrunk->frame.SourceSize() != image.imageSize) {
        return false;
    }
    ShrunkImage& shrunk = *image.shrunk;
    if (!shrunk.isOfEarlierFrame) {
        shrunk.frame.KeepAverages();
        return true;
    }
    shrunk.frame.Forget();
    shrunk.shutter.clear();
    shrunk.layers.clear();
    shrunk.hasShutter = shrunk.hasOverlays = shrunk.isOfEarlierFrame = false;
    return true;
}

/// Shrinks the frame and its layers where they are seen smaller, unless the last render has.
void PrepareShrunk(DisplayedImage& image, const DisplayFunction& function, CSize scaled) {
    const CSize size = ShrunkSize(image.imageSize, scaled);
    if (size == image.imageSize || !CanShrink(image, function)) {
        return image.shrunk.reset();
    }
    const bool hasShutter = ShownShutter(image) != nullptr;
    const bool hasOverlays = image.overlaysShown != 0;
    if (!TakeUpShrunk(image, size)) {
        image.shrunk = ShrunkImage{.frame = ShrunkFrame(image, size), .shutter = {}, .layers = {}};
    }
    ShrunkImage& shrunk = *image.shrunk;
    if (hasShutter != shrunk.hasShutter) {
        shrunk.shutter.clear();
        const OwnedShutter* const shutter = ShownShutter(image);
        if (shutter != nullptr)
            shrunk.shutter = CoverageOfMask(shutter->mask, image.imageSize, size);
        shrunk.hasShutter = hasShutter;
    }
    if (hasOverlays == shrunk.hasOverlays) return;
    std::vector<std::vector<unsigned char>> layers;
    for (const OwnedMarks& marks : ShownMarks(image)) {
        layers.push_back(CoverageOfBits(marks.bits, image.imageSize, size));
    }
    shrunk.layers = std::move(layers);
    shrunk.hasOverlays = hasOverlays;
}

using MarkLayers = std::pmr::vector<MarkLayer>;

/// Of the image or of what it was shrunk to, which must outlive them.
MarkLayers ShownLayers(const DisplayedImage& image, std::pmr::memory_resource& scratch) {
    const auto shown = ShownMarks(image);
    MarkLayers layers(&scratch);
    layers.reserve(shown.size());
    for (std::size_t i = 0; i < shown.size(); ++i) {
        MarkLayer layer{.bits = {}, .coverage = {}, .colour = shown[i].colour};
        if (image.shrunk) {
            layer.coverage = image.shrunk->layers[i];
        } else {
            layer.bits = shown[i].bits;
        }
        layers.push_back(layer);
    }
    return layers;
}

void AddShutter(ViewJob& job, const DisplayedImage& image) {
    const OwnedShutter* const shutter = ShownShutter(image);
    if (shutter == nullptr) return;
    job.shutterMask = (image.shrunk ? image.shrunk->shutter : shutter->mask).data();
    job.shutterColour = shutter->colour;
}

/// Renders, without a change to `output` where it throws.
void RunView(DisplayedImage& image, const ShownPart& shown,
             const PixelGrid<unsigned char>& output) {
    if (shown.part.width < 1 || shown.part.height < 1) return;
    const ScratchMemory::Use scratch(image.scratch);
    const DisplayFunction function = FunctionOf(image);
    PrepareShrunk(image, function, shown.placement.scaled);
    const ComputedRows rows(image, function);
    const MarkLayers layers = ShownLayers(image, image.scratch);
    ViewJob job;
    job.imageSize = image.shrunk ? image.shrunk->frame.Size() : image.imageSize;
    if (ComputedRows::Serve(image)) {
        job.greySource = rows;
    } else {
        const ViewTables tables = MakeTables(image, function, image.scratch);
        job.pixels = image.pixels.data.get();
        job.pixelBytes = image.bytesPerPixel;
        job.table = tables.table;
        job.ramp = tables.ramp;
        job.colours = image.standard->colours;
    }
    AddShutter(job, image);
    job.layers = layers;
    job.isColour = shown.pixelBytes == kColourBytes;
    job.scaled = shown.placement.scaled;
    job.quarterTurns = shown.placement.quarterTurns;
    job.isMirrored = shown.placement.isMirrored;
    job.window = shown.part;
    job.enlarging = image.enlarging;
    RunViewJob(job, output, image.scratch);
}

/// Room for a result: the most that the view can show of the image, so that a pan needs no other.
std::size_t RoomFor(const DisplayedImage& image, const ShownPart& shown, std::size_t bytes) {
    const CSize turned = shown.placement.turned;
    const auto most =
        CheckedProduct(std::min(turned.cx, std::max(image.viewSize.cx, 0)),
                       std::min(turned.cy, std::max(image.viewSize.cy, 0)), shown.pixelBytes);
    return std::max(most.value_or(0), bytes);
}

CPoint CornerOf(const ViewPlacement& placement, const RasterRect& part) noexcept {
    return {placement.corner.x + part.x, placement.corner.y + part.y};
}

bool ShowsAnnotations(const DisplayedImage& image) {
    return image.annotationsShown != 0 && image.presentation != nullptr;
}

/// Image coordinates to the surface, as the job takes the pixels.
ImageToSurface ImagePlace(const DisplayedImage& image, const ViewPlacement& placement) {
    return ImageToSurface::Placed(image.imageSize, placement.scaled, placement.quarterTurns,
                                  placement.isMirrored, placement.corner);
}

/// Where the displayed area lies when it has just been laid out: the user's zoom and pan do not
/// move it.
SurfaceArea LaidOutArea(const DisplayedImage& image) {
    DisplayedImage fresh;
    fresh.standard = image.standard;
    fresh.imageSize = image.imageSize;
    fresh.viewSize = image.viewSize;
    fresh.rotation = image.rotation;
    fresh.horizontalFlip = image.horizontalFlip;
    fresh.screenPixelSize = image.screenPixelSize;
    LayOutByStandard(fresh);
    const ImageToSurface place = ImagePlace(fresh, PlacementOf(fresh));
    CanvasPoint one{0.0, 0.0};
    CanvasPoint other{static_cast<double>(image.imageSize.cx),
                      static_cast<double>(image.imageSize.cy)};
    const auto& applied = image.standard->applied;
    if (applied && applied->area) {
        const DisplayedAreaSelection& area = *applied->area;
        one = {static_cast<double>(area.left - 1), static_cast<double>(area.top - 1)};
        other = {static_cast<double>(area.right), static_cast<double>(area.bottom)};
    }
    const CanvasPoint from = place(one);
    const CanvasPoint to = place(other);
    return {std::min(from.x, to.x), std::min(from.y, to.y), std::max(from.x, to.x),
            std::max(from.y, to.y)};
}

}  // namespace

QUORVEX_MESSAGE RenderStandardView(DisplayedImage& image) {
    const QUORVEX_MESSAGE checked = CheckView(image);
    if (checked != QVM_SUCCESS) return checked;
    const ShownPart shown = PartInView(image);
    const auto bytes = CheckedProduct(shown.part.width, shown.part.height, shown.pixelBytes);
    if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const std::size_t room = RoomFor(image, shown, *bytes);
    const PixelBlock& last = image.resultImage;
    // What can be called off must not have begun to overwrite the last result.
    const bool isAgain = last.data && last.capacity >= *bytes && last.capacity / 2 <= room &&
                         !Cancellation::OfThisThread().IsPossible();
    PixelBlock fresh = isAgain ? PixelBlock{} : NewPixelBlock(room);
    unsigned char* const output = (isAgain ? last : fresh).data.get();
    const auto step = std::ptrdiff_t{shown.part.width} * shown.pixelBytes;
    RunView(image, shown, {output, step, shown.Size(), shown.pixelBytes});
    if (!isAgain) image.resultImage = std::move(fresh);
    image.resultImage.size = *bytes;
    image.resultSize = shown.Size();
    image.renderedPixelSize = shown.pixelBytes;
    image.renderedPlacement = shown.placement;
    image.resultCorner = CornerOf(shown.placement, shown.part);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE RenderStandardViewInto(DisplayedImage& image, const PixelTarget& target) {
    const QUORVEX_MESSAGE viewed = CheckView(image);
    if (viewed != QVM_SUCCESS) return viewed;
    const ShownPart shown = PartInView(image);
    const QUORVEX_MESSAGE checked = CheckTarget(target, shown.Size(), shown.pixelBytes);
    if (checked != QVM_SUCCESS) return checked;
    RunView(image, shown, RowsOf(target, shown.Size(), shown.pixelBytes));
    SpreadPixels(target, shown.Size(), shown.pixelBytes);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE DescribeStandardView(const DisplayedImage& image, PictureInfo& picture) {
    const QUORVEX_MESSAGE checked = CheckView(image);
    if (checked != QVM_SUCCESS) return checked;
    const ShownPart shown = PartInView(image);
    picture = {shown.Size(), shown.pixelBytes, CornerOf(shown.placement, shown.part)};
    return QVM_SUCCESS;
}

bool IsResultStale(const DisplayedImage& image) noexcept {
    if (!CanBePlaced(image)) return false;
    ViewPlacement moved = image.renderedPlacement;
    moved.corner = PlacementOf(image).corner;
    const RasterRect needed = VisiblePart(moved, image.viewSize);
    const CPoint corner = image.renderedPlacement.corner;
    const RasterRect there{image.resultCorner.x - corner.x, image.resultCorner.y - corner.y,
                           image.resultSize.cx, image.resultSize.cy};
    return needed.x < there.x || needed.y < there.y ||
           needed.x + needed.width > there.x + there.width ||
           needed.y + needed.height > there.y + there.height;
}

void DrawStandardView(DrawingSurface& surface, const DisplayedImage& image) {
    const ViewPlacement& rendered = image.renderedPlacement;
    ViewPlacement present = rendered;
    if (CanBePlaced(image)) present.corner = PlacementOf(image).corner;
    const CPoint corner{image.resultCorner.x + present.corner.x - rendered.corner.x,
                        image.resultCorner.y + present.corner.y - rendered.corner.y};
    PutPicture(surface, corner, image.resultSize, image.renderedPixelSize,
               image.resultImage.Bytes());
    if (!ShowsAnnotations(image)) return;
    DrawAnnotationLayers(*image.presentation, {ImagePlace(image, present), LaidOutArea(image)},
                         surface);
}

}  // namespace quorvex
