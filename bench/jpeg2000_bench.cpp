// JPEG 2000 streams, arithmetically coded and of high throughput, into packed frames: our decoder
// beside OpenJPEG and OpenJPH, each called with nothing of ours around it. QUORVEX_BENCH_FILES may
// name more codestreams.
#include "bench/engine_pictures.h"
#include "bench/openjpeg_reading.h"
#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "tests/stress/jpeg2000_codecs.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <openjph/ojph_arch.h>
#include <openjph/ojph_codestream.h>
#include <openjph/ojph_file.h>
#include <openjph/ojph_mem.h>
#include <openjph/ojph_params.h>
#include <sstream>
#include <string>

namespace quorvex::bench {
namespace {

struct Job {
    std::string name;
    Bytes stream;
    Picture picture;
};

bool DecodeOurs(const Job& job, const j2k::Wanted& wanted, unsigned char* frame) {
    j2k::Decoder decoder;
    if (decoder.Open(job.stream) != j2k::Outcome::kDone) return false;
    const j2k::Rect area = decoder.Area(0, wanted);
    const int bytes = job.picture.SampleBytes();
    const std::ptrdiff_t pixelBytes = std::ptrdiff_t{job.picture.samples} * bytes;
    std::vector<j2k::OutputPlane> planes;
    for (int i = 0; i < job.picture.samples; ++i) {
        planes.push_back({.data = frame + std::ptrdiff_t{i} * bytes,
                          .rowStride = pixelBytes * area.Width(),
                          .sampleStride = pixelBytes,
                          .bytesPerSample = bytes,
                          .width = area.Width(),
                          .height = area.Height()});
    }
    return decoder.Decode(wanted, planes) == j2k::Outcome::kDone;
}

bool DecodeOpenJpeg(const Job& job, unsigned char* frame) {
    OpjSource source{.bytes = job.stream};
    const OpjStream opened = OpenForReading(source);
    const OpjCodec codec = MakeOpjDecoder();
    opj_dparameters_t settings{};
    opj_set_default_decoder_parameters(&settings);
    opj_setup_decoder(codec.get(), &settings);
    opj_image_t* read = nullptr;
    if (opj_read_header(opened.get(), codec.get(), &read) != OPJ_TRUE) return false;
    const OpjImage image(read);
    if (opj_decode(codec.get(), opened.get(), image.get()) != OPJ_TRUE) return false;
    const auto bytes = static_cast<std::size_t>(job.picture.SampleBytes());
    const std::size_t pixels = std::size_t{image->comps[0].w} * image->comps[0].h;
    for (std::size_t i = 0; i < pixels; ++i) {
        for (int c = 0; c < job.picture.samples; ++c) {
            std::memcpy(frame, &image->comps[c].data[i], bytes);
            frame += bytes;
        }
    }
    return true;
}

template <class Sample>
void PackRow(const ojph::si32* from, int columns, int samples, Sample* to) {
    for (int x = 0; x < columns; ++x)
        to[std::ptrdiff_t{x} * samples] = static_cast<Sample>(from[x]);
}

bool DecodeOpenJph(const Job& job, unsigned char* frame) {
    ojph::mem_infile file;
    file.open(job.stream.data(), job.stream.size());
    ojph::codestream codestream;
    codestream.read_headers(&file);
    codestream.set_planar(false);
    codestream.create();
    const Picture& picture = job.picture;
    for (int y = 0; y < picture.rows; ++y) {
        const std::size_t row = std::size_t(y) * std::size_t(picture.columns * picture.samples);
        for (int i = 0; i < picture.samples; ++i) {
            ojph::ui32 component = 0;
            const ojph::line_buf* line = codestream.pull(component);
            if (picture.SampleBytes() == 2) {
                PackRow(line->i32, picture.columns, picture.samples,
                        static_cast<std::uint16_t*>(static_cast<void*>(frame)) + row + component);
            } else {
                PackRow(line->i32, picture.columns, picture.samples, frame + row + component);
            }
        }
    }
    codestream.close();
    return true;
}

template <class Decode>
void Measure(const Job& job, const char* by, const Decode& decode) {
    benchmark::RegisterBenchmark((job.name + "/" + by).c_str(), [=](benchmark::State& state) {
        const auto frame = std::make_unique_for_overwrite<unsigned char[]>(job.picture.Bytes());
        for (auto _ : state) {
            if (!decode(job, frame.get())) state.SkipWithError("not decoded");
            benchmark::DoNotOptimize(frame.get());
        }
        CountBytes(state, job.picture);
    });
}

void Register(const Job& job, bool isHighThroughput) {
    const auto ours = [&](const char* by, std::uint32_t discarded, std::uint32_t side = 0) {
        const j2k::Rect region{0, 0, side, side};
        const j2k::Wanted wanted{.discardedLevels = discarded, .region = region, .executor = {}};
        Measure(job, by, [=](const Job& own, unsigned char* frame) {
            return DecodeOurs(own, wanted, frame);
        });
    };
    ours("Ours", 0);
    ours("OursHalf", 1);
    ours("OursQuarter", 2);
    ours("OursEighth", 3);
    if (job.picture.columns > 1024) ours("OursRegion256", 0, 256);
    Measure(job, "OpenJpeg", DecodeOpenJpeg);
    if (isHighThroughput) Measure(job, "OpenJph", DecodeOpenJph);
}

test::Planes PlanesOf(const Picture& picture, const Bytes& pixels) {
    test::Planes planes{.planes = {}, .precision = picture.precision, .isSigned = false};
    const auto width = static_cast<std::uint32_t>(picture.columns);
    const auto height = static_cast<std::uint32_t>(picture.rows);
    const auto step = static_cast<std::size_t>(picture.samples);
    for (std::size_t c = 0; c < step; ++c) {
        test::Planes::Plane plane{width, height, {}};
        for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
            const std::size_t at = i * step + c;
            plane.samples.push_back(picture.SampleBytes() == 1
                                        ? pixels[at]
                                        : pixels[2 * at] | (pixels[2 * at + 1] << 8));
        }
        planes.planes.push_back(std::move(plane));
    }
    return planes;
}

void RegisterPicture(const std::string& name, const Picture& picture, const Bytes& pixels) {
    const test::Planes planes = PlanesOf(picture, pixels);
    const bool isColour = picture.samples == 3;
    for (const bool isReversible : {true, false}) {
        const std::string kind = name + (isReversible ? "Lossless" : "Lossy");
        test::HtCoding coding;
        coding.isReversible = isReversible;
        coding.transformsColour = isColour;
        Register({"J2k" + kind, test::EncodeJ2k(planes, isReversible, isColour), picture}, false);
        Register({"Ht" + kind, test::EncodeHt(planes, coding), picture}, true);
    }
}

Bytes ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// A codestream as it is, of components that are all alike.
void RegisterFile(const std::string& path) {
    const Bytes stream = ReadFile(path);
    j2k::Decoder decoder;
    if (decoder.Open(stream) != j2k::Outcome::kDone) return;
    const j2k::Rect area = decoder.Area(0, {});
    const Picture picture{.columns = static_cast<int>(area.Width()),
                          .rows = static_cast<int>(area.Height()),
                          .samples = static_cast<int>(decoder.Size().components.size()),
                          .precision = static_cast<int>(decoder.Size().components[0].precision)};
    constexpr unsigned char kCapabilities[] = {0xFF, 0x50};
    const auto head = std::span(stream).first(std::min<std::size_t>(stream.size(), 200));
    const bool isHighThroughput = !std::ranges::search(head, kCapabilities).empty();
    Register({path.substr(path.rfind('/') + 1), stream, picture}, isHighThroughput);
}

int Run(int argc, char** argv) {
    constexpr Picture kCt{.columns = 512, .rows = 512, .precision = 12};
    constexpr Picture kPlate{.columns = 2048, .rows = 2048, .precision = 12};
    constexpr Picture kColour{.columns = 1024, .rows = 768, .samples = 3};
    const Bytes ct = ReadFile(QUORVEX_SOURCE_DIR "/samples/ct.dcm");
    RegisterPicture("Ct", kCt, {ct.end() - static_cast<std::ptrdiff_t>(kCt.Bytes()), ct.end()});
    RegisterPicture("Plate", kPlate, Pixels(kPlate));
    RegisterPicture("Colour", kColour, Pixels(kColour));
    const char* named = std::getenv("QUORVEX_BENCH_FILES");
    std::istringstream paths(named == nullptr ? "" : named);
    for (std::string path; paths >> path;) RegisterFile(path);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace
}  // namespace quorvex::bench

int main(int argc, char** argv) {
    return quorvex::bench::Run(argc, argv);
}
