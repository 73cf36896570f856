#include "pipeline/recipe/standard_view.h"

#include "foundation/platform/surface.h"
#include "foundation/types/checked_size.h"
#include "pipeline/displayed_image.h"
#include "pipeline/layers/annotation_drawing.h"
#include "pipeline/layers/annotation_geometry.h"
#include "pipeline/pixel_elements.h"
#include "quorvex/CXGSPSInfo.h"
#include "render/view_job.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace quorvex {

namespace {

constexpr std::size_t kBytes = 256;

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

DisplayFunction FunctionOf(const DisplayedImage& image) {
    const StandardImage& standard = *image.standard;
    DisplayFunction function;
    function.voi = PresentVoi(image);
    function.isComplemented = (image.inverse != 0) != standard.isToggled;
    if (!standard.isGrey) return function;
    function.modality = standard.Stages().modality;
    function.presentation = standard.Stages().presentation;
    return function;
}

/// What a job reads beside the image itself.
struct Tables {
    std::vector<unsigned char> table;
    std::optional<WordRamp> ramp;
    std::vector<unsigned char> bytes;  ///< the frame itself, where its elements need no table
    std::optional<DisplayFunction::Line> line;  ///< of a shrunk frame, instead of all that
};

/// Display bytes of all elements of the frame, each where its bits say.
Tables TablesOf(const DisplayFunction& function, ValueSpan stored, std::size_t entries) {
    std::vector<unsigned char> values(static_cast<std::size_t>(stored.high - stored.low) + 1);
    function.Fill(stored.low, values);
    Tables tables;
    tables.table.resize(entries);
    const std::size_t first = static_cast<std::size_t>(stored.low) & (entries - 1);
    const std::size_t ahead = std::min(values.size(), entries - first);
    std::copy_n(values.data(), ahead, tables.table.data() + first);
    std::copy(values.data() + ahead, values.data() + values.size(), tables.table.data());
    const auto line = entries == kWords ? function.AsLine() : std::nullopt;
    if (line) tables.ramp = RampOfLine(line->gain, line->zero, stored.low, values);
    return tables;
}

/// Elements too wide for a table are displayed one by one, ahead of the job.
template <class Element>
std::vector<unsigned char> DisplayedOneByOne(const DisplayedImage& image,
                                             const DisplayFunction& function) {
    std::vector<unsigned char> bytes(image.pixels.size / sizeof(Element));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = function(std::int64_t{ElementAt<Element>(image.pixels.data.get(), i)});
    }
    return bytes;
}

/// Real elements. Padding is no part of the image: it is black.
template <class Element>
std::vector<unsigned char> DisplayedReals(const DisplayedImage& image,
                                          const DisplayFunction& function) {
    const auto& padding = image.standard->realPadding;
    std::vector<unsigned char> bytes(image.pixels.size / sizeof(Element));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto value = static_cast<double>(ElementAt<Element>(image.pixels.data.get(), i));
        bytes[i] = padding && padding->Holds(value) ? 0 : function.OfReal(value);
    }
    return bytes;
}

/// Display bytes of the elements that no table holds.
std::vector<unsigned char> DisplayedBytes(const DisplayedImage& image,
                                          const DisplayFunction& function) {
    switch (image.standard->sampleType) {
        case SampleType::kFloat32:
            return DisplayedReals<float>(image, function);
        case SampleType::kFloat64:
            return DisplayedReals<double>(image, function);
        case SampleType::kInteger:
            break;
    }
    return image.standard->form.isSigned ? DisplayedOneByOne<std::int32_t>(image, function)
                                         : DisplayedOneByOne<std::uint32_t>(image, function);
}

Tables MakeTables(const DisplayedImage& image, const DisplayFunction& function) {
    const StandardImage& standard = *image.standard;
    if (image.shrunk) return {.table = {}, .ramp = {}, .bytes = {}, .line = function.AsLine()};
    if (!standard.isGrey || image.bytesPerPixel == 1) {
        const ValueSpan all{0, kBytes - 1};
        return TablesOf(function, standard.isGrey ? standard.stored : all, kBytes);
    }
    if (image.bytesPerPixel == 2) return TablesOf(function, standard.stored, kWords);
    Tables tables;
    tables.table.resize(kBytes);
    std::iota(tables.table.begin(), tables.table.end(), static_cast<unsigned char>(0));
    tables.bytes = DisplayedBytes(image, function);
    return tables;
}

/// A state stands for all of the presentation: without a shutter of its own there is none.
const OwnedShutter* ShownShutter(const DisplayedImage& image) {
    const auto& applied = image.standard->applied;
    const auto& shutter = applied ? applied->shutter : image.standard->shutter;
    return image.shutterShown != 0 && shutter ? &*shutter : nullptr;
}

std::vector<const OwnedMarks*> ShownMarks(const DisplayedImage& image) {
    std::vector<const OwnedMarks*> shown;
    if (image.overlaysShown == 0) return shown;
    const auto& applied = image.standard->applied;
    for (const OwnedMarks& marks : applied ? applied->overlays : image.standard->overlays) {
        shown.push_back(&marks);
    }
    return shown;
}

/// Shrinks the frame and its layers where they are seen smaller, unless the last render has.
void PrepareShrunk(DisplayedImage& image, const DisplayFunction& function, CSize scaled) {
    const CSize size = ShrunkSize(image.imageSize, scaled);
    if (size == image.imageSize || !CanShrink(image, function)) {
        return image.shrunk.reset();
    }
    const bool hasShutter = ShownShutter(image) != nullptr;
    const bool hasOverlays = image.overlaysShown != 0;
    if (image.shrunk && image.shrunk->frame.Size() == size) {
        image.shrunk->frame.KeepAverages();
    } else {
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
    for (const OwnedMarks* const marks : ShownMarks(image)) {
        layers.push_back(CoverageOfBits(marks->bits, image.imageSize, size));
    }
    shrunk.layers = std::move(layers);
    shrunk.hasOverlays = hasOverlays;
}

bool IsGreyTone(const Rgb& colour) {
    return colour[0] == colour[1] && colour[1] == colour[2];
}

void AddLayers(ViewJob& job, const DisplayedImage& image) {
    const ShrunkImage* const shrunk = image.shrunk ? &*image.shrunk : nullptr;
    if (const OwnedShutter* const shutter = ShownShutter(image)) {
        job.shutterMask = (shrunk != nullptr ? shrunk->shutter : shutter->mask).data();
        job.shutterColour = shutter->colour;
        job.isColour = !IsGreyTone(shutter->colour);
    }
    const auto shown = ShownMarks(image);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        MarkLayer layer{.bits = {}, .coverage = {}, .colour = shown[i]->colour};
        if (shrunk != nullptr) {
            layer.coverage = shrunk->layers[i];
        } else {
            layer.bits = shown[i]->bits;
        }
        job.layers.push_back(layer);
        job.isColour = job.isColour || !IsGreyTone(layer.colour);
    }
}

ViewJob JobOf(DisplayedImage& image, const Tables& tables, const ViewPlacement& placement) {
    ViewJob job;
    job.imageSize = image.imageSize;
    job.pixels = tables.bytes.empty() ? image.pixels.data.get() : tables.bytes.data();
    job.pixelBytes = tables.bytes.empty() ? image.bytesPerPixel : 1;
    if (image.shrunk) {
        ShrunkFrame& frame = image.shrunk->frame;
        job.imageSize = frame.Size();
        job.pixelBytes = 1;
        job.greySource = [&image, &frame, line = *tables.line](int y, int next, std::size_t first,
                                                               std::span<unsigned char> bytes) {
            frame.ShowRow(image, line, y, next, first, bytes);
        };
    }
    job.table = tables.table;
    job.ramp = tables.ramp;
    job.colours = image.standard->colours;
    AddLayers(job, image);
    job.scaled = placement.scaled;
    job.quarterTurns = placement.quarterTurns;
    job.isMirrored = placement.isMirrored;
    job.window = VisiblePart(placement, image.viewSize);
    job.enlarging = image.enlarging;
    return job;
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
    if (!image.pixels.data) return QVM_ERROR_NO_IMAGE;
    if (!CanBePlaced(image)) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const ViewPlacement placement = PlacementOf(image);
    const DisplayFunction function = FunctionOf(image);
    PrepareShrunk(image, function, placement.scaled);
    const Tables tables = MakeTables(image, function);
    const ViewJob job = JobOf(image, tables, placement);
    const int pixelBytes = ResultPixelBytes(job);
    const auto bytes = CheckedProduct(job.window.width, job.window.height, pixelBytes);
    if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const bool isAgain = image.resultImage.data && image.resultImage.size == *bytes;
    PixelBlock fresh = isAgain ? PixelBlock{} : NewPixelBlock(*bytes);
    unsigned char* const output = (isAgain ? image.resultImage : fresh).data.get();
    if (job.window.width > 0 && job.window.height > 0) RunViewJob(job, output);
    if (!isAgain) image.resultImage = std::move(fresh);
    image.resultSize = {job.window.width, job.window.height};
    image.renderedPixelSize = pixelBytes;
    image.renderedPlacement = placement;
    image.resultCorner = CornerOf(placement, job.window);
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
