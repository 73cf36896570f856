// From a file to the pixels of its first frame, ours beside dcmdata with dcmjpeg. Files: Debian's
// python3-pydicom; a bench whose file is not there says so.
#include <benchmark/benchmark.h>
#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include "quorvex/CxDcmParser.h"

#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmjpeg/djdecode.h>
#include <string>

namespace quorvex::bench {
namespace {

std::string PathOf(const char* name) {
    return std::string("/usr/lib/python3/dist-packages/pydicom/data/test_files/") + name;
}

void FileOurs(benchmark::State& state, const char* name) {
    const CString path(PathOf(name));
    CDcmApp app;
    for (auto _ : state) {
        CxDcmParser parser;
        unsigned char* frame = nullptr;
        unsigned long size = 0;
        const bool isRead = parser.Initialize(&app, path, 0) == QVM_SUCCESS &&
                            parser.GetAFrame(0, frame, size, 0) == QVM_SUCCESS;
        if (!isRead) state.SkipWithError("not read");
        benchmark::DoNotOptimize(frame);
        delete[] frame;
    }
}

void FileDcmtk(benchmark::State& state, const char* name) {
    const std::string path = PathOf(name);
    DJDecoderRegistration::registerCodecs();
    for (auto _ : state) {
        DcmFileFormat file;
        const Uint8* bytes = nullptr;
        const Uint16* words = nullptr;
        const bool isRead =
            file.loadFile(path.c_str()).good() &&
            file.getDataset()->chooseRepresentation(EXS_LittleEndianExplicit, nullptr).good() &&
            (file.getDataset()->findAndGetUint8Array(DCM_PixelData, bytes).good() ||
             file.getDataset()->findAndGetUint16Array(DCM_PixelData, words).good());
        if (!isRead) state.SkipWithError("not read");
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(words);
    }
    DJDecoderRegistration::cleanup();
}

BENCHMARK_CAPTURE(FileOurs, , "SC_rgb_jpeg_lossy_gdcm.dcm")->Name("BaselineFile");
BENCHMARK_CAPTURE(FileDcmtk, , "SC_rgb_jpeg_lossy_gdcm.dcm")->Name("BaselineFileDcmtk");
BENCHMARK_CAPTURE(FileOurs, , "JPGExtended.dcm")->Name("ExtendedFile");
BENCHMARK_CAPTURE(FileDcmtk, , "JPGExtended.dcm")->Name("ExtendedFileDcmtk");
BENCHMARK_CAPTURE(FileOurs, , "SC_rgb_jpeg_gdcm.dcm")->Name("LosslessFile");
BENCHMARK_CAPTURE(FileDcmtk, , "SC_rgb_jpeg_gdcm.dcm")->Name("LosslessFileDcmtk");

}  // namespace
}  // namespace quorvex::bench
