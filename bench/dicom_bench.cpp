/// Parsing a CT header and reading an attribute, beside dcmdata and GDCM.
#include <benchmark/benchmark.h>
#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include "foundation/dicom/reading/resynchronise.h"
#include "quorvex/DicomObject.h"
#include "tests/support/dicom_builder.h"

#include <cstdint>
#include <dcmtk/dcmdata/dcistrmb.h>
#include <dcmtk/dcmdata/dctk.h>
#include <gdcm-3.0/gdcmReader.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using quorvex::test::DicomBuilder;
using quorvex::test::MemoryFile;
using quorvex::test::ReadUpTo;
namespace tag = quorvex::tag;

/// A Part 10 file of 256 elements as a CT slice has them, most of them short texts.
MemoryFile MakeHeader() {
    auto file = DicomBuilder::Part10(quorvex::test::kExplicitUid);
    for (std::uint32_t i = 0; i < 100; ++i) file.Add(0x00081200 + i, "LO", "a short text");
    for (std::uint32_t i = 0; i < 100; ++i) file.Add(0x00189000 + i, "DS", "1.25\\2.5");
    for (std::uint32_t i = 0; i < 48; ++i)
        file.Add(0x00200100 + i, "UI", "1.2.840.10008.5.1.4.1.1.2.");
    file.Us(tag::kSamplesPerPixel, 1).Padded(tag::kPhotometricInterpretation, "CS", "MONOCHROME2");
    file.Us(tag::kRows, 512).Us(tag::kColumns, 512).Us(tag::kBitsAllocated, 16);
    file.Us(tag::kPixelRepresentation, 0).Add(tag::kWindowCenter, "DS", "40\\400");
    return file.Add(tag::kPixelData, "OW", std::string(2, '\0')).File();
}

bool Read(quorvex::CDcmObject& object, MemoryFile& file) {
    return ReadUpTo(object, file, quorvex::test::kUpToPixelData) == quorvex::kDcmSuccess;
}

bool ReadByDcmdata(DcmFileFormat& file, const std::vector<unsigned char>& bytes) {
    DcmInputBufferStream stream;
    stream.setBuffer(bytes.data(), static_cast<offile_off_t>(bytes.size()));
    stream.setEos();
    file.transferInit();
    const bool isGood = file.read(stream).good();
    file.transferEnd();
    return isGood;
}

void HeaderOurs(benchmark::State& state) {
    auto file = MakeHeader();
    for (auto _ : state) {
        quorvex::CDcmObject object;
        if (!Read(object, file)) state.SkipWithError("unread");
    }
}
BENCHMARK(HeaderOurs)->Unit(benchmark::kMicrosecond);

void HeaderDcmdata(benchmark::State& state) {
    const auto bytes = MakeHeader().bytes;
    for (auto _ : state) {
        DcmFileFormat file;
        if (!ReadByDcmdata(file, bytes)) state.SkipWithError("unread");
    }
}
BENCHMARK(HeaderDcmdata)->Unit(benchmark::kMicrosecond);

void HeaderGdcm(benchmark::State& state) {
    const auto bytes = MakeHeader().bytes;
    const std::string text(bytes.begin(), bytes.end());
    for (auto _ : state) {
        std::istringstream stream(text);
        gdcm::Reader reader;
        reader.SetStream(stream);
        if (!reader.Read()) state.SkipWithError("unread");
    }
}
BENCHMARK(HeaderGdcm)->Unit(benchmark::kMicrosecond);

void WholeNumberOurs(benchmark::State& state) {
    quorvex::CDcmObject object;
    auto header = MakeHeader();
    if (!Read(object, header)) state.SkipWithError("unread");
    unsigned short rows = 0;
    for (auto _ : state) benchmark::DoNotOptimize(object.GetValue(tag::kRows, rows));
}
BENCHMARK(WholeNumberOurs);

void WholeNumberDcmdata(benchmark::State& state) {
    DcmFileFormat file;
    if (!ReadByDcmdata(file, MakeHeader().bytes)) state.SkipWithError("unread");
    Uint16 rows = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(file.getDataset()->findAndGetUint16(DCM_Rows, rows));
    }
}
BENCHMARK(WholeNumberDcmdata);

void DecimalStringOurs(benchmark::State& state) {
    quorvex::CDcmObject object;
    auto header = MakeHeader();
    if (!Read(object, header)) state.SkipWithError("unread");
    double center = 0;
    for (auto _ : state) benchmark::DoNotOptimize(object.GetValue(tag::kWindowCenter, center));
}
BENCHMARK(DecimalStringOurs);

void DecimalStringDcmdata(benchmark::State& state) {
    DcmFileFormat file;
    if (!ReadByDcmdata(file, MakeHeader().bytes)) state.SkipWithError("unread");
    Float64 center = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(file.getDataset()->findAndGetFloat64(DCM_WindowCenter, center));
    }
}
BENCHMARK(DecimalStringDcmdata);

void TextOurs(benchmark::State& state) {
    quorvex::CDcmObject object;
    auto header = MakeHeader();
    if (!Read(object, header)) state.SkipWithError("unread");
    quorvex::CString text;
    for (auto _ : state)
        benchmark::DoNotOptimize(object.GetValue(tag::kPhotometricInterpretation, text));
}
BENCHMARK(TextOurs);

/// 50 MB that hold no data set, asked at every position.
void ScanForDataSet(benchmark::State& state) {
    std::vector<unsigned char> bytes(std::size_t{50} << 20);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = state.range(0) == 0 ? static_cast<unsigned char>(i * 2654435761U >> 13U)
                                       : static_cast<unsigned char>(i % 2 == 0 ? 8 : 0);
    }
    for (auto _ : state) {
        quorvex::dicom::DataSetFinder finder(bytes);
        int found = 0;
        for (std::size_t i = 1; i < bytes.size(); ++i) found += finder.CanBeginAt(i) ? 1 : 0;
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(ScanForDataSet)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
