#include "pipeline/thumbnail/thumbnail_pixels.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/raster/scaling/resize_kernels.h"
#include "foundation/raster/scaling/resize_taps.h"
#include "foundation/types/saturate.h"
#include "parser/palette/palette_image.h"
#include "pipeline/thumbnail/thumbnail_window.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

int Low16(std::int64_t value, bool isSigned) {
    const auto word = static_cast<std::uint16_t>(value & 0xFFFF);
    return isSigned ? static_cast<std::int16_t>(word) : word;
}

/// What turns a stored value into a place of the window's table.
struct ValueRule {
    bool isSigned = false;
    double slope = 1.0;
    double intercept = 0.0;
    unsigned mask = 0xFFFF;
    int full = 0;  ///< one above the highest stored value
    int half = 0;
    int offset = 0;  ///< the intercept in stored values
};

ValueRule ReadRule(const CDcmObject& header, bool isSigned) {
    ValueRule rule{.isSigned = isSigned,
                   .slope = ReadFinite(header, tag::kRescaleSlope).value_or(1.0),
                   .intercept = ReadFinite(header, tag::kRescaleIntercept).value_or(0.0)};
    const int highBit = std::clamp(Read<int>(header, tag::kHighBit).value_or(0), 0, 15);
    rule.mask = (2U << static_cast<unsigned>(highBit)) - 1;
    rule.full = 1 << std::clamp(Read<int>(header, tag::kBitsStored).value_or(0), 0, 16);
    rule.half = Low16(rule.full, true) / 2;
    rule.offset = rule.slope == 0.0 ? 0 : TruncateToInt(rule.intercept / rule.slope);
    return rule;
}

/// By the range of the data: the table is over stored values, its index is rescaled.
int PlaceInDataWindow(const ValueRule& rule, std::uint16_t pixel) {
    const unsigned value = pixel & rule.mask;
    return Low16(TruncateToInt((value + rule.intercept) * rule.slope), rule.isSigned);
}

int PlaceInHeaderWindow(const ValueRule& rule, std::uint16_t pixel) {
    if (!rule.isSigned) {
        const auto value = static_cast<int>(pixel & rule.mask);
        return Low16(std::int64_t{value} + rule.offset, value + rule.intercept <= 0.0);
    }
    int value = static_cast<std::int16_t>(pixel);
    if (value >= rule.half) value = Low16(std::int64_t{value} - rule.full, true);
    return Low16(TruncateToInt(value + rule.intercept), true);
}

using Words = std::span<const std::uint16_t>;

/// The rows that CxImageProcessor::ResizeImage, which leaves out the first one, reads to make
/// `height` rows of them.
std::vector<std::size_t> RowsRead(std::size_t rows, int height) {
    const double factor = static_cast<double>(height) / static_cast<double>(rows);
    std::vector<std::size_t> read;
    for (const ResizeTap& tap :
         ResizeTaps(static_cast<int>(rows) - 1, height, factor, kResizeWeightBits)) {
        read.push_back(static_cast<std::size_t>(tap.first) + 1);
        read.push_back(static_cast<std::size_t>(tap.Second()) + 1);
    }
    read.erase(std::unique(read.begin(), read.end()), read.end());
    return read;
}

/// What is mapped, and where to: `bytes` is as long as `words`, and of both only `rows` count.
struct WindowJob {
    Words words;
    std::size_t columns;
    std::vector<std::size_t> rows;
    unsigned char* bytes;

    template <class ByteOf>
    void Run(ByteOf byteOf) const {
        for (const std::size_t row : rows) {
            std::ranges::transform(words.subspan(row * columns, columns), bytes + row * columns,
                                   byteOf);
        }
    }
};

/// Where pixels outnumber the values of a word, each value is mapped once.
template <class Place>
void MapWindow(const WindowJob& job, const ThumbnailWindow& window, Place place) {
    constexpr std::size_t kValues = 65536;
    const auto byteOf = [&](std::uint16_t pixel) { return window.At(place(pixel)); };
    if (job.rows.size() * job.columns <= kValues) return job.Run(byteOf);
    Bytes ofValue(kValues);
    for (std::size_t value = 0; value < kValues; ++value) {
        ofValue[value] = byteOf(static_cast<std::uint16_t>(value));
    }
    job.Run([&](std::uint16_t pixel) { return ofValue[pixel]; });
}

void WindowGrey(const CDcmObject& header, const WindowJob& job, bool isSigned, bool useDataRange) {
    const ValueRule rule = ReadRule(header, isSigned);
    if (!useDataRange) {
        return MapWindow(job, MakeWindowTableFromHeader(header),
                         [&](std::uint16_t pixel) { return PlaceInHeaderWindow(rule, pixel); });
    }
    const int padding = Low16(Read<int>(header, tag::kPixelPaddingValue).value_or(0), isSigned);
    MapWindow(job, MakeWindowTable(job.words, isSigned, padding),
              [&](std::uint16_t pixel) { return PlaceInDataWindow(rule, pixel); });
}

SmallPixels ColourPalette(CDcmObject& header, std::span<const unsigned char> frame,
                          std::size_t pixels, unsigned bits) {
    const auto palette = LoadPalette(header);
    if (!palette) return {.result = QVM_ERROR_INVALID_PHOTOMETRIC, .bytes = {}};
    SmallPixels small{.bytes = Bytes(3 * pixels), .samples = 3};
    ColourByPalette(*palette, frame, PaletteIndexBytes(bits), small.bytes);
    return small;
}

/// One bit a pixel, the first in the lowest bit, to black and white.
Bytes SpreadBits(std::span<const unsigned char> frame, std::size_t pixels) {
    Bytes bytes(pixels);
    for (std::size_t i = 0; i < std::min(pixels, 8 * frame.size()); ++i) {
        bytes[i] = ((frame[i / 8] >> (i % 8)) & 1U) != 0 ? 255 : 0;
    }
    return bytes;
}

/// The high byte of every sample of `sampleBytes`, least significant byte first.
Bytes HighBytes(std::span<const unsigned char> frame, std::size_t samples,
                std::size_t sampleBytes) {
    Bytes bytes(samples);
    for (std::size_t i = 0; i < std::min(samples, frame.size() / sampleBytes); ++i) {
        bytes[i] = frame[sampleBytes * (i + 1) - 1];
    }
    return bytes;
}

/// Values of 32 bits by the range that they span.
template <class Value>
Bytes SpreadRange(std::span<const unsigned char> frame, std::size_t pixels) {
    std::vector<Value> values(pixels);
    std::memcpy(values.data(), frame.data(), std::min(frame.size(), pixels * sizeof(Value)));
    Bytes bytes(pixels);
    if (pixels == 0) return bytes;
    const auto [low, high] = std::ranges::minmax(values);
    const double scale = high > low ? 255.0 / (static_cast<double>(high) - low) : 0.0;
    std::ranges::transform(values, bytes.begin(), [&, low = low](Value value) {
        return static_cast<unsigned char>((static_cast<double>(value) - low) * scale);
    });
    return bytes;
}

/// A frame that lacks pixels is mapped as one row of those that it has.
void WindowWords(const CDcmObject& header, const FrameShape& shape,
                 std::span<const unsigned char> frame, bool useDataRange, int height,
                 SmallPixels& small) {
    const std::size_t pixels = std::size_t{shape.rows} * shape.columns;
    // A frame lies where words may lie.
    const void* const begin = frame.data();
    const Words words(static_cast<const std::uint16_t*>(begin), std::min(frame.size() / 2, pixels));
    WindowJob job{words, words.size(), {0}, nullptr};
    if (words.size() == pixels) {
        small.someRows = std::make_unique_for_overwrite<unsigned char[]>(pixels);
        job = {words, shape.columns, RowsRead(shape.rows, height), small.someRows.get()};
    } else {
        small.bytes.resize(pixels);
        job.bytes = small.bytes.data();
    }
    WindowGrey(header, job, shape.pixelRepresentation != 0, useDataRange);
}

}  // namespace

SmallPixels ReduceToBytes(CDcmObject& header, const FrameShape& shape,
                          std::span<const unsigned char> frame, bool useDataRange, int height) {
    const std::size_t pixels = std::size_t{shape.rows} * shape.columns;
    const unsigned bits = unsigned{shape.bitsAllocated} * shape.samplesPerPixel;
    if (shape.photometric.Find("PALETTE") >= 0) return ColourPalette(header, frame, pixels, bits);
    SmallPixels small{.bytes = {}, .samples = shape.samplesPerPixel};
    const std::size_t samples = pixels * small.samples;
    if (bits == 1) {
        small.bytes = SpreadBits(frame, pixels);
    } else if (bits == 16 && small.samples == 1) {
        WindowWords(header, shape, frame, useDataRange, height, small);
    } else if (bits == 32 && small.samples == 1) {
        small.bytes = shape.pixelRepresentation != 0 ? SpreadRange<std::int32_t>(frame, pixels)
                                                     : SpreadRange<std::uint32_t>(frame, pixels);
    } else if (shape.bitsAllocated % 8 == 0 && shape.bitsAllocated != 0) {
        small.bytes = HighBytes(frame, samples, shape.bitsAllocated / 8U);
    } else {
        small.result = QVM_ERROR_INVALID_BITS_ALLOCATED;
    }
    return small;
}

}  // namespace quorvex
