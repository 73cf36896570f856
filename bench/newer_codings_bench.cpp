// Frames of JPEG-LS, JPEG XL and deflate through CxImageProcessor, beside CharLS, libjxl and zlib
// called with nothing of ours around them; RLE written beside RLE read.
#include "bench/engine_pictures.h"
#include "codec/stored_coding.h"

#include <charls/charls.h>
#include <cstring>
#include <fstream>
#include <iterator>
#include <jxl/decode.h>
#include <memory>
#include <string>
#include <zlib.h>

namespace quorvex::bench {
namespace {

struct Job {
    const char* name;
    Picture picture;
    std::uint16_t bitsStored;
};

constexpr Job kJobs[] = {
    {"Ct", {.columns = 512, .rows = 512, .precision = 16}, 16},
    {"Plate", {.columns = 2048, .rows = 2048, .precision = 12}, 12},
    {"Colour", {.columns = 1024, .rows = 768, .samples = 3}, 8},
};

/// The pixels of the CT sample, which lie at the end of its file; made ones for the others.
Bytes PixelsOf(const Job& job) {
    if (std::string_view(job.name) != "Ct") return Pixels(job.picture);
    std::ifstream file(QUORVEX_SOURCE_DIR "/samples/ct.dcm", std::ios::binary);
    const Bytes whole{std::istreambuf_iterator<char>(file), {}};
    return {whole.end() - static_cast<std::ptrdiff_t>(job.picture.Bytes()), whole.end()};
}

Bytes Code(const Job& job, QUORVEX_XFERSYNTAX form, Bytes& pixels) {
    Bytes coded;
    const auto allocated = static_cast<std::uint16_t>(8 * job.picture.SampleBytes());
    const auto answer =
        CodeStored({.form = form,
                    .rows = static_cast<std::uint16_t>(job.picture.rows),
                    .columns = static_cast<std::uint16_t>(job.picture.columns),
                    .samplesPerPixel = static_cast<std::uint16_t>(job.picture.samples),
                    .bitsAllocated = allocated,
                    .bitsStored = job.bitsStored,
                    .isRgb = job.picture.samples == 3},
                   pixels, coded);
    return answer == QVM_SUCCESS ? coded : Bytes();
}

Bytes Coded(const Job& job, QUORVEX_XFERSYNTAX form) {
    Bytes pixels = PixelsOf(job);
    return Code(job, form, pixels);
}

using Decode = bool (*)(const Bytes& stream, const Picture& picture, unsigned char* frame);

bool DecodeByCharls(const Bytes& stream, const Picture& picture, unsigned char* frame) {
    const std::unique_ptr<charls_jpegls_decoder, void (*)(const charls_jpegls_decoder*)> decoder(
        charls_jpegls_decoder_create(), charls_jpegls_decoder_destroy);
    const auto good = charls::jpegls_errc::success;
    return charls_jpegls_decoder_set_source_buffer(decoder.get(), stream.data(), stream.size()) ==
               good &&
           charls_jpegls_decoder_read_header(decoder.get()) == good &&
           charls_jpegls_decoder_decode_to_buffer(decoder.get(), frame, picture.Bytes(), 0) == good;
}

/// Samples of 9 to 15 bits stay spread over the range of 16.
bool DecodeByJxl(const Bytes& stream, const Picture& picture, unsigned char* frame) {
    const std::unique_ptr<JxlDecoder, void (*)(JxlDecoder*)> decoder(JxlDecoderCreate(nullptr),
                                                                     JxlDecoderDestroy);
    const JxlPixelFormat format{
        .num_channels = static_cast<std::uint32_t>(picture.samples),
        .data_type = picture.SampleBytes() == 1 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16,
        .endianness = JXL_NATIVE_ENDIAN,
        .align = 0};
    JxlDecoderSubscribeEvents(decoder.get(), JXL_DEC_FULL_IMAGE);
    JxlDecoderSetInput(decoder.get(), stream.data(), stream.size());
    return JxlDecoderProcessInput(decoder.get()) == JXL_DEC_NEED_IMAGE_OUT_BUFFER &&
           JxlDecoderSetImageOutBuffer(decoder.get(), &format, frame, picture.Bytes()) ==
               JXL_DEC_SUCCESS &&
           JxlDecoderProcessInput(decoder.get()) == JXL_DEC_FULL_IMAGE;
}

bool InflateByZlib(const Bytes& stream, const Picture& picture, unsigned char* frame) {
    z_stream state{};
    inflateInit2(&state, -15);
    state.next_in = const_cast<unsigned char*>(stream.data());
    state.avail_in = static_cast<uInt>(stream.size());
    state.next_out = frame;
    state.avail_out = static_cast<uInt>(picture.Bytes());
    const int result = inflate(&state, Z_FINISH);
    inflateEnd(&state);
    return result == Z_STREAM_END;
}

void Directly(benchmark::State& state, const Job& job, QUORVEX_XFERSYNTAX form, Decode decode) {
    const Bytes stream = Coded(job, form);
    for (auto _ : state) {
        const auto frame = std::make_unique_for_overwrite<unsigned char[]>(job.picture.Bytes());
        if (!decode(stream, job.picture, frame.get())) state.SkipWithError("not decoded");
        benchmark::DoNotOptimize(frame.get());
    }
    CountBytes(state, job.picture);
}

void Ours(benchmark::State& state, const Job& job, QUORVEX_XFERSYNTAX form, std::uint32_t syntax) {
    Bytes stream = Coded(job, form);
    _IMAGE_PROCESS_PARAM param = Describe(job.picture, syntax);
    for (auto _ : state) {
        unsigned char* result = nullptr;
        unsigned long size = 0;
        const auto answer = CxImageProcessor().DecompressFrameData(&param, stream.data(),
                                                                   stream.size(), result, size, 0);
        if (answer != QVM_SUCCESS && answer != QVM_FRAME_COPIED) state.SkipWithError("not decoded");
        benchmark::DoNotOptimize(result);
        delete[] result;
    }
    CountBytes(state, job.picture);
}

void RleWritten(benchmark::State& state, const Job& job) {
    Bytes pixels = PixelsOf(job);
    for (auto _ : state) {
        const Bytes coded = Code(job, kXferRle, pixels);
        if (coded.empty()) state.SkipWithError("not coded");
        benchmark::DoNotOptimize(coded.data());
    }
    CountBytes(state, job.picture);
}

const int kRegistered = [] {
    struct Row {
        const char* coding;
        QUORVEX_XFERSYNTAX form;
        std::uint32_t syntax;
        const char* peer;
        Decode direct;
    };
    constexpr Row kRows[] = {
        {"JpegLs", kXferJpegLsLossless, kJpegLsLossless, "Charls", DecodeByCharls},
        {"JpegXl", kXferJpegXlLossless, kJpegXlLossless, "Libjxl", DecodeByJxl},
        {"Deflated", kXferDeflatedFrames, kDeflatedImageFrames, "Zlib", InflateByZlib},
    };
    for (const Job& job : kJobs) {
        for (const Row& row : kRows) {
            const std::string name = std::string(row.coding) + job.name + '/';
            benchmark::RegisterBenchmark((name + "Ours").c_str(), Ours, job, row.form, row.syntax);
            benchmark::RegisterBenchmark((name + row.peer).c_str(), Directly, job, row.form,
                                         row.direct);
        }
        const std::string name = std::string("Rle") + job.name + '/';
        benchmark::RegisterBenchmark((name + "Read").c_str(), Ours, job, kXferRle, kRle);
        benchmark::RegisterBenchmark((name + "Written").c_str(), RleWritten, job);
    }
    return 0;
}();

}  // namespace
}  // namespace quorvex::bench
