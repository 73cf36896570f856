/// Parsing a CT header and reading an attribute, beside dcmdata and GDCM.
#include <benchmark/benchmark.h>
#include <dcmtk/config/osconfig.h>
// dcmdata wants its own configuration first.
#include "foundation/dicom/reading/resynchronise.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <dcmtk/dcmdata/dcistrmb.h>
#include <dcmtk/dcmdata/dctk.h>
#include <gdcm-3.0/gdcmReader.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kPiece = 16'384;
constexpr std::uint32_t kUpToPixelData = 0x7FE0000F;

void AppendElement(std::vector<unsigned char>& bytes, std::uint32_t tag, const char* vr,
                   const std::string& value) {
    const auto put16 = [&](std::uint32_t number) {
        bytes.push_back(static_cast<unsigned char>(number));
        bytes.push_back(static_cast<unsigned char>(number >> 8U));
    };
    put16(tag >> 16U);
    put16(tag & 0xFFFFU);
    bytes.insert(bytes.end(),
                 {static_cast<unsigned char>(vr[0]), static_cast<unsigned char>(vr[1])});
    if (std::string(vr) != "OW") put16(static_cast<std::uint32_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
}

/// A Part 10 file of 256 elements as a CT slice has them, most of them short texts.
std::vector<unsigned char> MakeHeader() {
    std::vector<unsigned char> bytes(128, 0);
    bytes.insert(bytes.end(), {'D', 'I', 'C', 'M'});
    AppendElement(bytes, 0x00020000, "UL", std::string("\34\0\0\0", 4));
    AppendElement(bytes, 0x00020010, "UI", std::string("1.2.840.10008.1.2.1\0", 20));
    for (std::uint32_t i = 0; i < 100; ++i)
        AppendElement(bytes, 0x00081200 + i, "LO", "a short text");
    for (std::uint32_t i = 0; i < 100; ++i) AppendElement(bytes, 0x00189000 + i, "DS", "1.25\\2.5");
    for (std::uint32_t i = 0; i < 48; ++i)
        AppendElement(bytes, 0x00200100 + i, "UI", "1.2.840.10008.5.1.4.1.1.2.");
    AppendElement(bytes, 0x00280002, "US", std::string("\1\0", 2));
    AppendElement(bytes, 0x00280004, "CS", "MONOCHROME2 ");
    AppendElement(bytes, kRows, "US", std::string("\0\2", 2));
    AppendElement(bytes, 0x00280011, "US", std::string("\0\2", 2));
    AppendElement(bytes, 0x00280100, "US", std::string("\20\0", 2));
    AppendElement(bytes, 0x00280103, "US", std::string("\0\0", 2));
    AppendElement(bytes, kWindowCenter, "DS", "40\\400");
    // The long form: reserved bytes, length and value.
    AppendElement(bytes, 0x7FE00010, "OW", std::string("\0\0\2\0\0\0\0\0", 8));
    return bytes;
}

struct Memory {
    const std::vector<unsigned char>* bytes;
    std::size_t at = 0;
    unsigned char piece[kPiece];
};

quorvex::MC_STATUS Give(const char*, void* user, int* length, void** data, int first, int* last) {
    auto* memory = static_cast<Memory*>(user);
    if (first != 0) memory->at = 0;
    const std::size_t count = std::min(kPiece, memory->bytes->size() - memory->at);
    std::memcpy(memory->piece, memory->bytes->data() + memory->at, count);
    memory->at += count;
    *length = static_cast<int>(count);
    *data = memory->piece;
    *last = memory->at == memory->bytes->size() ? 1 : 0;
    return quorvex::kMcContinue;
}

bool Read(quorvex::CDcmObject& object, const std::vector<unsigned char>& bytes) {
    Memory memory{&bytes, 0, {}};
    unsigned long offset = 0;
    return object.ReadFileUptoTag(nullptr, kUpToPixelData, &offset, &memory, Give) ==
           quorvex::kDcmSuccess;
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
    const auto bytes = MakeHeader();
    for (auto _ : state) {
        quorvex::CDcmObject object;
        if (!Read(object, bytes)) state.SkipWithError("unread");
    }
}
BENCHMARK(HeaderOurs)->Unit(benchmark::kMicrosecond);

void HeaderDcmdata(benchmark::State& state) {
    const auto bytes = MakeHeader();
    for (auto _ : state) {
        DcmFileFormat file;
        if (!ReadByDcmdata(file, bytes)) state.SkipWithError("unread");
    }
}
BENCHMARK(HeaderDcmdata)->Unit(benchmark::kMicrosecond);

void HeaderGdcm(benchmark::State& state) {
    const auto bytes = MakeHeader();
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
    if (!Read(object, MakeHeader())) state.SkipWithError("unread");
    unsigned short rows = 0;
    for (auto _ : state) benchmark::DoNotOptimize(object.GetValue(kRows, rows));
}
BENCHMARK(WholeNumberOurs);

void WholeNumberDcmdata(benchmark::State& state) {
    DcmFileFormat file;
    if (!ReadByDcmdata(file, MakeHeader())) state.SkipWithError("unread");
    Uint16 rows = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(file.getDataset()->findAndGetUint16(DCM_Rows, rows));
    }
}
BENCHMARK(WholeNumberDcmdata);

void DecimalStringOurs(benchmark::State& state) {
    quorvex::CDcmObject object;
    if (!Read(object, MakeHeader())) state.SkipWithError("unread");
    double center = 0;
    for (auto _ : state) benchmark::DoNotOptimize(object.GetValue(kWindowCenter, center));
}
BENCHMARK(DecimalStringOurs);

void DecimalStringDcmdata(benchmark::State& state) {
    DcmFileFormat file;
    if (!ReadByDcmdata(file, MakeHeader())) state.SkipWithError("unread");
    Float64 center = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(file.getDataset()->findAndGetFloat64(DCM_WindowCenter, center));
    }
}
BENCHMARK(DecimalStringDcmdata);

void TextOurs(benchmark::State& state) {
    quorvex::CDcmObject object;
    if (!Read(object, MakeHeader())) state.SkipWithError("unread");
    quorvex::CString text;
    for (auto _ : state) benchmark::DoNotOptimize(object.GetValue(0x00280004, text));
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
