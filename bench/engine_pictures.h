/// Pictures for the benches of the engines, and our side of each comparison.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <random>
#include <vector>

namespace quorvex::bench {

using Bytes = std::vector<unsigned char>;

struct Picture {
    int columns = 0;
    int rows = 0;
    int samples = 1;
    int precision = 8;

    [[nodiscard]] int SampleBytes() const { return precision > 8 ? 2 : 1; }
    [[nodiscard]] std::size_t Bytes() const {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows) *
               static_cast<std::size_t>(samples * SampleBytes());
    }
};

/// Slopes with noise of about `precision` / 3 bits, as a detector gives it.
inline Bytes Pixels(const Picture& picture) {
    std::minstd_rand random(7);
    const unsigned greatest = (1U << picture.precision) - 1;
    const unsigned noise = 1U << (picture.precision / 3);
    Bytes bytes;
    bytes.reserve(picture.Bytes());
    for (int y = 0; y < picture.rows; ++y) {
        for (int x = 0; x < picture.columns * picture.samples; ++x) {
            const auto slope = static_cast<unsigned>(x / picture.samples + y) * greatest /
                               static_cast<unsigned>(2 * (picture.columns + picture.rows));
            const auto value = slope + static_cast<unsigned>(random() >> 8) % noise;
            bytes.push_back(static_cast<unsigned char>(value));
            if (picture.SampleBytes() == 2) {
                bytes.push_back(static_cast<unsigned char>(value >> 8));
            }
        }
    }
    return bytes;
}

inline _IMAGE_PROCESS_PARAM Describe(const Picture& picture, std::uint32_t syntax) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = syntax;
    param.samplesPerPixel = static_cast<std::uint16_t>(picture.samples);
    param.photometric = picture.samples == 3 ? "RGB" : "MONOCHROME2";
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(picture.rows);
    param.columns = static_cast<std::uint16_t>(picture.columns);
    param.bitsAllocated = static_cast<std::uint16_t>(8 * picture.SampleBytes());
    param.pixelRepresentation = 0;
    return param;
}

inline Bytes Compress(const Picture& picture, Bytes& pixels, std::uint32_t target,
                      std::uint16_t quality) {
    _IMAGE_PROCESS_PARAM param = Describe(picture, kExplicitLittleEndian);
    param.targetSyntax = target;
    param.quality = quality;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    CxImageProcessor().CompressFrameData(&param, pixels.data(), pixels.size(), result, size);
    Bytes stream(result, result + size);
    delete[] result;
    return stream;
}

inline void CountBytes(benchmark::State& state, const Picture& picture) {
    state.SetBytesProcessed(static_cast<std::int64_t>(picture.Bytes()) *
                            static_cast<std::int64_t>(state.iterations()));
}

inline void DecodeOurs(benchmark::State& state, const Picture& picture, std::uint32_t target,
                       std::uint16_t quality, std::uint32_t syntax) {
    Bytes pixels = Pixels(picture);
    Bytes stream = Compress(picture, pixels, target, quality);
    _IMAGE_PROCESS_PARAM param = Describe(picture, syntax);
    for (auto _ : state) {
        unsigned char* result = nullptr;
        unsigned long size = 0;
        const auto answer = CxImageProcessor().DecompressFrameData(&param, stream.data(),
                                                                   stream.size(), result, size, 0);
        if (answer != QVM_SUCCESS) state.SkipWithError("not decoded");
        benchmark::DoNotOptimize(result);
        delete[] result;
    }
    CountBytes(state, picture);
}

inline void EncodeOurs(benchmark::State& state, const Picture& picture, std::uint32_t target,
                       std::uint16_t quality) {
    Bytes pixels = Pixels(picture);
    for (auto _ : state) {
        if (Compress(picture, pixels, target, quality).empty()) state.SkipWithError("not coded");
    }
    CountBytes(state, picture);
}

}  // namespace quorvex::bench
