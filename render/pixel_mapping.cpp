#include "foundation/raster/byte_table.h"
#include "foundation/raster/word_ramp.h"
#include "render/job_rules.h"

#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

// How the stored value of pixel i of a row is read.
struct Byte {
    static constexpr std::size_t kBytes = 1;
    static int At(const unsigned char* row, std::size_t i) { return row[i]; }
};
template <class Word>
struct WordOf {
    static constexpr std::size_t kBytes = 2;
    static int At(const unsigned char* row, std::size_t i) {
        Word word;
        std::memcpy(&word, row + 2 * i, sizeof(word));
        return word;
    }
};
template <class Half>
struct LowByteOf {
    static constexpr std::size_t kBytes = 2;
    static int At(const unsigned char* row, std::size_t i) {
        return static_cast<Half>(WordOf<std::uint16_t>::At(row, i) & 0xFF);
    }
};

/// Rows run from the bottom here, and from the top in the source, the mask and the palette.
std::size_t SourcePixel(const _IMAGE_INFO& info, int row, int column) {
    return static_cast<std::size_t>(info.imageHeight - 1 - row) *
               static_cast<std::size_t>(info.imageWidth) +
           static_cast<std::size_t>(column);
}

struct ByteTable {
    const unsigned char* entries;
    std::ptrdiff_t first;
    [[nodiscard]] unsigned char Of(int value) const { return entries[value - first]; }
};

// Most of a job's time is spent here. The memory would keep it waiting for every row if that were
// not asked for ahead of its time.
template <class Reader>
void MapPlain(const unsigned char* source, const unsigned char* soon, ByteTable table,
              unsigned char* to, std::size_t count) {
    constexpr std::size_t kLine = 64 / Reader::kBytes;
    for (std::size_t i = 0; i < count;) {
        const std::size_t end = std::min(i + kLine, count);
        __builtin_prefetch(soon + i * Reader::kBytes);
#pragma GCC unroll 8
        for (; i < end; ++i) to[i] = table.Of(Reader::At(source, i));
    }
}

template <class Reader>
void MapMasked(const unsigned char* source, ByteTable table, unsigned char* to, std::size_t count,
               const unsigned char* mask, unsigned char hidden) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = mask[i] != 0 ? hidden : table.Of(Reader::At(source, i));
    }
}

void Hide(const unsigned char* mask, unsigned char hidden, unsigned char* to, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) to[i] = mask[i] != 0 ? hidden : to[i];
}

}  // namespace

template <class Reader>
void CXImageCreator::MapRow(const _IMAGE_INFO& info, int row, int soon) {
    const std::size_t pixel = SourcePixel(info, row, workRoi.left);
    const unsigned char* const source = info.pixels + pixel * Reader::kBytes;
    const auto count = static_cast<std::size_t>(workRoi.Width());
    const ByteTable table{valueTable, valueTableStart};
    unsigned char* const to = WorkRow(info, row) + workRoi.left;
    if (info.shutterMask == nullptr) {
        const std::size_t next = SourcePixel(info, soon, workRoi.left);
        MapPlain<Reader>(source, info.pixels + next * Reader::kBytes, table, to, count);
    } else {
        MapMasked<Reader>(source, table, to, count, info.shutterMask + pixel,
                          static_cast<unsigned char>(info.shutterValue));
    }
}

void CXImageCreator::MapRowByRamp(const _IMAGE_INFO& info, int row, int soon) {
    const std::size_t pixel = SourcePixel(info, row, workRoi.left);
    const std::size_t next = SourcePixel(info, soon, workRoi.left);
    const auto count = static_cast<std::size_t>(workRoi.Width());
    unsigned char* const to = WorkRow(info, row) + workRoi.left;
    MapByRamp(*ramp, info.pixels + 2 * pixel, info.pixels + 2 * next, to, count);
    if (info.shutterMask == nullptr) return;
    Hide(info.shutterMask + pixel, static_cast<unsigned char>(info.shutterValue), to, count);
}

void CXImageCreator::RawImg2PValue(const _IMAGE_INFO& info, int row, int soon) {
    MapRow<Byte>(info, row, soon);
}

void CXImageCreator::RawImg2PValue16(const _IMAGE_INFO& info, int row, int soon) {
    if (ramp) return MapRowByRamp(info, row, soon);
    info.lutOffset < 0 ? MapRow<WordOf<std::int16_t>>(info, row, soon)
                       : MapRow<WordOf<std::uint16_t>>(info, row, soon);
}

void CXImageCreator::RawImg2PValue16Half(const _IMAGE_INFO& info, int row, int soon) {
    info.lutOffset < 0 ? MapRow<LowByteOf<std::int8_t>>(info, row, soon)
                       : MapRow<LowByteOf<std::uint8_t>>(info, row, soon);
}

/// Red, green, blue become blue, green, red, as bitmaps have them. Without a table all stays black.
void CXImageCreator::RenderColorImage(const _IMAGE_INFO& info, int row, int /*soon*/) {
    if (info.lut == nullptr) return;
    const unsigned char* const from =
        info.pixels + SourcePixel(info, row, workRoi.left) * kColourBytes;
    unsigned char* const to = WorkRow(info, row) + std::ptrdiff_t{workRoi.left} * kColourBytes;
    MapColoursTurned(ByteTable256(info.lut, 256), from, to,
                     static_cast<std::size_t>(workRoi.Width()));
}

void CXImageCreator::RenderSuppPal(const _IMAGE_INFO& info, int row) {
    static constexpr unsigned char kSeeThrough[kColourBytes] = {};
    const unsigned char* grey = WorkRow(info, row) + workRoi.left;
    unsigned char* to = CompositeRow(info, row) + std::ptrdiff_t{workRoi.left} * kColourBytes;
    const std::size_t first = SourcePixel(info, row, workRoi.left) * kColourBytes;
    for (std::size_t i = 0; i < static_cast<std::size_t>(workRoi.Width()); ++i, ++grey) {
        const unsigned char* const colour = info.paletteImage == nullptr
                                                ? kSeeThrough
                                                : info.paletteImage + first + i * kColourBytes;
        const bool showsGrey = (colour[0] | colour[1] | colour[2]) == 0;
        for (int channel = kColourBytes - 1; channel >= 0; --channel) {
            *to++ = showsGrey ? *grey : colour[channel];
        }
    }
}

}  // namespace quorvex
