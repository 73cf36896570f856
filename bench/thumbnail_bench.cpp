// From a file to its thumbnail, beside DCMTK's DicomImage scaled to the same size.
#include "bench/picture_file.h"
#include "quorvex/CxDcmParser.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <string>
// DCMTK's image classes build on its data classes.
#include <dcmtk/dcmimgle/dcmimage.h>

namespace quorvex::bench {
namespace {

const std::string& FileOf(benchmark::State& state) {
    static const std::string slice = WritePicture(512, 512);
    static const std::string plate = WritePicture(3520, 4280);
    return state.range(0) == 512 ? slice : plate;
}

constexpr CSize kSmall{128, 128};

void ThumbnailOurs(benchmark::State& state) {
    const CString path(FileOf(state));
    CDcmApp app;
    for (auto _ : state) {
        CxDcmParser parser;
        unsigned char* image = nullptr;
        unsigned long size = 0;
        tagBITMAPINFOHEADER* header = nullptr;
        unsigned long headerSize = 0;
        const bool isMade = parser.Initialize(&app, path, 0) == QVM_SUCCESS &&
                            parser.MakeThumbNail(0, kSmall, kXferUncompressed, 0, image, size,
                                                 header, headerSize, 0) == QVM_SUCCESS;
        if (!isMade) state.SkipWithError("not made");
        delete[] image;
        delete[] static_cast<unsigned char*>(static_cast<void*>(header));
    }
}
BENCHMARK(ThumbnailOurs)->Arg(512)->Arg(3520)->Unit(benchmark::kMillisecond);

void ThumbnailByDicomImage(benchmark::State& state) {
    const std::string path = FileOf(state);
    for (auto _ : state) {
        DicomImage image(path.c_str());
        image.setWindow(0);
        const std::unique_ptr<DicomImage> scaled(image.createScaledImage(
            static_cast<unsigned long>(kSmall.cx), static_cast<unsigned long>(kSmall.cy), 1));
        if (scaled == nullptr || scaled->getOutputData(8) == nullptr) {
            state.SkipWithError("not made");
        }
    }
}
BENCHMARK(ThumbnailByDicomImage)->Arg(512)->Arg(3520)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex::bench
