#include "c/calls.h"
#include "c/sample_layout.h"

namespace quorvex::c {
namespace {

static_assert(QUORVEX_QUALITY_NONE == static_cast<int>(FrameQuality::kNone) &&
              QUORVEX_QUALITY_WHOLE == static_cast<int>(FrameQuality::kWhole) &&
              QUORVEX_QUALITY_GUESSED == static_cast<int>(FrameQuality::kGuessed) &&
              QUORVEX_QUALITY_PARTIAL == static_cast<int>(FrameQuality::kPartial));
static_assert(QUORVEX_SAMPLES_INTEGER == static_cast<int>(SampleType::kInteger) &&
              QUORVEX_SAMPLES_FLOAT32 == static_cast<int>(SampleType::kFloat32) &&
              QUORVEX_SAMPLES_FLOAT64 == static_cast<int>(SampleType::kFloat64));

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;

/// Pixels that have been decoded.
struct Decoded {
    std::unique_ptr<unsigned char[]> data;
    unsigned long size = 0;
};

/// Rows of pixels in a host's memory.
struct Rows {
    unsigned char* first = nullptr;
    std::size_t rowBytes = 0;
    std::size_t count = 0;
    std::size_t stride = 0;
};

/// Nothing where the buffer cannot take them.
std::optional<Rows> RowsIn(const quorvex_buffer& buffer, std::size_t rowBytes, std::size_t count) {
    const std::size_t stride =
        buffer.stride == 0 ? rowBytes : static_cast<std::size_t>(buffer.stride);
    const bool isUsable = buffer.stride >= 0 && stride >= rowBytes && count > 0;
    if (!isUsable || buffer.bytes < rowBytes) return std::nullopt;
    if ((buffer.bytes - rowBytes) / stride < count - 1) return std::nullopt;
    return Rows{static_cast<unsigned char*>(buffer.pixels), rowBytes, count, stride};
}

QUORVEX_MESSAGE Copy(const Decoded& pixels, const Rows& rows) noexcept {
    if (pixels.size < rows.rowBytes * rows.count) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    for (std::size_t row = 0; row < rows.count; ++row)
        std::memcpy(rows.first + row * rows.stride, pixels.data.get() + row * rows.rowBytes,
                    rows.rowBytes);
    return QVM_SUCCESS;
}

std::size_t PixelBytes(const quorvex_facts& facts) noexcept {
    return static_cast<std::size_t>(facts.samples) * static_cast<std::size_t>(facts.sample_bytes);
}

QUORVEX_MESSAGE Decode(CxDcmParser& parser, int frame, Decoded& pixels) {
    unsigned char* data = nullptr;
    const QUORVEX_MESSAGE result = parser.GetAFrameUnpacked(frame, data, pixels.size);
    pixels.data.reset(data);
    return result;
}

QUORVEX_MESSAGE ReadFrame(CxDcmParser& parser, int frame, const quorvex_buffer& buffer) {
    const auto facts = FactsOf(parser);
    if (!facts) return kNoPixels;
    if (frame < 0 || frame >= facts->frames) return QVM_ERROR_INVALID_FRAME_INDEX;
    const auto rows = RowsIn(buffer, PixelBytes(*facts) * static_cast<std::size_t>(facts->columns),
                             static_cast<std::size_t>(facts->rows));
    if (!rows) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    Decoded pixels;
    const QUORVEX_MESSAGE result = Decode(parser, frame, pixels);
    return result == QVM_SUCCESS ? Copy(pixels, *rows) : result;
}

QUORVEX_MESSAGE ReadRegion(CxDcmParser& parser, int frame, const CRect& region, int level,
                           const quorvex_buffer& buffer) {
    const auto facts = FactsOf(parser);
    if (!facts) return kNoPixels;
    const bool isEmpty = region.left < 0 || region.top < 0 || region.right <= region.left ||
                         region.bottom <= region.top;
    if (isEmpty) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const auto rows = RowsIn(buffer, PixelBytes(*facts) * static_cast<std::size_t>(region.Width()),
                             static_cast<std::size_t>(region.Height()));
    if (!rows) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    Decoded pixels;
    unsigned char* data = nullptr;
    const QUORVEX_MESSAGE result = parser.GetAFrameRegion(frame, region, level, data, pixels.size);
    pixels.data.reset(data);
    return result == QVM_SUCCESS ? Copy(pixels, *rows) : result;
}

QUORVEX_MESSAGE ReadValues(CxDcmParser& parser, int frame, std::span<float> values) {
    const auto facts = FactsOf(parser);
    if (!facts) return kNoPixels;
    if (facts->samples != 1) return QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    const std::size_t count = facts->frame_bytes / static_cast<std::size_t>(facts->sample_bytes);
    if (values.size() < count) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    Decoded pixels;
    const QUORVEX_MESSAGE result = Decode(parser, frame, pixels);
    if (result != QVM_SUCCESS) return result;
    if (pixels.size < facts->frame_bytes) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    ToValues(*facts, ModalityOf(parser, frame), {pixels.data.get(), pixels.size},
             values.first(count));
    return QVM_SUCCESS;
}

}  // namespace
}  // namespace quorvex::c

using namespace quorvex;
using namespace quorvex::c;

quorvex_result quorvex_read_frame(quorvex_image* image, int32_t frame, const quorvex_buffer* buffer,
                                  int32_t* quality) {
    const auto taken = Taken(buffer);
    if (!AreThere(image) || !taken || taken->pixels == nullptr) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, kNoPixels, [&] {
        const QUORVEX_MESSAGE result = ReadFrame(image->parser, frame, *taken);
        if (result == QVM_SUCCESS && quality != nullptr)
            *quality = static_cast<int32_t>(image->parser.GetFrameQuality());
        return result;
    });
}

quorvex_result quorvex_read_region(quorvex_image* image, int32_t frame, int32_t left, int32_t top,
                                   int32_t right, int32_t bottom, int32_t level,
                                   const quorvex_buffer* buffer) {
    const auto taken = Taken(buffer);
    if (!AreThere(image) || !taken || taken->pixels == nullptr) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, kNoPixels, [&] {
        return ReadRegion(image->parser, frame, {left, top, right, bottom}, level, *taken);
    });
}

quorvex_result quorvex_frame_levels(quorvex_image* image, int32_t frame, int32_t* levels) {
    if (!AreThere(image, levels)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, kNoPixels,
                [&] { return image->parser.GetFrameLevelCount(frame, *levels); });
}

quorvex_result quorvex_frame_modality(quorvex_image* image, int32_t frame,
                                      quorvex_modality* modality) {
    if (!AreThere(image, modality)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, kNoPixels, [&] {
        if (frame < 0 || frame >= image->parser.GetFrameCount())
            return QVM_ERROR_INVALID_FRAME_INDEX;
        const ModalityOf found(image->parser, frame);
        quorvex_modality result{};
        result.slope = found.Slope();
        result.intercept = found.Intercept();
        result.has_table = found.HasTable() ? 1 : 0;
        return Give(result, modality);
    });
}

quorvex_result quorvex_read_values(quorvex_image* image, int32_t frame, float* values,
                                   size_t count) {
    if (!AreThere(image, values)) return QVM_ERROR_NULL_SOURCE;
    return Call(*image->settings, kNoPixels, [&] {
        return ReadValues(image->parser, frame, {values, count});
    });
}
