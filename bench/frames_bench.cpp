// The last frames of a long object beside the same frame alone in a file.
#include "bench/picture_file.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::bench {
namespace {

using Octets = std::vector<unsigned char>;

constexpr std::uint16_t kSide = 256;
constexpr int kFrames = 1000;

struct Form {
    const char* name;
    const char* uid;
    std::uint16_t bits;
};

void Append(Octets& bytes, std::uint32_t number, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
    }
}

void AppendElement(Octets& bytes, std::uint32_t tag, const std::string& vr, std::string value) {
    if (value.size() % 2 != 0) value.push_back(vr == "UI" ? '\0' : ' ');
    Append(bytes, tag >> 16U, 2);
    Append(bytes, tag & 0xFFFFU, 2);
    bytes.insert(bytes.end(), vr.begin(), vr.end());
    Append(bytes, static_cast<std::uint32_t>(value.size()), 2);
    bytes.insert(bytes.end(), value.begin(), value.end());
}

std::string Word(std::uint16_t number) {
    return {static_cast<char>(number & 0xFF), static_cast<char>(number >> 8U)};
}

Octets Header(const Form& form, int frames) {
    Octets bytes(128, 0);
    bytes.insert(bytes.end(), {'D', 'I', 'C', 'M'});
    AppendElement(bytes, 0x00020010, "UI", form.uid);
    AppendElement(bytes, 0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.7.2");
    AppendElement(bytes, 0x00280002, "US", Word(1));
    AppendElement(bytes, 0x00280004, "CS", "MONOCHROME2");
    AppendElement(bytes, 0x00280008, "IS", std::to_string(frames));
    AppendElement(bytes, 0x00280010, "US", Word(kSide));
    AppendElement(bytes, 0x00280011, "US", Word(kSide));
    AppendElement(bytes, 0x00280100, "US", Word(form.bits));
    AppendElement(bytes, 0x00280101, "US", Word(form.bits));
    AppendElement(bytes, 0x00280102, "US", Word(static_cast<std::uint16_t>(form.bits - 1)));
    AppendElement(bytes, 0x00280103, "US", Word(0));
    Append(bytes, 0x00107FE0, 4);
    const char* const vr = form.bits == 8 ? "OB" : "OW";
    bytes.insert(bytes.end(), vr, vr + 2);
    Append(bytes, 0, 2);
    return bytes;
}

void AppendItem(Octets& bytes, const Octets& content) {
    Append(bytes, 0xE000FFFE, 4);
    Append(bytes, static_cast<std::uint32_t>(content.size()), 4);
    bytes.insert(bytes.end(), content.begin(), content.end());
}

std::string WriteFile(const Form& form, const Octets& frame, int frames) {
    Octets bytes = Header(form, frames);
    const bool isNative = std::string(form.name) == "native";
    if (isNative) {
        Append(bytes, static_cast<std::uint32_t>(frame.size()) * static_cast<unsigned>(frames), 4);
    } else {
        Append(bytes, 0xFFFFFFFF, 4);
        AppendItem(bytes, {});
    }
    for (int i = 0; i < frames; ++i) {
        isNative ? void(bytes.insert(bytes.end(), frame.begin(), frame.end()))
                 : AppendItem(bytes, frame);
    }
    if (!isNative) {
        Append(bytes, 0xE0DDFFFE, 4);
        Append(bytes, 0, 4);
    }
    const auto name = std::string("quorvex_frames_") + form.name + std::to_string(frames) + ".dcm";
    const auto path = std::filesystem::temp_directory_path() / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path.string();
}

Octets NativeFrame(unsigned bits) {
    Octets frame;
    for (const std::uint16_t word : Picture(kSide, kSide)) {
        Append(frame, bits == 8 ? word / 16U : word, bits / 8);
    }
    return frame;
}

/// High bytes in runs as they come, low bytes as they are.
Octets RleFrame() {
    const Octets pixels = NativeFrame(16);
    Octets high;
    Octets low;
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
    Octets frame;
    Append(frame, 2, 4);
    Append(frame, 64, 4);
    Append(frame, static_cast<std::uint32_t>(64 + high.size()), 4);
    frame.resize(64);
    frame.insert(frame.end(), high.begin(), high.end());
    frame.insert(frame.end(), low.begin(), low.end());
    if (frame.size() % 2 != 0) frame.push_back(0);
    return frame;
}

Octets JpegFrame() {
    Octets pixels = NativeFrame(8);
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
    Octets frame(coded, coded + size);
    if (frame.size() % 2 != 0) frame.push_back(0);
    return frame;
}

/// Frames of the last tenth in turn, out of one object of so many, or each out of an object of its
/// own: either way they come from memory that was not touched lately.
void Fetch(benchmark::State& state, const Form& form, const Octets& frame) {
    constexpr int kTurns = kFrames / 10;
    const int frames = static_cast<int>(state.range(0));
    const std::string file = WriteFile(form, frame, frames);
    CDcmApp app;
    std::vector<CxDcmParser> parsers(frames == 1 ? kTurns : 1);
    for (CxDcmParser& parser : parsers) {
        if (parser.Initialize(&app, CString(file), 0) != QVM_SUCCESS) state.SkipWithError("unread");
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
    std::filesystem::remove(file);
}

void LastFramesNative(benchmark::State& state) {
    Fetch(state, {"native", "1.2.840.10008.1.2.1", 16}, NativeFrame(16));
}
void LastFramesRle(benchmark::State& state) {
    Fetch(state, {"rle", "1.2.840.10008.1.2.5", 16}, RleFrame());
}
void LastFramesJpeg(benchmark::State& state) {
    Fetch(state, {"jpeg", "1.2.840.10008.1.2.4.50", 8}, JpegFrame());
}
BENCHMARK(LastFramesNative)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);
BENCHMARK(LastFramesRle)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);
BENCHMARK(LastFramesJpeg)->Arg(1)->Arg(kFrames)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quorvex::bench
