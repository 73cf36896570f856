#include "codec/frame_decoder.h"
#include "foundation/engines/jpegls/jpegls_engine.h"
#include "foundation/raster/interleave.h"
#include "foundation/types/block.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

bool FitsHeader(const JpegLsHeader& stream, const FrameDescription& frame,
                std::size_t sampleBytes) noexcept {
    return stream.columns == frame.columns && stream.rows == frame.rows &&
           stream.components == frame.samplesPerPixel && stream.SampleBytes() <= sampleBytes;
}

bool IsAligned(const unsigned char* samples, std::size_t sampleBytes) noexcept {
    return reinterpret_cast<std::uintptr_t>(samples) % sampleBytes == 0;
}

/// Samples by pixel and as wide as the stream has them.
void WeavePlanes(const JpegLsHeader& stream, std::span<const unsigned char> planes,
                 std::span<unsigned char> pixels) {
    constexpr std::size_t kMostSamples = 4;
    const std::size_t plane = planes.size() / stream.components;
    std::array<const unsigned char*, kMostSamples> starts{};
    for (std::size_t i = 0; i < stream.components; ++i) starts[i] = planes.data() + i * plane;
    InterleavePlanes(std::span(starts).first(stream.components), plane / stream.SampleBytes(),
                     stream.SampleBytes(), pixels.data());
}

/// Zeros above each sample; `wide` is `factor` times as long.
void Widen(std::span<const unsigned char> narrow, std::size_t sampleBytes, std::size_t factor,
           std::span<unsigned char> wide) noexcept {
    std::ranges::fill(wide, static_cast<unsigned char>(0));
    for (std::size_t at = 0; at < narrow.size(); at += sampleBytes)
        std::memcpy(wide.data() + at * factor, narrow.data() + at, sampleBytes);
}

template <class Sample>
void ExtendSigns(std::span<unsigned char> samples, int bits) noexcept {
    constexpr int kWidth = 8 * static_cast<int>(sizeof(Sample));
    const int shift = kWidth - bits;
    for (std::size_t at = 0; at < samples.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, samples.data() + at, sizeof sample);
        sample = static_cast<Sample>(
            static_cast<Sample>(static_cast<std::make_unsigned_t<Sample>>(sample) << shift) >>
            shift);
        std::memcpy(samples.data() + at, &sample, sizeof sample);
    }
}

void ExtendSigns(std::span<unsigned char> samples, std::size_t sampleBytes, int bits) noexcept {
    if (bits < 1 || bits >= 8 * static_cast<int>(sampleBytes)) return;
    if (sampleBytes == 1) return ExtendSigns<std::int8_t>(samples, bits);
    if (sampleBytes == 2) return ExtendSigns<std::int16_t>(samples, bits);
    ExtendSigns<std::int32_t>(samples, bits);
}

/// Decodes to samples by pixel, as wide as the frame has them.
JpegLsResult DecodePixels(JpegLsDecoder& stream, std::size_t sampleBytes,
                          std::span<unsigned char> pixels) {
    const JpegLsHeader& header = stream.Header();
    const bool isDirect = !header.isByPlanes && header.SampleBytes() == sampleBytes &&
                          IsAligned(pixels.data(), sampleBytes);
    if (isDirect) return stream.Decode(pixels);
    const std::size_t factor = sampleBytes / header.SampleBytes();
    const HeapBlock decoded(pixels.size() / factor);
    const auto result = stream.Decode(decoded.Bytes());
    if (result != JpegLsResult::kDone) return result;
    if (!header.isByPlanes) {
        Widen(decoded.Bytes(), header.SampleBytes(), factor, pixels);
    } else if (factor == 1) {
        WeavePlanes(header, decoded.Bytes(), pixels);
    } else {
        const HeapBlock woven(decoded.Size());
        WeavePlanes(header, decoded.Bytes(), woven.Bytes());
        Widen(woven.Bytes(), header.SampleBytes(), factor, pixels);
    }
    return result;
}

}  // namespace

int FrameDecoder::DecompressJpegLsData() {
    JpegLsDecoder stream(source_);
    isSupported_ = stream.State() != JpegLsResult::kUnsupported;
    const std::size_t sampleBytes = target_.size() / (frame_.Pixels() * frame_.samplesPerPixel);
    if (stream.State() != JpegLsResult::kDone ||
        !FitsHeader(stream.Header(), frame_, sampleBytes)) {
        return 0;
    }
    const auto result = DecodePixels(stream, sampleBytes, target_);
    isSupported_ = result != JpegLsResult::kUnsupported;
    if (result != JpegLsResult::kDone) return 0;
    const int precision = static_cast<int>(stream.Header().precision);
    const bool isCut = precision < 8 * static_cast<int>(sampleBytes);
    if (frame_.pixelRepresentation == 1 && isCut)
        ExtendSigns(target_, sampleBytes, signBits_ != 0 ? signBits_ : precision);
    if (frame_.IsColour() && frame_.IsFullRangeYbr()) ConvertStoredYbr(sampleBytes);
    written_ = target_.size();
    return 1;
}

/// Y, Cb and Cr of every pixel, whatever the header says about shared ones.
void FrameDecoder::ConvertStoredYbr(std::size_t sampleBytes) {
    if (sampleBytes == 1) return ConvertYbrInPlace(target_, frame_.CodedArithmetic());
    frame_.photometric = u"YBR_FULL";
    frame_.planarConfiguration = 0;
    const HeapBlock stored(target_.size());
    std::ranges::copy(target_, stored.Data());
    ConvertToRgb(DescribeColour(target_.size()), stored.Bytes(), target_);
}

}  // namespace quorvex
