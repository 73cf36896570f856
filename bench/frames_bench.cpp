// The last frames of a long object beside the same frame alone in a file.
#include "bench/picture_file.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::bench {
namespace {

using test::Bytes;

constexpr unsigned kSide = 256;
constexpr int kFrames = 1000;

struct Form {
    std::string_view uid;
    unsigned bits;
};

void Append(Bytes& bytes, std::uint32_t number, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
    }
}

Bytes FileOf(const Form& form, const Bytes& frame, int frames) {
    const std::string count = std::to_string(frames);
    const test::ImageFacts facts = {
        .rows = kSide, .columns = kSide, .bits = form.bits, .frames = count.c_str()};
    const auto copies = static_cast<std::size_t>(frames);
    if (form.uid != test::kExplicitUid)
        return EncapsulatedFile(form.uid, facts, std::vector<Bytes>(copies, frame));
    Bytes pixels;
    for (std::size_t i = 0; i < copies; ++i) test::Append(pixels, frame);
    return NativeFile(form.uid, facts, pixels);
}

Bytes NativeFrame(unsigned bits) {
    Bytes frame;
    for (const std::uint16_t word : Picture(kSide, kSide)) {
        Append(frame, bits == 8 ? word / 16U : word, bits / 8);
    }
    return frame;
}

/// High bytes in runs as they come, low bytes as they are.
Bytes RleFrame() {
    const Bytes pixels = NativeFrame(16);
    Bytes high;
    Bytes low;
    for (std::size_t i = 0; i < pixels.size();) {
        std::size_t run = 1;
        while (run < 128 && i + 2 * run < pixels.size() && pixels[i + 1] == pixels[i + 2 * run + 1])
            ++run;
        high.push_back(static_cast<unsigned char>(run == 1 ? 0 : 257 - run));
        high.push_back(pixels[i + 1]);
        i += 2 * run;
    }
    for (std::size_t i = 0; i < pixels.size(); i += 256) {
        low.push_back(127);
        for (std::size_t k = 0; k < 256; k += 2) low.push_back(pixels[i + k]);
    }
    Bytes frame;
    Append(frame, 2, 4);
    Append(frame, 64, 4);
    Append(frame, static_cast<std::uint32_t>(64 + high.size()), 4);
    frame.resize(64);
    frame.insert(frame.end(), high.begin(), high.end());
    frame.insert(frame.end(), low.begin(), low.end());
    if (frame.size() % 2 != 0) frame.push_back(0);
    return frame;
}

Bytes JpegFrame() {
    Bytes pixels = NativeFrame(8);
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.rows = param.columns = kSide;
    param.samplesPerPixel = 1;
    param.bitsAllocated = 8;
    param.photometric = "MONOCHROME2";
    param.quality = 90;
    param.targetSyntax = kXferJpegBaseline;
    unsigned char* coded = nullptr;
    unsigned long size = 0;
    CxImageProcessor processor;
    processor.CompressFrameData(&param, pixels.data(), pixels.size(), coded, size);
    const std::unique_ptr<unsigned char[]> owner(coded);
    Bytes frame(coded, coded + size);
    if (frame.size() % 2 != 0) frame.push_back(0);
    return frame;
}

/// Frames of the last tenth in turn, out of one object of so many, or each out of an object of its
/// own: either way they come from memory that was not touched lately.
void Fetch(benchmark::State& state, const Form& form, const Bytes& frame) {
    constexpr int kTurns = kFrames / 10;
    const int frames = static_cast<int>(state.range(0));
    const test::TemporaryFile file(FileOf(form, frame, frames));
    CDcmApp app;
    std::vector<CxDcmParser> parsers(frames == 1 ? kTurns : 1);
    for (CxDcmParser& parser : parsers) {
        if (parser.Initialize(&app, CString(file.Path()), 0) != QVM_SUCCESS)
            state.SkipWithError("unread");
    }
    std::size_t turn = 0;
    for (auto _ : state) {
        unsigned char* pixels = nullptr;
        unsigned long size = 0;
        turn = (turn + 1) % kTurns;
        const int index = frames == 1 ? 0 : frames - 1 - static_cast<int>(turn);
        if (parsers[turn % parsers.size()].GetAFrame(index, pixels, size, 0) != QVM_SUCCESS) {
            state.SkipWithError("not fetched");
        }
        benchmark::DoNotOptimize(pixels);
        delete[] pixels;
    }
}

void LastFramesNative(benchmark::State& state) {
    Fetch(state, {test::kExplicitUid, 16}, NativeFrame(16));
}
void LastFramesRle(benchmark::State& state) {
    Fetch(state, {test::kRleUid, 16}, RleFrame());
}
void LastFramesJpeg(benchmark::State& state) {
    Fetch(state, {"1.2.840.10008.1.2.4.50", 8}, JpegFrame());
}
BENCHMARK(LastFramesNative)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);
BENCHMARK(LastFramesRle)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);
BENCHMARK(LastFramesJpeg)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quorvex::bench
