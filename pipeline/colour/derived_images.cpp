#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "parser/palette/palette_image.h"
#include "pipeline/colour/supplemental_palette.h"
#include "pipeline/displayed_image.h"
#include "quorvex/CXDIPP.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace quorvex {

namespace {

constexpr std::size_t kChannels = 3;
constexpr std::size_t kMostColumns = std::numeric_limits<unsigned short>::max();
constexpr double kByByteEntries = 255.0 / 256.0;
constexpr double kByWordEntries = 255.0 / 65536.0;

std::size_t IndexBytesOf(const CDcmObject& object) {
    const unsigned bitsAllocated = Read<unsigned short>(object, tag::kBitsAllocated).value_or(0);
    const unsigned samples = Read<unsigned short>(object, tag::kSamplesPerPixel).value_or(0);
    return PaletteIndexBytes(bitsAllocated * samples);
}

struct FrameSize {
    unsigned short columns = 0;
    unsigned short rows = 0;
    [[nodiscard]] std::size_t PixelCount() const noexcept { return std::size_t{columns} * rows; }
};

FrameSize SizeOf(const CDcmObject& object) {
    return {Read<unsigned short>(object, tag::kColumns).value_or(0),
            Read<unsigned short>(object, tag::kRows).value_or(0)};
}

HeapBlock ClearedPixels(std::size_t pixelCount) {
    HeapBlock block(pixelCount * kChannels);
    std::memset(block.Data(), 0, block.Size());
    return block;
}

/// What the supplemental forms have in common.
QUORVEX_MESSAGE ColourSupplemental(CDcmObject* object, const unsigned char* pixels, FrameSize size,
                                   const SupplementalRules& wordRules,
                                   const SupplementalRules& byteRules, unsigned char*& rgb,
                                   unsigned long& length) {
    const auto palette = LoadPalette(*object);
    if (!palette) return QVM_ERROR_NO_IMAGE;
    const std::size_t indexBytes = IndexBytesOf(*object);
    HeapBlock colours = ClearedPixels(size.PixelCount());
    ColourByTable(
        SupplementalColours(*palette, indexBytes, indexBytes == 2 ? wordRules : byteRules),
        {pixels, size.PixelCount() * indexBytes}, indexBytes, colours.Bytes());
    length = size.PixelCount() * kChannels;
    rgb = colours.Release();
    return QVM_SUCCESS;
}

constexpr std::size_t RoundedUpTo4(std::size_t columns) {
    return (columns + 3) / 4 * 4;
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::MakeSPCOverlay(CDcmObject* object, unsigned char* framePixels,
                                       unsigned char*& rgb, unsigned long& length) const {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (object == nullptr || framePixels == nullptr) return QVM_ERROR_NO_IMAGE;
        const SupplementalRules rules{.hasSignedWords = true, .factor = kByByteEntries};
        return ColourSupplemental(object, framePixels, SizeOf(*object), rules, rules, rgb, length);
    });
}

QUORVEX_MESSAGE CXDIPP::MakeSPCOverlayForMPR(CDcmObject* object, unsigned char* slicePixels,
                                             unsigned short width, unsigned short height,
                                             unsigned char*& rgb, unsigned long& length) const {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (object == nullptr || slicePixels == nullptr) return QVM_ERROR_NO_IMAGE;
        return ColourSupplemental(object, slicePixels, {width, height}, {.factor = kByWordEntries},
                                  {.readsStraight = true}, rgb, length);
    });
}

QUORVEX_MESSAGE CXDIPP::MakePaletteColorImage(CDcmObject* object, unsigned char* framePixels,
                                              unsigned char*& rgb, unsigned long& length,
                                              unsigned short& paddedColumns) const {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (object == nullptr || framePixels == nullptr) return QVM_ERROR_NO_IMAGE;
        const FrameSize size = SizeOf(*object);
        const std::size_t indexBytes = IndexBytesOf(*object);
        const std::size_t padded = RoundedUpTo4(size.columns);
        HeapBlock colours = ClearedPixels(padded * size.rows);
        if (!ColourByObject(*object, image_->rules, {framePixels, size.PixelCount() * indexBytes},
                            indexBytes, colours.Bytes())) {
            return QVM_ERROR_NO_IMAGE;
        }
        paddedColumns = static_cast<unsigned short>(std::min(padded, kMostColumns));
        length = size.PixelCount() * kChannels;
        rgb = colours.Release();
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
