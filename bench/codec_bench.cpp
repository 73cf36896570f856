// RLE frames and full-range colour, ours beside dcmdata's decoder, decoded bytes a second.
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcrledec.h>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

/// Runs as a plain encoder finds them: three equal bytes make a replicate run.
Bytes EncodeSegment(const Bytes& plane) {
    Bytes out;
    for (std::size_t i = 0; i < plane.size();) {
        std::size_t same = 1;
        while (i + same < plane.size() && same < 128 && plane[i + same] == plane[i]) ++same;
        if (same > 2) {
            out.push_back(static_cast<unsigned char>(257 - same));
            out.push_back(plane[i]);
            i += same;
            continue;
        }
        std::size_t count = 0;
        while (i + count < plane.size() && count < 128) {
            const std::size_t at = i + count;
            if (at + 2 < plane.size() && plane[at] == plane[at + 1] && plane[at] == plane[at + 2]) {
                break;
            }
            ++count;
        }
        out.push_back(static_cast<unsigned char>(count - 1));
        out.insert(out.end(), plane.begin() + static_cast<std::ptrdiff_t>(i),
                   plane.begin() + static_cast<std::ptrdiff_t>(i + count));
        i += count;
    }
    if (out.size() % 2 != 0) out.push_back(0);
    return out;
}

struct RleFrame {
    Bytes coded;
    std::vector<Bytes> segments;
    std::size_t decodedBytes = 0;
};

RleFrame MakeFrame(const std::vector<Bytes>& planes) {
    RleFrame frame;
    frame.coded.resize(64);
    frame.coded[0] = static_cast<unsigned char>(planes.size());
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const auto offset = static_cast<std::uint32_t>(frame.coded.size());
        std::memcpy(frame.coded.data() + 4 * (i + 1), &offset, 4);
        frame.segments.push_back(EncodeSegment(planes[i]));
        frame.coded.insert(frame.coded.end(), frame.segments.back().begin(),
                           frame.segments.back().end());
        frame.decodedBytes += planes[i].size();
    }
    return frame;
}

/// A smooth picture with noise, on a black ground as scanners give it.
int Sample(int x, int y, int side, double noise, std::mt19937& random) {
    const double dx = x - side / 2.0;
    const double dy = y - side / 2.0;
    if (std::hypot(dx, dy) > 0.42 * side) return 0;
    std::normal_distribution<double> spread(0, noise);
    return static_cast<int>(1000 + 300 * std::sin(x / 37.0) + 200 * std::cos(y / 23.0) +
                            spread(random));
}

RleFrame GreyFrame(int side) {
    std::mt19937 random(7);
    std::vector<Bytes> planes(2);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int value = Sample(x, y, side, 12, random);
            planes[0].push_back(static_cast<unsigned char>(value >> 8));
            planes[1].push_back(static_cast<unsigned char>(value));
        }
    }
    return MakeFrame(planes);
}

RleFrame ColourFrame(int side) {
    std::mt19937 random(7);
    std::vector<Bytes> planes(3);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int value = Sample(x, y, side, 1, random) / 8;
            for (int s = 0; s < 3; ++s) {
                planes[static_cast<std::size_t>(s)].push_back(
                    static_cast<unsigned char>(value + 10 * s));
            }
        }
    }
    return MakeFrame(planes);
}

quorvex::_IMAGE_PROCESS_PARAM Param(int side, bool isColour) {
    quorvex::_IMAGE_PROCESS_PARAM param;
    param.transferSyntax = quorvex::kRle;
    param.rows = param.columns = static_cast<std::uint16_t>(side);
    param.samplesPerPixel = isColour ? 3 : 1;
    param.planarConfiguration = isColour ? 1 : 0;
    param.bitsAllocated = isColour ? 8 : 16;
    param.photometric = isColour ? "RGB" : "MONOCHROME2";
    param.targetSyntax = 1;
    return param;
}

void Ours(benchmark::State& state, bool isColour) {
    const auto side = static_cast<int>(state.range(0));
    RleFrame frame = isColour ? ColourFrame(side) : GreyFrame(side);
    auto param = Param(side, isColour);
    for (auto _ : state) {
        quorvex::CxImageProcessor processor;
        unsigned char* result = nullptr;
        unsigned long size = 0;
        processor.DecompressFrameData(&param, frame.coded.data(), frame.coded.size(), result, size,
                                      0);
        benchmark::DoNotOptimize(result);
        delete[] result;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.decodedBytes));
}

/// What dcmdata's codec does for a frame: each segment decoded, then copied byte by byte to its
/// places.
void Dcmdata(benchmark::State& state, bool isColour) {
    const auto side = static_cast<int>(state.range(0));
    RleFrame frame = isColour ? ColourFrame(side) : GreyFrame(side);
    const std::size_t count = frame.segments.size();
    const std::size_t pixels = frame.decodedBytes / count;
    for (auto _ : state) {
        Bytes result(frame.decodedBytes);
        DcmRLEDecoder decoder(pixels);
        for (std::size_t i = 0; i < count; ++i) {
            decoder.clear();
            decoder.decompress(frame.segments[i].data(), frame.segments[i].size());
            const auto* from = static_cast<const unsigned char*>(decoder.getOutputBuffer());
            unsigned char* to = result.data() + (isColour ? i : count - 1 - i);
            for (std::size_t p = 0; p < pixels; ++p, to += count) *to = from[p];
        }
        benchmark::DoNotOptimize(result.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.decodedBytes));
}

void FullRange(benchmark::State& state, const char* photometric, int planar) {
    const auto side = static_cast<int>(state.range(0));
    const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    std::mt19937 random(7);
    Bytes source(3 * pixels);
    for (auto& byte : source) byte = static_cast<unsigned char>(100 + random() % 50);
    auto param = Param(side, true);
    param.photometric = photometric;
    param.planarConfiguration = static_cast<std::uint16_t>(planar);
    Bytes rgb(3 * pixels);
    unsigned char* result = rgb.data();
    quorvex::CxImageProcessor processor;
    for (auto _ : state) {
        processor.ConvertYBRToRGB(&param, source.data(), result);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(rgb.size()));
}

BENCHMARK_CAPTURE(Ours, RleGrey16, false)->Arg(512)->Arg(3000);
BENCHMARK_CAPTURE(Dcmdata, RleGrey16, false)->Arg(512)->Arg(3000);
BENCHMARK_CAPTURE(Ours, RleRgb8, true)->Arg(512)->Arg(2000);
BENCHMARK_CAPTURE(Dcmdata, RleRgb8, true)->Arg(512)->Arg(2000);
BENCHMARK_CAPTURE(FullRange, YbrFullPixels, "YBR_FULL", 0)->Arg(1024);
BENCHMARK_CAPTURE(FullRange, YbrFullPlanes, "YBR_FULL", 1)->Arg(1024);
BENCHMARK_CAPTURE(FullRange, YbrFull422, "YBR_FULL_422", 0)->Arg(1024);
BENCHMARK_CAPTURE(FullRange, RgbPlanes, "RGB", 1)->Arg(1024);

}  // namespace
