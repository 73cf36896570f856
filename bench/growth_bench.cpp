// How cost grows with the size of what is asked: pixels, frames, fragments, length of the file; and
// a copy of the same bytes, which nothing can beat.
#include "bench/picture_file.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>
#include <vector>
// DCMTK's fragments are not among its common headers.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"

#include <dcmtk/dcmdata/dcpxitem.h>

namespace quorvex::bench {
namespace {

void Copy(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const std::vector<unsigned char> from(size, 7);
    std::vector<unsigned char> to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Copy)
    ->Arg(65536)
    ->Arg(512 * 512 * 2)
    ->Arg(1024 * 1024)
    ->Arg(1200 * 1460)
    ->Arg(3520 * 4280 * 2);

void RenderPixels(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    Words words = Picture(side, side);
    CXDIPP dipp;
    dipp.Initialize(reinterpret_cast<unsigned char*>(words.data()), {side, side}, {side, side}, 2,
                    4095, 0, 0);
    int level = 0;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(1500 + ++level % 500, 2000);
        if (dipp.Render() != QVM_SUCCESS) state.SkipWithError("not shown");
    }
}
BENCHMARK(RenderPixels)->Arg(512)->Arg(1024)->Arg(2048)->Arg(4096);

constexpr int kSide = 64;
constexpr std::size_t kFrameBytes = std::size_t{2} * kSide * kSide;

/// An RLE segment of literal runs: 128 bytes each, then the rest.
void AppendLiterals(std::vector<Uint8>& frame, std::size_t count) {
    for (std::size_t i = 0; i < count; i += 128) {
        const std::size_t run = std::min<std::size_t>(128, count - i);
        frame.push_back(static_cast<Uint8>(run - 1));
        for (std::size_t k = 0; k < run; ++k) frame.push_back(static_cast<Uint8>(i + k));
    }
}

std::vector<Uint8> RleFrame() {
    std::vector<Uint8> frame(64, 0);
    frame[0] = 2;
    frame[4] = 64;
    AppendLiterals(frame, kFrameBytes / 2);
    const auto second = static_cast<Uint32>(frame.size());
    for (std::size_t i = 0; i < 4; ++i) frame[8 + i] = static_cast<Uint8>(second >> (8 * i));
    AppendLiterals(frame, kFrameBytes / 2);
    return frame;
}

void Describe(DcmDataset& set, long frames) {
    set.putAndInsertString(DCM_SOPClassUID,
                           UID_MultiframeGrayscaleWordSecondaryCaptureImageStorage);
    set.putAndInsertString(DCM_SOPInstanceUID, "1.2.3.4");
    set.putAndInsertUint16(DCM_SamplesPerPixel, 1);
    set.putAndInsertString(DCM_PhotometricInterpretation, "MONOCHROME2");
    set.putAndInsertString(DCM_NumberOfFrames, std::to_string(frames).c_str());
    set.putAndInsertUint16(DCM_Rows, kSide);
    set.putAndInsertUint16(DCM_Columns, kSide);
    set.putAndInsertUint16(DCM_BitsAllocated, 16);
    set.putAndInsertUint16(DCM_BitsStored, 16);
    set.putAndInsertUint16(DCM_HighBit, 15);
    set.putAndInsertUint16(DCM_PixelRepresentation, 0);
}

std::string Saved(DcmFileFormat& format, const char* kind, long count, E_TransferSyntax syntax) {
    const auto name = "quorvex_growth_" + std::string(kind) + std::to_string(count) + ".dcm";
    const auto path = std::filesystem::temp_directory_path() / name;
    format.saveFile(path.c_str(), syntax);
    return path.string();
}

std::string NativeFile(long frames) {
    DcmFileFormat format;
    Describe(*format.getDataset(), frames);
    const Words words(static_cast<std::size_t>(frames) * kSide * kSide, 77);
    format.getDataset()->putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
    return Saved(format, "native", frames, EXS_LittleEndianExplicit);
}

/// `frames` frames of RLE, each in fragments of at most `part` bytes, an even number.
std::string RleFile(long frames, std::size_t part) {
    DcmFileFormat format;
    Describe(*format.getDataset(), frames);
    auto* const sequence = new DcmPixelSequence(DCM_PixelSequenceTag);
    sequence->insert(new DcmPixelItem(DCM_PixelItemTag));
    std::vector<Uint8> frame = RleFrame();
    frame.resize((frame.size() + 1) & ~std::size_t{1});
    for (long i = 0; i < frames; ++i) {
        for (std::size_t at = 0; at < frame.size(); at += part) {
            auto* const item = new DcmPixelItem(DCM_PixelItemTag);
            item->putUint8Array(&frame[at], std::min(part, frame.size() - at));
            sequence->insert(item);
        }
    }
    auto* const pixels = new DcmPixelData(DCM_PixelData);
    pixels->putOriginalRepresentation(EXS_RLELossless, nullptr, sequence);
    format.getDataset()->insert(pixels);
    return Saved(format, ("rle" + std::to_string(part) + "_").c_str(), frames, EXS_RLELossless);
}

void OpenAndFetchLast(benchmark::State& state, const std::string& file) {
    const CString path(file);
    for (auto _ : state) {
        CDcmApp app;
        CxDcmParser parser;
        unsigned char* frame = nullptr;
        unsigned long size = 0;
        const bool isFetched =
            parser.Initialize(&app, path, 0) == QVM_SUCCESS &&
            parser.GetAFrame(parser.GetFrameCount() - 1, frame, size, 0) == QVM_SUCCESS;
        if (!isFetched || size != kFrameBytes) state.SkipWithError("not fetched");
        delete[] frame;
    }
    std::filesystem::remove(file);
}

void OpenNativeFrames(benchmark::State& state) {
    OpenAndFetchLast(state, NativeFile(state.range(0)));
}
void OpenRleFrames(benchmark::State& state) {
    OpenAndFetchLast(state, RleFile(state.range(0), kFrameBytes * 2));
}
void OpenFragments(benchmark::State& state) {
    OpenAndFetchLast(
        state,
        RleFile(1, (kFrameBytes / static_cast<std::size_t>(state.range(0)) + 1) & ~std::size_t{1}));
}
BENCHMARK(OpenNativeFrames)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(OpenRleFrames)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(OpenFragments)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
}  // namespace quorvex::bench
