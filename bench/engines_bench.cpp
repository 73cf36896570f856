// 8-bit lossy JPEG and JPEG 2000 through CxImageProcessor, beside libjpeg-turbo and OpenJPEG called
// with nothing of ours around them.
#include "bench/engine_pictures.h"
#include "bench/openjpeg_reading.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

namespace quorvex::bench {
namespace {

extern "C" {
#include <jpeglib.h>
}

#include "bench/ijg_direct.inc"

constexpr Picture kColour{.columns = 1024, .rows = 768, .samples = 3};
constexpr Picture kSlice{.columns = 512, .rows = 512, .precision = 16};

void BaselineEncodeTurbo(benchmark::State& state) {
    EncodeDirectly(state, kColour, [](jpeg_compress_struct& codec) {
        jpeg_set_quality(&codec, 90, TRUE);
        codec.comp_info[0].h_samp_factor = 1;
        codec.comp_info[0].v_samp_factor = 1;
    });
}

/// Decodes and packs: what a caller without us would have to do.
void OpenJpegFrame(const Bytes& stream, const Picture& picture, unsigned char* out) {
    OpjSource source{.bytes = stream};
    const OpjStream opened = OpenForReading(source);
    const OpjCodec codec = MakeOpjDecoder();
    opj_dparameters_t settings{};
    opj_set_default_decoder_parameters(&settings);
    opj_setup_decoder(codec.get(), &settings);
    opj_image_t* read = nullptr;
    opj_read_header(opened.get(), codec.get(), &read);
    const OpjImage image(read);
    opj_decode(codec.get(), opened.get(), image.get());
    const std::size_t pixels =
        picture.Bytes() / static_cast<std::size_t>(picture.samples * picture.SampleBytes());
    for (std::size_t i = 0; i < pixels; ++i) {
        for (int c = 0; c < picture.samples; ++c) {
            std::memcpy(out, &image->comps[c].data[i],
                        static_cast<std::size_t>(picture.SampleBytes()));
            out += picture.SampleBytes();
        }
    }
}

void DecodeOpenJpeg(benchmark::State& state, const Picture& picture, std::uint32_t target) {
    Bytes pixels = Pixels(picture);
    const Bytes stream = Compress(picture, pixels, target, 10);
    for (auto _ : state) {
        const auto frame = std::make_unique_for_overwrite<unsigned char[]>(picture.Bytes());
        OpenJpegFrame(stream, picture, frame.get());
        benchmark::DoNotOptimize(frame.get());
    }
    CountBytes(state, picture);
}

/// The pixels of the CT sample, which lie at the end of its file.
Bytes SamplePixels() {
    std::ifstream file(QUORVEX_SOURCE_DIR "/samples/ct.dcm", std::ios::binary);
    const Bytes whole{std::istreambuf_iterator<char>(file), {}};
    return {whole.end() - std::min(std::ssize(whole), std::ptrdiff_t{512 * 512 * 2}), whole.end()};
}

void EncodeOpenJpeg(benchmark::State& state, const Picture& picture, const Bytes& pixels) {
    for (auto _ : state) {
        opj_image_cmptparm_t component{};
        component.dx = component.dy = 1;
        component.w = static_cast<OPJ_UINT32>(picture.columns);
        component.h = static_cast<OPJ_UINT32>(picture.rows);
        component.prec = static_cast<OPJ_UINT32>(picture.precision);
        const OpjImage image(opj_image_create(1, &component, OPJ_CLRSPC_GRAY));
        image->x1 = component.w;
        image->y1 = component.h;
        for (std::size_t i = 0; i < pixels.size() / 2; ++i) {
            image->comps[0].data[i] = pixels[2 * i] | (pixels[2 * i + 1] << 8);
        }
        Bytes stream;
        OpjTarget target{.bytes = stream, .limit = 2 * pixels.size()};
        const OpjStream opened = OpenForWriting(target);
        const OpjCodec codec = MakeOpjEncoder();
        opj_cparameters_t settings{};
        opj_set_default_encoder_parameters(&settings);
        settings.tcp_numlayers = 1;
        settings.cp_disto_alloc = 1;
        opj_setup_encoder(codec.get(), &settings, image.get());
        opj_start_compress(codec.get(), image.get(), opened.get());
        opj_encode(codec.get(), opened.get());
        opj_end_compress(codec.get(), opened.get());
        benchmark::DoNotOptimize(stream.data());
    }
    CountBytes(state, picture);
}

void Jpeg2000LosslessEncodeOpenJpeg(benchmark::State& state) {
    EncodeOpenJpeg(state, kSlice, Pixels(kSlice));
}
void Jpeg2000SampleEncodeOpenJpeg(benchmark::State& state) {
    EncodeOpenJpeg(state, kSlice, SamplePixels());
}

BENCHMARK_CAPTURE(DecodeOurs, , kColour, kXferJpegBaseline, 90, kJpegBaseline)
    ->Name("BaselineDecodeOurs");
BENCHMARK_CAPTURE(DecodeDirectly, , kColour, kXferJpegBaseline, 90)->Name("BaselineDecodeTurbo");
BENCHMARK_CAPTURE(EncodeOurs, , kColour, kXferJpegBaseline, 90)->Name("BaselineEncodeOurs");
BENCHMARK(BaselineEncodeTurbo);
BENCHMARK_CAPTURE(DecodeOurs, , kSlice, kXferJpeg2000Lossless, 1, kJpeg2000Lossless)
    ->Name("Jpeg2000LosslessDecodeOurs");
BENCHMARK_CAPTURE(DecodeOpenJpeg, , kSlice, kXferJpeg2000Lossless)
    ->Name("Jpeg2000LosslessDecodeOpenJpeg");
BENCHMARK_CAPTURE(DecodeOurs, , kColour, kXferJpeg2000, 10, kJpeg2000)
    ->Name("Jpeg2000LossyDecodeOurs");
BENCHMARK_CAPTURE(DecodeOpenJpeg, , kColour, kXferJpeg2000)->Name("Jpeg2000LossyDecodeOpenJpeg");
BENCHMARK_CAPTURE(EncodeOurs, , kSlice, kXferJpeg2000Lossless, 1)
    ->Name("Jpeg2000LosslessEncodeOurs");
BENCHMARK(Jpeg2000LosslessEncodeOpenJpeg);
BENCHMARK(Jpeg2000SampleEncodeOpenJpeg);

}  // namespace
}  // namespace quorvex::bench
