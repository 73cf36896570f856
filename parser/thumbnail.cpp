#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/saturate.h"
#include "parser/frame_shape.h"
#include "parser/palette_image.h"
#include "parser/thumbnail_window.h"
#include "quorvex/CxDcmParser.h"

namespace quorvex {
namespace {

constexpr std::uint32_t kBitsStored = 0x00280101;
constexpr std::uint32_t kHighBit = 0x00280102;
constexpr std::uint32_t kPaddingValue = 0x00280120;
constexpr std::uint32_t kRescaleIntercept = 0x00281052;
constexpr std::uint32_t kRescaleSlope = 0x00281053;
constexpr std::size_t kGreyEntries = 256;

using Bytes = std::vector<unsigned char>;

int ReadInt(const CDcmObject& header, std::uint32_t tag) {
    int value = 0;
    return header.GetValue(tag, value) == kDcmSuccess ? value : 0;
}

double ReadNumber(const CDcmObject& header, std::uint32_t tag, double absent) {
    double value = absent;
    const bool isRead = header.GetValue(tag, value) == kDcmSuccess;
    return isRead && std::isfinite(value) ? value : absent;
}

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
                   .slope = ReadNumber(header, kRescaleSlope, 1.0),
                   .intercept = ReadNumber(header, kRescaleIntercept, 0.0)};
    const int highBit = std::clamp(ReadInt(header, kHighBit), 0, 15);
    rule.mask = (2U << static_cast<unsigned>(highBit)) - 1;
    rule.full = 1 << std::clamp(ReadInt(header, kBitsStored), 0, 16);
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

/// A frame of more pixels than a word has values asks for each value once.
template <class Place>
Bytes Windowed(Words pixels, const ThumbnailWindow& window, Place place) {
    constexpr std::size_t kValues = 65536;
    const auto byteOf = [&](std::uint16_t pixel) { return window.At(place(pixel)); };
    Bytes bytes(pixels.size());
    if (pixels.size() <= kValues) {
        std::ranges::transform(pixels, bytes.begin(), byteOf);
        return bytes;
    }
    Bytes ofValue(kValues);
    for (std::size_t value = 0; value < kValues; ++value) {
        ofValue[value] = byteOf(static_cast<std::uint16_t>(value));
    }
    std::ranges::transform(pixels, bytes.begin(),
                           [&](std::uint16_t pixel) { return ofValue[pixel]; });
    return bytes;
}

Bytes WindowGrey(const CDcmObject& header, Words pixels, bool isSigned, bool useDataRange) {
    const ValueRule rule = ReadRule(header, isSigned);
    if (!useDataRange) {
        return Windowed(pixels, WindowOfHeader(header),
                        [&](std::uint16_t pixel) { return PlaceInHeaderWindow(rule, pixel); });
    }
    const int padding = Low16(ReadInt(header, kPaddingValue), isSigned);
    return Windowed(pixels, WindowOfData(pixels, isSigned, padding),
                    [&](std::uint16_t pixel) { return PlaceInDataWindow(rule, pixel); });
}

/// A frame as 8-bit pixels of one or three samples.
struct SmallPixels {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    Bytes bytes;
    std::uint16_t samples = 1;
};

SmallPixels ColourPalette(CDcmObject& header, std::span<const unsigned char> frame,
                          std::size_t pixels, unsigned bits) {
    const auto palette = LoadPalette(header);
    if (!palette) return {.result = QVM_ERROR_INVALID_PHOTOMETRIC, .bytes = {}};
    SmallPixels small{.bytes = Bytes(3 * pixels), .samples = 3};
    ColourByPalette(*palette, frame, PaletteIndexBytes(bits), small.bytes);
    return small;
}

/// A frame may hold fewer bytes than its header says; they count as 0.
SmallPixels Reduce(CDcmObject& header, const FrameShape& shape,
                   std::span<const unsigned char> frame, bool useDataRange) {
    const std::size_t pixels = std::size_t{shape.rows} * shape.columns;
    const unsigned bits = unsigned{shape.bitsAllocated} * shape.samplesPerPixel;
    if (shape.photometric.Find("PALETTE") >= 0) return ColourPalette(header, frame, pixels, bits);
    if (bits == 16) {
        // A frame comes as a block of its own, which is aligned for words.
        const void* const begin = frame.data();
        const Words words(static_cast<const std::uint16_t*>(begin), frame.size() / 2);
        const bool isSigned = shape.pixelRepresentation != 0;
        SmallPixels small{.bytes = WindowGrey(header, words.first(std::min(words.size(), pixels)),
                                              isSigned, useDataRange)};
        small.bytes.resize(pixels);
        return small;
    }
    if (bits != 8 && bits != 24) return {.result = QVM_ERROR_INVALID_BITS_ALLOCATED, .bytes = {}};
    SmallPixels small{.bytes = Bytes(frame.begin(), frame.end()),
                      .samples = static_cast<std::uint16_t>(bits / 8)};
    small.bytes.resize(pixels * small.samples);
    return small;
}

/// A bitmap header, with the colour entries of a grey image behind it.
HeapBlock MakeBitmapHeader(CSize size, unsigned samples) {
    const std::size_t entryBytes = samples == 1 ? 4 * kGreyEntries : 0;
    HeapBlock block(sizeof(tagBITMAPINFOHEADER) + entryBytes);
    const tagBITMAPINFOHEADER header{.biWidth = (size.cx + 3) / 4 * 4,
                                     .biHeight = size.cy,
                                     .biBitCount = static_cast<std::uint16_t>(8 * samples)};
    std::memcpy(block.Data(), &header, sizeof header);
    const auto entries = block.Bytes().subspan(sizeof header);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i] = static_cast<unsigned char>(i % 4 == 3 ? 0 : i / 4);
    }
    return block;
}

bool IsThumbnailFormat(QUORVEX_XFERSYNTAX format) {
    return format == kXferUncompressed || format == kXferJpegBaseline ||
           format == kXferJpegLossless;
}

/// An image on its way to the caller.
struct ThumbnailImage {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::unique_ptr<unsigned char[]> block;
    unsigned long size = 0;
};

ThumbnailImage Scale(SmallPixels& small, const FrameShape& shape, CSize size) {
    _IMAGE_PROCESS_PARAM param;
    param.samplesPerPixel = small.samples;
    param.rows = shape.rows;
    param.columns = shape.columns;
    param.bitsAllocated = 8;
    ThumbnailImage scaled;
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    scaled.result = processor.ResizeImage(&param, small.bytes.data(), block, scaled.size, size);
    scaled.block.reset(block);
    return scaled;
}

/// A frame that was not grey has become R, G, B by now.
CString PhotometricOf(const SmallPixels& small, const FrameShape& shape) {
    const bool isColour = small.samples == 3 || shape.photometric.Find("YBR") >= 0;
    return isColour ? CString("RGB") : shape.photometric;
}

ThumbnailImage Compress(const ThumbnailImage& scaled, const SmallPixels& small,
                        const FrameShape& shape, CSize size, QUORVEX_XFERSYNTAX format,
                        unsigned short quality) {
    constexpr std::int32_t kLargest = 65535;
    ThumbnailImage coded;
    coded.result = QVM_ERROR_FAILED_TO_COMPRESS;
    if (size.cx > kLargest || size.cy > kLargest) return coded;
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = small.samples;
    param.photometric = PhotometricOf(small, shape);
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(size.cy);
    param.columns = static_cast<std::uint16_t>(size.cx);
    param.bitsAllocated = 8;
    param.quality = quality;
    param.pixelRepresentation = 0;  // whatever the frame's values were, these bytes are grey levels
    param.targetSyntax = format;
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    coded.result =
        processor.CompressFrameData(&param, scaled.block.get(), scaled.size, block, coded.size);
    coded.block.reset(block);
    return coded;
}

}  // namespace

QUORVEX_MESSAGE CxDcmParser::MakeThumbNail(int frame, CSize size, QUORVEX_XFERSYNTAX format,
                                           int useDataRange, unsigned char*& image,
                                           unsigned long& imageSize,
                                           tagBITMAPINFOHEADER*& bitmapHeader,
                                           unsigned long& bitmapHeaderSize,
                                           unsigned short quality) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        if (size.cx < 1 || size.cy < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        if (!IsThumbnailFormat(format)) return QVM_ERROR_INVALID_TARGET_SYNTAX;
        unsigned char* pixels = nullptr;
        unsigned long length = 0;
        const QUORVEX_MESSAGE fetched = GetAFrame(frame, pixels, length, 0);
        const std::unique_ptr<unsigned char[]> owner(pixels);
        if (fetched != QVM_SUCCESS) return fetched;
        const auto shape = ReadFrameShape(*header, kSyntaxNone);
        if (!shape) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        SmallPixels small = Reduce(*header, *shape, {pixels, length}, useDataRange != 0);
        if (small.result != QVM_SUCCESS) return small.result;
        ThumbnailImage made = Scale(small, *shape, size);
        if (made.result != QVM_SUCCESS) return made.result;
        if (format != kXferUncompressed) {
            made = Compress(made, small, *shape, size, format, quality);
            if (made.result != QVM_SUCCESS) return made.result;
            bitmapHeader = nullptr;
            bitmapHeaderSize = 0;
            imageSize = made.size;
            image = made.block.release();
            return QVM_SUCCESS;
        }
        HeapBlock headerBlock = MakeBitmapHeader(size, small.samples);
        bitmapHeaderSize = headerBlock.Size();
        bitmapHeader = static_cast<tagBITMAPINFOHEADER*>(static_cast<void*>(headerBlock.Release()));
        imageSize = made.size;
        image = made.block.release();
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
