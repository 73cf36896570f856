// RenderRun: one row of stored values, mapped to display bytes.
#include "foundation/raster/byte_table.h"
#include "foundation/raster/raster.h"
#include "render/job_rules.h"
#include "render/render_run.h"
#include "render/row_mapping.h"

#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

/// Rows alternate between the two that a block has.
unsigned char* RowOfTwo(std::span<unsigned char> rows, int row) {
    return rows.data() + (row % 2 == 0 ? 0 : rows.size() / 2);
}

}  // namespace

unsigned char* RenderRun::WorkRow(int row) const noexcept {
    return RowOfTwo(workImage_, row) + std::ptrdiff_t{workRoi_.left} * workPixelSize_;
}

unsigned char* RenderRun::CompositeRow(int row) const noexcept {
    return RowOfTwo(compositeImage_, row) + std::ptrdiff_t{workRoi_.left} * kColourBytes;
}

// Working rows run from the bottom; those of the source, the mask and the palette from the top.
std::size_t RenderRun::SourcePixel(int row) const noexcept {
    return static_cast<std::size_t>(info_.imageHeight - 1 - row) *
               static_cast<std::size_t>(info_.imageWidth) +
           static_cast<std::size_t>(workRoi_.left);
}

const unsigned char* RenderRun::Render(int row, int prefetchRow) {
    cancellation_.ThrowIfAsked();
    if (IsColour(info_)) {
        RenderColorImage(row);
    } else if (info_.bytesPerPixel == 1) {
        RawImg2PValue(row, prefetchRow);
    } else if (info_.bitsStored == 8) {
        RawImg2PValue16Half(row, prefetchRow);
    } else {
        RawImg2PValue16(row, prefetchRow);
    }
    if (info_.renderMode == kRenderOverlay) ApplyOverlay(row);
    if (!IsComposite(info_)) return WorkRow(row);
    RenderSuppPal(row);
    return CompositeRow(row);
}

void RenderRun::RawImg2PValue(int row, int prefetchRow) {
    MapRow<ByteReader>(row, prefetchRow);
}

void RenderRun::RawImg2PValue16(int row, int prefetchRow) {
    if (ramp_) return MapRowByRamp(row, prefetchRow);
    if (info_.lutOffset < 0) return MapRow<WordReader<std::int16_t>>(row, prefetchRow);
    MapRow<WordReader<std::uint16_t>>(row, prefetchRow);
}

void RenderRun::RawImg2PValue16Half(int row, int prefetchRow) {
    if (info_.lutOffset < 0) return MapRow<LowByteReader<std::int8_t>>(row, prefetchRow);
    MapRow<LowByteReader<std::uint8_t>>(row, prefetchRow);
}

template <class Reader>
void RenderRun::MapRow(int row, int prefetchRow) {
    const std::size_t pixel = SourcePixel(row);
    const unsigned char* const source = info_.pixels + pixel * Reader::kBytes;
    const auto count = static_cast<std::size_t>(workRoi_.Width());
    const ByteTable table{table_, tableFirst_};
    if (info_.shutterMask == nullptr) {
        const std::size_t next = SourcePixel(prefetchRow);
        MapPlain<Reader>(source, info_.pixels + next * Reader::kBytes, table, WorkRow(row), count);
    } else {
        MapMasked<Reader>(source, table, WorkRow(row), count, info_.shutterMask + pixel,
                          static_cast<unsigned char>(info_.shutterValue));
    }
}

void RenderRun::MapRowByRamp(int row, int prefetchRow) {
    const std::size_t pixel = SourcePixel(row);
    const std::size_t next = SourcePixel(prefetchRow);
    const auto count = static_cast<std::size_t>(workRoi_.Width());
    unsigned char* const to = WorkRow(row);
    MapByRamp(*ramp_, info_.pixels + 2 * pixel, info_.pixels + 2 * next, to, count);
    if (info_.shutterMask == nullptr) return;
    Hide(info_.shutterMask + pixel, static_cast<unsigned char>(info_.shutterValue), to, count);
}

/// Red, green, blue become blue, green, red, as bitmaps have them. Without a table all is black.
void RenderRun::RenderColorImage(int row) {
    const auto count = static_cast<std::size_t>(workRoi_.Width());
    // The row still holds the overlay of the row two above.
    if (table_ == nullptr) return void(std::memset(WorkRow(row), 0, count * kColourBytes));
    MapColoursReversed(ByteTable256(table_, 256), info_.pixels + SourcePixel(row) * kColourBytes,
                       WorkRow(row), count);
}

void RenderRun::RenderSuppPal(int row) {
    static constexpr unsigned char kSeeThrough[kColourBytes] = {};
    const unsigned char* grey = WorkRow(row);
    unsigned char* to = CompositeRow(row);
    const std::size_t first = SourcePixel(row) * kColourBytes;
    for (std::size_t i = 0; i < static_cast<std::size_t>(workRoi_.Width()); ++i, ++grey) {
        const unsigned char* const colour = info_.paletteImage == nullptr
                                                ? kSeeThrough
                                                : info_.paletteImage + first + i * kColourBytes;
        const bool showsGrey = (colour[0] | colour[1] | colour[2]) == 0;
        for (int channel = kColourBytes - 1; channel >= 0; --channel) {
            *to++ = showsGrey ? *grey : colour[channel];
        }
    }
}

/// The overlay has the working image's size and row order.
void RenderRun::ApplyOverlay(int row) {
    if (info_.overlayImage == nullptr) return;
    const auto step = std::ptrdiff_t{info_.imageWidth} * workPixelSize_;
    const auto column = std::ptrdiff_t{workRoi_.left} * workPixelSize_;
    const auto operation = workPixelSize_ == kColourBytes ? ippiOr_8u_C3IR : ippiOr_8u_C1IR;
    operation(info_.overlayImage + row * step + column, step, WorkRow(row), step,
              {workRoi_.Width(), 1});
}

}  // namespace quorvex
