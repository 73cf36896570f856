// Two overlays of a radiograph drawn into an overlay image, and a palette frame expanded, beside
// DCMTK's DicomImage.
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dctk.h>
#include <dcmtk/dcmimage/diregist.h>
#include <dcmtk/dcmimgle/dcmimage.h>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr unsigned short kColumns = 3520;
constexpr unsigned short kRows = 4280;
constexpr unsigned short kPaletteColumns = 1024;
constexpr unsigned short kPaletteRows = 768;
constexpr unsigned short kEntries = 256;

/// Lines and boxes, as text and marks are: one bit in forty, in runs.
std::vector<Uint8> Marks() {
    std::vector<Uint8> bytes(std::size_t{kRows} * kColumns / 8);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = i % 40 == 0 ? 0xFF : 0;
    return bytes;
}

void PutImage(DcmDataset& set, unsigned short columns, unsigned short rows, const char* photometric,
              unsigned short bits) {
    set.putAndInsertString(DCM_SOPClassUID, UID_SecondaryCaptureImageStorage);
    set.putAndInsertString(DCM_SOPInstanceUID, "1.2.3.4");
    set.putAndInsertUint16(DCM_SamplesPerPixel, 1);
    set.putAndInsertString(DCM_PhotometricInterpretation, photometric);
    set.putAndInsertUint16(DCM_Rows, rows);
    set.putAndInsertUint16(DCM_Columns, columns);
    set.putAndInsertUint16(DCM_BitsAllocated, bits);
    set.putAndInsertUint16(DCM_BitsStored, bits);
    set.putAndInsertUint16(DCM_HighBit, static_cast<Uint16>(bits - 1));
    set.putAndInsertUint16(DCM_PixelRepresentation, 0);
}

void PutOverlay(DcmDataset& set, Uint16 group) {
    const auto marks = Marks();
    const Sint16 origin[] = {1, 1};
    set.putAndInsertUint16(DcmTag(group, 0x0010, EVR_US), kRows);
    set.putAndInsertUint16(DcmTag(group, 0x0011, EVR_US), kColumns);
    set.putAndInsertString(DcmTag(group, 0x0040, EVR_CS), "G");
    set.putAndInsertSint16Array(DcmTag(group, 0x0050, EVR_SS), origin, 2);
    set.putAndInsertUint16(DcmTag(group, 0x0100, EVR_US), 1);
    set.putAndInsertUint16(DcmTag(group, 0x0102, EVR_US), 0);
    set.putAndInsertUint8Array(DcmTag(group, 0x3000, EVR_OB), marks.data(), marks.size());
}

std::string Saved(DcmFileFormat& format, const char* name) {
    const auto path = std::filesystem::temp_directory_path() / name;
    format.saveFile(path.c_str(), EXS_LittleEndianExplicit);
    return path.string();
}

const std::string& OverlayFile() {
    static const std::string path = [] {
        DcmFileFormat format;
        DcmDataset& set = *format.getDataset();
        PutImage(set, kColumns, kRows, "MONOCHROME2", 16);
        PutOverlay(set, 0x6000);
        PutOverlay(set, 0x6002);
        const std::vector<Uint16> words(std::size_t{kRows} * kColumns);
        set.putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
        return Saved(format, "quorvex_overlay_bench.dcm");
    }();
    return path;
}

const std::string& PaletteFile() {
    static const std::string path = [] {
        DcmFileFormat format;
        DcmDataset& set = *format.getDataset();
        PutImage(set, kPaletteColumns, kPaletteRows, "PALETTE COLOR", 8);
        const Uint16 descriptor[] = {kEntries, 0, 16};
        std::vector<Uint16> ramp(kEntries);
        for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<Uint16>(i * 257);
        for (Uint16 colour = 1; colour <= 3; ++colour) {
            set.putAndInsertUint16Array(
                DcmTag(0x0028, static_cast<Uint16>(0x1100 + colour), EVR_US), descriptor, 3);
            set.putAndInsertUint16Array(
                DcmTag(0x0028, static_cast<Uint16>(0x1200 + colour), EVR_OW), ramp.data(),
                ramp.size());
        }
        std::vector<Uint8> indices(std::size_t{kPaletteColumns} * kPaletteRows);
        for (std::size_t i = 0; i < indices.size(); ++i)
            indices[i] = static_cast<Uint8>(i * i >> 7);
        set.putAndInsertUint8Array(DCM_PixelData, indices.data(), indices.size());
        return Saved(format, "quorvex_palette_bench.dcm");
    }();
    return path;
}

void BurnTwoOverlays(benchmark::State& state) {
    quorvex::CDcmApp app;
    quorvex::CxDcmParser parser;
    parser.Initialize(&app, quorvex::CString(OverlayFile()), 0);
    const quorvex::CXDIPP dipp;
    std::vector<unsigned char> image(std::size_t{kRows} * kColumns);
    for (auto _ : state) {
        std::fill(image.begin(), image.end(), static_cast<unsigned char>(0));
        unsigned long length = 0;
        unsigned short width = 0;
        dipp.MakeOverlayImage2(parser.GetHeader(), nullptr, image.data(), length, width, 0, 0, 0, 0,
                               0, 0);
        benchmark::DoNotOptimize(image.data());
    }
    if (image[0] != 255 || image[9] != 0) state.SkipWithError("not drawn");
}
BENCHMARK(BurnTwoOverlays)->Unit(benchmark::kMillisecond);

void BurnTwoOverlaysByDicomImage(benchmark::State& state) {
    DicomImage image(OverlayFile().c_str());
    for (auto _ : state) {
        for (unsigned plane = 0; plane < 2; ++plane) {
            unsigned left = 0;
            unsigned top = 0;
            unsigned width = 0;
            unsigned height = 0;
            EM_Overlay mode = EMO_Default;
            const void* const data =
                image.getOverlayData(plane, left, top, width, height, mode, 0, 8, 0xFF, 0);
            if (data == nullptr) state.SkipWithError("not drawn");
        }
        image.deleteOverlayData();
    }
}
BENCHMARK(BurnTwoOverlaysByDicomImage)->Unit(benchmark::kMillisecond);

void ExpandPalette(benchmark::State& state) {
    quorvex::CDcmApp app;
    quorvex::CxDcmParser parser;
    parser.Initialize(&app, quorvex::CString(PaletteFile()), 0);
    unsigned char* indices = nullptr;
    unsigned long size = 0;
    parser.GetAFrame(0, indices, size, 0);
    const std::unique_ptr<unsigned char[]> owner(indices);
    const quorvex::CXDIPP dipp;
    for (auto _ : state) {
        unsigned char* rgb = nullptr;
        unsigned long length = 0;
        unsigned short padded = 0;
        if (dipp.MakePaletteColorImage(parser.GetHeader(), indices, rgb, length, padded) !=
            quorvex::QVM_SUCCESS)
            state.SkipWithError("not expanded");
        delete[] rgb;
    }
}
BENCHMARK(ExpandPalette)->Unit(benchmark::kMillisecond);

void ExpandPaletteByDicomImage(benchmark::State& state) {
    DcmFileFormat format;
    format.loadFile(PaletteFile().c_str());
    format.loadAllDataIntoMemory();
    for (auto _ : state) {
        DicomImage image(&format, EXS_LittleEndianExplicit);
        if (image.getOutputData(8) == nullptr) state.SkipWithError("not expanded");
    }
}
BENCHMARK(ExpandPaletteByDicomImage)->Unit(benchmark::kMillisecond);

}  // namespace
