#include "foundation/dicom/model/tags.h"
#include "foundation/platform/diagnostics.h"
#include "foundation/platform/file_reader.h"
#include "foundation/platform/pages.h"
#include "foundation/types/answer.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <string>

namespace quorvex {
namespace {

constexpr std::size_t kPreambleBytes = 128;
constexpr std::size_t kMarkedBytes = 132;
constexpr const char* kMarker = "DICM";

bool IsMarked(const unsigned char* bytes, std::size_t size) noexcept {
    return size >= kMarkedBytes && std::memcmp(bytes + kPreambleBytes, kMarker, 4) == 0;
}

/// What the first bytes of memory that a caller hands over say: 1 for Part 10, 0 for a bare data set.
std::optional<std::int32_t> Classify(const unsigned char* bytes, std::size_t size) noexcept {
    if (IsMarked(bytes, size)) return 1;
    if (size < 2) return std::nullopt;
    const unsigned group = bytes[0] + bytes[1] * 256U;
    if (group == 0x0002 || group == 0x0008) return 0;
    return std::nullopt;
}

bool HasOneSample(const CString& photometric) {
    constexpr std::array kOneSample = {"MONOCHROME1", "MONOCHROME2", "PALETTE COLOR"};
    return std::ranges::any_of(kOneSample,
                               [&](const char* name) { return photometric.Find(name) >= 0; });
}

/// Pages, or null where the system has none.
unsigned char* TryTakePages(std::size_t size) noexcept {
    return Contain(static_cast<unsigned char*>(nullptr), [&] { return TakePages(size); });
}

/// Frame sizes and the colour path go by Samples per Pixel, so it must never contradict the colours.
void CorrectSamplesPerPixel(CDcmObject& header) {
    CString photometric;
    if (header.GetValue(tag::kPhotometricInterpretation, photometric, -1) != kDcmSuccess) return;
    const auto samples = static_cast<unsigned short>(HasOneSample(photometric) ? 1 : 3);
    header.SetValue(tag::kSamplesPerPixel, samples);
}

int Fail(const std::string& line) {
    WriteDebugLine(line);
    return 0;
}

}  // namespace

QUORVEX_MESSAGE CxDcmParser::Initialize(CDcmApp* newApp, CString path, int readWholeFile) {
    if (newApp == nullptr) {
        WriteDebugLine("QVM_ERROR_INVALID_DCMAPP error\n");
        return QVM_ERROR_INVALID_DCMAPP;
    }
    fileBuffer.reset();
    frameTable.reset();
    SetOwnHeader(nullptr);
    app = newApp;
    return Answer(QVM_ERROR_FAILED_TO_READ_FILE, [&] { return ReadAndParse(path, readWholeFile); });
}

QUORVEX_MESSAGE CxDcmParser::ReadAndParse(const CString& path, int readWholeFile) {
    if (ReadDicomFileToBuffer(path) == 0) return QVM_ERROR_FAILED_TO_READ_FILE;
    std::unique_ptr<CDcmObject> object;
    const int isParsed =
        isPart10 != 0
            ? ParseDicomHeaderOfPart10File(object, pixelDataOffset, path, readWholeFile)
            : ParseDicomHeaderOfNonPart10File(object, pixelDataOffset, path, readWholeFile);
    if (object) CorrectSamplesPerPixel(*object);
    SetOwnHeader(std::move(object));
    headerHoldsPixels = readWholeFile != 0;
    if (isParsed != 0) return QVM_SUCCESS;
    WriteDebugLine("QVM_ERROR_FAILED_TO_PARSE_DICOM error\n");
    return QVM_ERROR_FAILED_TO_PARSE_DICOM;
}

int CxDcmParser::ReadDicomFileToBuffer(const CString& path) {
    const FileReader file(path.ToUtf8());
    if (!file.IsOpen()) {
        return Fail("ReadDicomFileToBuffer file open error :" + std::to_string(file.Error()));
    }
    std::array<unsigned char, kMarkedBytes> start{};
    if (file.Size() <= kMarkedBytes || !file.Read(start)) {
        return Fail("ReadDicomFileToBuffer file size error\n");
    }
    if (IsMarked(start.data(), start.size())) {
        isPart10 = 1;
    } else if (start[0] == 0 && (start[1] == 8 || start[1] == 2)) {
        isPart10 = 0;
    }
    fileSize = file.Size();
    fileBuffer.reset(TryTakePages(fileSize));
    if (!fileBuffer) {
        WriteDebugLine("ReadDicomFileToBuffer VirtualAlloc error\n");
        throw std::bad_alloc();
    }
    if (file.Read({fileBuffer.get(), fileSize})) return 1;
    fileBuffer.reset();
    return Fail("ReadDicomFileToBuffer file size error\n");
}

int CxDcmParser::IsThisPart10File() const noexcept {
    return fileBuffer && IsMarked(fileBuffer.get(), fileSize) ? 1 : 0;
}

QUORVEX_MESSAGE CxDcmParser::Initialize(CDcmApp* newApp, CDcmObject* object,
                                        unsigned char* fileBytes, unsigned long size,
                                        unsigned long offset) {
    if (newApp == nullptr || object == nullptr) return QVM_ERROR_INVALID_DCMAPP;
    return Answer(QVM_ERROR_INVALID_DCMAPP, [&] {
        fileBuffer.reset();
        frameTable.reset();
        if (fileBytes != nullptr) {
            if (!TakeFileImage(fileBytes, size)) return QVM_ERROR_INVALID_DCMAPP;
            fileSize = size;
            pixelDataOffset = offset;
        }
        TakeCallersHeader(newApp, *object);
        return QVM_SUCCESS;
    });
}

bool CxDcmParser::TakeFileImage(const unsigned char* fileBytes, unsigned long size) {
    const auto kind = Classify(fileBytes, size);
    if (!kind) return false;
    fileBuffer.reset(TakePages(size));
    std::copy_n(fileBytes, size, fileBuffer.get());
    isPart10 = *kind;
    return true;
}

void CxDcmParser::TakeCallersHeader(CDcmApp* newApp, CDcmObject& object) {
    CorrectSamplesPerPixel(object);
    app = newApp;
    // GetHeader() of this very parser may come back in: that one stays its own.
    if (ownHeader.get() != &object) {
        ownHeader.reset();
        header = &object;
        ownsHeader = 0;
    }
    headerHoldsPixels = false;
}

}  // namespace quorvex
