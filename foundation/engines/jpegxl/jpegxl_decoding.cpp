#include "foundation/engines/jpegxl/jpegxl_boxes.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "foundation/engines/jpegxl/jpegxl_frames.h"
#include "foundation/engines/jpegxl/jpegxl_memory.h"
#include "foundation/engines/jpegxl/jpegxl_samples.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/limits.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <jxl/decode.h>
#include <memory>
#include <new>
#include <utility>

namespace quorvex {
namespace {

struct Destroy {
    void operator()(JxlDecoder* decoder) const noexcept { JxlDecoderDestroy(decoder); }
};
using Decoder = std::unique_ptr<JxlDecoder, Destroy>;

/// A decoder of the whole input that stops at these events. Throws std::bad_alloc.
Decoder Start(std::span<const unsigned char> input, int events) {
    Decoder decoder(JxlDecoderCreate(nullptr));
    if (!decoder || JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
        JxlDecoderSetKeepOrientation(decoder.get(), JXL_TRUE) != JXL_DEC_SUCCESS ||
        JxlDecoderSetInput(decoder.get(), input.data(), input.size()) != JXL_DEC_SUCCESS) {
        RefuseBy(Limit::kMemory);
        throw std::bad_alloc();
    }
    return decoder;
}

/// Gives a decoder its input: all at once or, where the host may call off or wants to be told, in
/// pieces. The library stops nowhere else: it ends the process where a task of its own is refused.
class Feed {
public:
    explicit Feed(std::span<const unsigned char> input) noexcept
        : input_(input), piece_(IsAsked() ? input.size() / kPieces + 1 : input.size()) {}

    [[nodiscard]] Decoder Begin(int events) {
        given_ = std::min(piece_, input_.size());
        return Start(input_.first(given_), events);
    }
    /// Until there is something else than a lack of input.
    [[nodiscard]] JxlDecoderStatus GoOn(JxlDecoder* decoder) {
        for (;;) {
            const auto status = JxlDecoderProcessInput(decoder);
            if (status != JXL_DEC_NEED_MORE_INPUT || given_ == input_.size()) return status;
            TellProgress(given_, input_.size());
            Cancellation::OfThisThread().ThrowIfAsked();
            const std::size_t begin = given_ - JxlDecoderReleaseInput(decoder);
            given_ = std::min(given_ + piece_, input_.size());
            const auto rest = input_.subspan(begin, given_ - begin);
            if (JxlDecoderSetInput(decoder, rest.data(), rest.size()) != JXL_DEC_SUCCESS)
                return JXL_DEC_ERROR;
        }
    }

private:
    static constexpr std::size_t kPieces = 64;
    static bool IsAsked() noexcept {
        return Cancellation::OfThisThread().IsPossible() || IsProgressWanted();
    }

    std::span<const unsigned char> input_;
    std::size_t piece_;
    std::size_t given_ = 0;
};

constexpr unsigned kMostPrecision = 16;

bool IsSupported(const JxlBasicInfo& info) noexcept {
    return info.num_extra_channels == 0 && info.have_animation == JXL_FALSE &&
           info.have_preview == JXL_FALSE && info.exponent_bits_per_sample == 0 &&
           info.bits_per_sample >= 1 && info.bits_per_sample <= kMostPrecision &&
           info.xsize <= kLongestCodedSide && info.ysize <= kLongestCodedSide;
}

JpegXlResult ResultOf(JpegXlFrames frames) noexcept {
    if (frames == JpegXlFrames::kPlain) return JpegXlResult::kDone;
    return frames == JpegXlFrames::kDamaged ? JpegXlResult::kDamaged : JpegXlResult::kUnsupported;
}

}  // namespace

bool HasJpegXl() noexcept {
    return true;
}

JpegXlDecoder::JpegXlDecoder(std::span<const unsigned char> stream) : state_(Open(stream)) {}

JpegXlResult JpegXlDecoder::Open(std::span<const unsigned char> stream) {
    auto parts = TakeApart(stream);
    if (!parts) return JpegXlResult::kDamaged;
    joined_ = std::move(parts->joined);
    codestream_ = parts->codestream;  // a vector that moves keeps its block
    jpegBox_ = parts->jpegBox;
    RequireMemory(kOpeningNeed, 0);
    const Decoder decoder = Start(codestream_, JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING);
    JxlBasicInfo info;
    if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_BASIC_INFO ||
        JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS) {
        return JpegXlResult::kDamaged;
    }
    if (!IsSupported(info)) return JpegXlResult::kUnsupported;
    if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_COLOR_ENCODING)
        return JpegXlResult::kDamaged;
    const std::size_t left = JxlDecoderReleaseInput(decoder.get());
    header_ = {.columns = info.xsize,
               .rows = info.ysize,
               .components = info.num_color_channels,
               .precision = info.bits_per_sample,
               .isXyb = info.uses_original_profile == JXL_FALSE,
               .hasJpeg = !jpegBox_.empty(),
               .isTurned = info.orientation != JXL_ORIENT_IDENTITY};
    return ResultOf(
        MeasureFrames(codestream_.last(std::min(left, codestream_.size())),
                      {.columns = info.xsize, .rows = info.ysize, .isXyb = header_.isXyb}));
}

JpegXlResult JpegXlDecoder::Decode(std::span<unsigned char> samples, std::size_t sampleBytes) {
    if (state_ != JpegXlResult::kDone) return state_;
    if (header_.isTurned) return JpegXlResult::kUnsupported;
    RequireMemory(kDecodingNeed, header_.Pixels());
    Feed feed(codestream_);
    const Decoder decoder = feed.Begin(JXL_DEC_FULL_IMAGE);
    const JxlPixelFormat format{.num_channels = header_.components,
                                .data_type = sampleBytes == 1 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16,
                                .endianness = JXL_NATIVE_ENDIAN,
                                .align = 0};
    std::size_t size = 0;
    if (feed.GoOn(decoder.get()) != JXL_DEC_NEED_IMAGE_OUT_BUFFER ||
        JxlDecoderImageOutBufferSize(decoder.get(), &format, &size) != JXL_DEC_SUCCESS ||
        size != samples.size() ||
        JxlDecoderSetImageOutBuffer(decoder.get(), &format, samples.data(), size) !=
            JXL_DEC_SUCCESS ||
        feed.GoOn(decoder.get()) != JXL_DEC_FULL_IMAGE) {
        return JpegXlResult::kDamaged;
    }
    NarrowSamples(samples, sampleBytes, header_.precision);
    return JpegXlResult::kDone;
}

JpegXlResult JpegXlDecoder::RestoreJpeg(std::vector<unsigned char>& jpeg) {
    constexpr std::size_t kFirstBytes = 4096;
    if (state_ != JpegXlResult::kDone) return state_;
    if (!header_.hasJpeg) return JpegXlResult::kUnsupported;
    const auto boxes = PutIntoBoxes(codestream_, jpegBox_);
    RequireMemory(kDecodingNeed, header_.Pixels());
    const Decoder decoder = Start(boxes, JXL_DEC_JPEG_RECONSTRUCTION | JXL_DEC_FULL_IMAGE);
    if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_JPEG_RECONSTRUCTION)
        return JpegXlResult::kDamaged;
    jpeg.resize(std::max(kFirstBytes, 2 * boxes.size()));
    std::size_t done = 0;
    for (;;) {
        if (JxlDecoderSetJPEGBuffer(decoder.get(), jpeg.data() + done, jpeg.size() - done) !=
            JXL_DEC_SUCCESS) {
            return JpegXlResult::kDamaged;
        }
        const auto status = JxlDecoderProcessInput(decoder.get());
        done = jpeg.size() - JxlDecoderReleaseJPEGBuffer(decoder.get());
        if (status == JXL_DEC_FULL_IMAGE) break;
        if (status != JXL_DEC_JPEG_NEED_MORE_OUTPUT || jpeg.size() > kLargestBlock / 2)
            return JpegXlResult::kDamaged;
        jpeg.resize(2 * jpeg.size());
    }
    jpeg.resize(done);
    return JpegXlResult::kDone;
}

}  // namespace quorvex
