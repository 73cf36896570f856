/// Lossless pictures through our engine, and through a library called directly.
#pragma once

#include "bench/engine_pictures.h"
#include "tests/engines/jpeg_test_streams.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace quorvex::bench {

struct Job {
    std::string name;
    JpegCodingBlock coding;
    Bytes pixels;
    Bytes stream;

    [[nodiscard]] std::size_t RowBytes() const {
        return std::size_t{coding.columns} * coding.samples * coding.bytesPerSample;
    }
};

/// A library with nothing of ours around it.
struct LosslessLibrary {
    std::size_t sampleBytes;
    Bytes (*encode)(const Bytes& pixels, const JpegCodingBlock& coding);
    void (*decode)(const Bytes& stream, unsigned char* pixels, std::size_t rowBytes);
};

inline Bytes EncodeByEngine(const Job& job) {
    auto output = std::make_unique<testing::CodedOutput>();
    JpegCodingBlock coding = job.coding;
    coding.write = testing::TakeCoded;
    coding.writeContext = output.get();
    JpegCompressionHandle handle;
    comp_im_buf(handle, coding, job.pixels.data(), coding.rows);
    return std::move(output->bytes);
}

inline bool DecodeByEngine(const Job& job, unsigned char* pixels) {
    testing::StreamInput input{.bytes = job.stream};
    JpegDecompressionHandle handle;
    JpegDescription description;
    JpegPixelLayout layout;
    init_decompression(handle, description, job.stream.size(), &input, testing::GiveStream);
    pix_layout(handle, layout, job.coding.bytesPerSample, 1, JpegColour::kByStream, false);
    return decompress(handle, pixels, job.coding.rows) == 1;
}

inline Job Made(const char* name, int columns, int rows, int samples, int precision, int noise) {
    std::minstd_rand random(7);
    Job job{.name = name,
            .coding = testing::LosslessCoding(columns, rows, samples, precision),
            .pixels = {},
            .stream = {}};
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns * samples; ++x) {
            const auto slope = static_cast<unsigned>((x / samples + y) / 8);
            const auto value = slope + static_cast<unsigned>(random() >> 8) % (1U << noise);
            const unsigned sample = value & ((1U << precision) - 1);
            job.pixels.push_back(static_cast<unsigned char>(sample));
            if (precision > 8) job.pixels.push_back(static_cast<unsigned char>(sample >> 8));
        }
    }
    job.stream = EncodeByEngine(job);
    return job;
}

inline Bytes ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// The picture of a sample that ends with its uncoded pixels.
inline Job FromSample(const char* name, int columns, int rows, int precision) {
    Job job = Made(name, columns, rows, 1, precision, 0);
    const Bytes file = ReadFile(std::string(QUORVEX_SOURCE_DIR "/samples/") + name);
    std::copy_n(file.end() - static_cast<std::ptrdiff_t>(job.pixels.size()), job.pixels.size(),
                job.pixels.begin());
    job.stream = EncodeByEngine(job);
    return job;
}

/// A DICOM file of one lossless frame; nothing where its samples are not the library's.
inline std::optional<Job> FromFile(const std::string& path, std::size_t sampleBytes) {
    const Bytes file = ReadFile(path);
    constexpr unsigned char kStart[] = {0xFF, 0xD8, 0xFF};
    const auto start = std::search(file.begin(), file.end(), kStart, kStart + 3);
    JpegHeaderScanner scanner;
    Job job{.name = path.substr(path.rfind('/') + 1),
            .coding = {},
            .pixels = {},
            .stream = Bytes(start, file.end())};
    if (scanner.Scan(job.stream) != JpegHeaderScanner::State::kDone) return std::nullopt;
    const JpegHeader& header = scanner.Header();
    job.coding = testing::LosslessCoding(header.width, header.height, header.componentCount,
                                         header.precision);
    if (job.coding.bytesPerSample != sampleBytes) return std::nullopt;
    job.pixels.resize(job.RowBytes() * header.height);
    if (!DecodeByEngine(job, job.pixels.data())) return std::nullopt;
    return job;
}

template <class Work>
void Measure(const Job& job, const char* what, const Work& work) {
    const std::size_t bytes = job.pixels.size();
    const std::string name = job.name + "/" + what;
    benchmark::RegisterBenchmark(name.c_str(), [work, bytes](benchmark::State& state) {
        for (auto _ : state) work();
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    });
}

inline void Register(const Job& job, const LosslessLibrary& library) {
    const auto room = std::make_shared<Bytes>(job.pixels.size() + 65536);
    unsigned char* pixels = room->data();
    Measure(job, "decode/ours", [=] { DecodeByEngine(job, pixels); });
    Measure(job, "decode/library", [=] {
        library.decode(job.stream, pixels, job.RowBytes());
        benchmark::DoNotOptimize(room->data());
    });
    Measure(job, "encode/ours", [=] { benchmark::DoNotOptimize(EncodeByEngine(job).data()); });
    Measure(job, "encode/library",
            [=] { benchmark::DoNotOptimize(library.encode(job.pixels, job.coding).data()); });
}

/// Measures our jobs, and the DICOM files that the environment names, a blank between two.
inline int Run(int argc, char** argv, const LosslessLibrary& library,
               const std::vector<Job>& jobs) {
    for (const Job& job : jobs) Register(job, library);
    const char* named = std::getenv("QUORVEX_BENCH_FILES");
    std::istringstream paths(named == nullptr ? "" : named);
    for (std::string path; paths >> path;) {
        const auto job = FromFile(path, library.sampleBytes);
        if (job) Register(*job, library);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace quorvex::bench
