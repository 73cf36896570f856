#include "foundation/engines/jpeg/jpeg_header.h"
#include "foundation/engines/jpegxl/jpegxl_boxes.h"
#include "foundation/engines/jpegxl/jpegxl_engine.h"
#include "foundation/engines/jpegxl/jpegxl_memory.h"
#include "foundation/engines/jpegxl/jpegxl_samples.h"
#include "foundation/types/cancellation.h"

#include <algorithm>
#include <jxl/encode.h>
#include <memory>
#include <new>
#include <utility>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

// Measured on radiographs, angiograms and ultrasound of 8 to 12 bits. Grey: 3 gives up to a fifth
// less than 2 at half its speed. Colour: 2 gives less than 3 at twice its speed. 4 has a third of
// the speed of 3, and 5 and above an eighth.
constexpr int kGreyEffort = 3;
constexpr int kColourEffort = 2;
constexpr int kLossyEffort = 7;

struct Destroy {
    void operator()(JxlEncoder* encoder) const noexcept { JxlEncoderDestroy(encoder); }
};
using Encoder = std::unique_ptr<JxlEncoder, Destroy>;

Encoder Start(std::uint64_t pixels) {
    RequireMemory(kEncodingNeed, pixels);
    Encoder encoder(JxlEncoderCreate(nullptr));
    if (!encoder) throw std::bad_alloc();
    return encoder;
}

bool DescribePicture(JxlEncoder* encoder, const JpegXlSource& source) {
    const bool isGrey = source.components == 1;
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = source.columns;
    info.ysize = source.rows;
    info.bits_per_sample = source.precision;
    info.num_color_channels = source.components;
    info.uses_original_profile = source.distance == 0 ? JXL_TRUE : JXL_FALSE;
    JxlColorEncoding colours;
    JxlColorEncodingSetToSRGB(&colours, isGrey ? JXL_TRUE : JXL_FALSE);
    return JxlEncoderSetBasicInfo(encoder, &info) == JXL_ENC_SUCCESS &&
           JxlEncoderSetColorEncoding(encoder, &colours) == JXL_ENC_SUCCESS;
}

/// Null where the library refuses.
JxlEncoderFrameSettings* Settings(JxlEncoder* encoder, const JpegXlSource& source) {
    auto* const settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    if (settings == nullptr) return nullptr;
    const bool isLossless = source.distance == 0;
    const int losslessEffort = source.components == 1 ? kGreyEffort : kColourEffort;
    const int effort = isLossless ? losslessEffort : kLossyEffort;
    const auto told = isLossless ? JxlEncoderSetFrameLossless(settings, JXL_TRUE)
                                 : JxlEncoderSetFrameDistance(settings, source.distance);
    const bool isTaken = told == JXL_ENC_SUCCESS &&
                         JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT,
                                                          effort) == JXL_ENC_SUCCESS;
    return isTaken ? settings : nullptr;
}

constexpr JxlParallelRetCode kRan = 0;

/// The library's tasks one after the other, and none any more once the host has called off.
JxlParallelRetCode RunInTurn(void* host, void* library, JxlParallelRunInit begin,
                             JxlParallelRunFunction run, std::uint32_t first, std::uint32_t end) {
    const auto& cancellation = *static_cast<const Cancellation*>(host);
    if (cancellation.IsAsked()) return JXL_PARALLEL_RET_RUNNER_ERROR;
    const JxlParallelRetCode code = begin(library, 1);
    if (code != kRan) return code;
    for (std::uint32_t task = first; task < end; ++task) {
        if (cancellation.IsAsked()) return JXL_PARALLEL_RET_RUNNER_ERROR;
        run(library, task, 0);
    }
    return kRan;
}

/// Lossless coding gives up cleanly where a task is refused; lossy coding ends the process.
bool MayBeCalledOff(const JpegXlSource& source, const Cancellation& cancellation) noexcept {
    return source.distance == 0 && cancellation.IsPossible();
}

std::optional<Bytes> Finish(JxlEncoder* encoder, std::size_t likelySize) {
    constexpr std::size_t kLeastSize = 1024;
    JxlEncoderCloseInput(encoder);
    Bytes coded(std::max(likelySize, kLeastSize));
    std::size_t done = 0;
    for (;;) {
        std::uint8_t* next = coded.data() + done;
        std::size_t left = coded.size() - done;
        const auto status = JxlEncoderProcessOutput(encoder, &next, &left);
        done = coded.size() - left;
        if (status == JXL_ENC_SUCCESS) break;
        if (status != JXL_ENC_NEED_MORE_OUTPUT) return std::nullopt;
        coded.resize(2 * coded.size());
    }
    coded.resize(done);
    return coded;
}

/// The library puts deep pictures into boxes, of which a frame has no need.
std::optional<Bytes> Bare(std::optional<Bytes> coded) {
    if (!coded) return coded;
    const auto parts = TakeApart(*coded);
    if (!parts) return std::nullopt;
    if (parts->codestream.data() == coded->data()) return coded;
    return Bytes(parts->codestream.begin(), parts->codestream.end());
}

}  // namespace

std::optional<Bytes> CodeJpegXl(const JpegXlSource& source) {
    Bytes spread;
    std::span<const unsigned char> samples = source.samples;
    if (source.precision != 8 * source.sampleBytes) {
        if (!SpreadSamples(samples, source.sampleBytes, source.precision, spread))
            return std::nullopt;
        samples = spread;
    }
    const Encoder encoder = Start(std::uint64_t{source.columns} * source.rows);
    if (!DescribePicture(encoder.get(), source)) return std::nullopt;
    auto cancellation = Cancellation::OfThisThread();
    if (MayBeCalledOff(source, cancellation) &&
        JxlEncoderSetParallelRunner(encoder.get(), RunInTurn, &cancellation) != JXL_ENC_SUCCESS) {
        return std::nullopt;
    }
    const auto* const settings = Settings(encoder.get(), source);
    const JxlPixelFormat format{
        .num_channels = source.components,
        .data_type = source.sampleBytes == 1 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16,
        .endianness = JXL_NATIVE_ENDIAN,
        .align = 0};
    if (settings == nullptr || JxlEncoderAddImageFrame(settings, &format, samples.data(),
                                                       samples.size()) != JXL_ENC_SUCCESS) {
        cancellation.ThrowIfAsked();
        return std::nullopt;
    }
    auto coded = Finish(encoder.get(), samples.size() / 2);
    cancellation.ThrowIfAsked();
    return Bare(std::move(coded));
}

std::optional<Bytes> RecompressJpeg(std::span<const unsigned char> jpeg) {
    JpegHeaderScanner scanner;
    if (scanner.Scan(jpeg) != JpegHeaderScanner::State::kDone) return std::nullopt;
    const JpegHeader& header = scanner.Header();
    const Encoder encoder = Start(std::uint64_t{header.width} * header.height);
    auto* const settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    const bool isTaken =
        settings != nullptr && JxlEncoderUseContainer(encoder.get(), JXL_TRUE) == JXL_ENC_SUCCESS &&
        JxlEncoderStoreJPEGMetadata(encoder.get(), JXL_TRUE) == JXL_ENC_SUCCESS &&
        JxlEncoderAddJPEGFrame(settings, jpeg.data(), jpeg.size()) == JXL_ENC_SUCCESS;
    if (!isTaken) return std::nullopt;
    auto coded = Finish(encoder.get(), jpeg.size());
    if (!coded) return std::nullopt;
    Bytes back;
    JpegXlDecoder decoder(*coded);
    const bool isSame =
        decoder.RestoreJpeg(back) == JpegXlResult::kDone && std::ranges::equal(back, jpeg);
    return isSame ? coded : std::nullopt;
}

}  // namespace quorvex
