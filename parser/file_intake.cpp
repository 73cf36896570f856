#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/platform/diagnostics.h"
#include "foundation/types/answer.h"
#include "foundation/types/undo.h"
#include "parser/parsed_file.h"
#include "parser/photometric.h"
#include "parser/source/file_window.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace quorvex {
namespace {

/// Whether memory that a caller hands over begins like a bare data set, little endian.
bool BeginsWithKnownGroup(std::span<const unsigned char> bytes) noexcept {
    if (bytes.size() < 2) return false;
    const std::uint32_t group = dicom::Load<std::uint16_t>(bytes.data(), false);
    return group == dicom::kMetaGroup || group == dicom::kFirstGroup;
}

bool HasOneSample(const CString& photometric) {
    constexpr std::array kOneSample = {"MONOCHROME1", "MONOCHROME2", "PALETTE COLOR"};
    return std::ranges::any_of(kOneSample,
                               [&](const char* name) { return photometric.Find(name) >= 0; });
}

/// Frame sizes and the colour path go by Samples per Pixel, so it must agree with the colours.
void CorrectSamplesPerPixel(CDcmObject& header) {
    const auto photometric = Read<CString>(header, tag::kPhotometricInterpretation);
    if (!photometric || KeepsInks(header)) return;
    const auto samples = static_cast<unsigned short>(HasOneSample(*photometric) ? 1 : 3);
    header.SetValue(tag::kSamplesPerPixel, samples);
}

int Fail(const std::string& line) {
    WriteDebugLine(line);
    return 0;
}

}  // namespace

QUORVEX_MESSAGE ParsedFile::Initialize(CDcmApp& newApp, const CString& path, int readWholeFile) {
    file = {};
    SetOwnHeader(nullptr);
    app = &newApp;
    file = StoredFile::At(path.ToUtf8());
    return ReadHeader(path, readWholeFile);
}

QUORVEX_MESSAGE ParsedFile::Initialize(CDcmApp& newApp, std::shared_ptr<FileSource> source,
                                       int readWholeFile) {
    file = {};
    SetOwnHeader(nullptr);
    app = &newApp;
    file = StoredFile::From(std::move(source));
    return ReadHeader({}, readWholeFile);
}

QUORVEX_MESSAGE ParsedFile::ReadHeader(const CString& path, int readWholeFile) {
    UndoUnlessKept forget([&] {
        file = {};
        SetOwnHeader(nullptr);
    });
    FileReading reading(file);
    const QUORVEX_MESSAGE result = Parse(reading, path, readWholeFile);
    if (result == QVM_ERROR_FAILED_TO_READ_FILE || !reading.IsSound())
        return QVM_ERROR_FAILED_TO_READ_FILE;
    forget.Keep();
    if (result == QVM_ERROR_FAILED_TO_PARSE_DICOM)
        WriteDebugLine("QVM_ERROR_FAILED_TO_PARSE_DICOM error\n");
    return result;
}

QUORVEX_MESSAGE ParsedFile::Parse(FileReading& reading, const CString& path, int readWholeFile) {
    FileWindow window(reading);
    if (ReadDicomFileToBuffer(reading, window, readWholeFile) == 0)
        return QVM_ERROR_FAILED_TO_READ_FILE;
    std::unique_ptr<CDcmObject> object;
    const int isParsed =
        isPart10 != 0
            ? ParseDicomHeaderOfPart10File(object, reading, window, path, readWholeFile)
            : ParseDicomHeaderOfNonPart10File(object, reading, window, path, readWholeFile);
    if (object) CorrectSamplesPerPixel(*object);
    SetOwnHeader(std::move(object));
    headerHoldsPixels = readWholeFile != 0;
    KeepPixelDataStart(window);
    return isParsed != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_PARSE_DICOM;
}

/// A file that is small, or is wanted whole, goes into memory; of any other its first bytes are
/// looked at.
int ParsedFile::ReadDicomFileToBuffer(FileReading& reading, FileWindow& window, int readWholeFile) {
    if (!reading.IsOpen())
        return Fail("ReadDicomFileToBuffer file open error :" + std::to_string(reading.Error()));
    if (reading.Size() <= dicom::kPart10Start)
        return Fail("ReadDicomFileToBuffer file size error\n");
    const bool isWhole = readWholeFile != 0 && reading.Size() > FileWindow::kSmallFile;
    if (isWhole && !TakeWholeFile(reading)) return Fail("ReadDicomFileToBuffer file size error\n");
    const auto start = window.Look(0, dicom::kPart10Start);
    if (start.empty()) return Fail("ReadDicomFileToBuffer file size error\n");
    if (dicom::HasPart10Marker(start)) {
        isPart10 = 1;
    } else if (start[0] == 0 && (start[1] == 8 || start[1] == 2)) {
        isPart10 = 0;
    }
    if (HeapBlock whole = window.TakeWhole(); whole && reading.IsSound())
        KeepInMemory(FileImage(std::move(whole)), reading);
    return 1;
}

bool ParsedFile::TakeWholeFile(FileReading& reading) {
    if (!file.InMemory().empty()) return true;
    auto pages = Contain(std::optional<PageBlock>(),
                         [&] { return std::optional<PageBlock>(reading.Size()); });
    if (!pages) {
        WriteDebugLine("ReadDicomFileToBuffer VirtualAlloc error\n");
        throw std::bad_alloc();
    }
    if (!reading.Read(0, pages->Bytes()) || !reading.IsSound()) return false;
    KeepInMemory(FileImage(std::move(*pages)), reading);
    return true;
}

void ParsedFile::KeepInMemory(FileImage image, FileReading& reading) {
    file.KeepInMemory(std::move(image));
    reading.TurnTo(file);
}

int ParsedFile::IsThisPart10File() const noexcept {
    return dicom::HasPart10Marker(file.InMemory()) ? 1 : 0;
}

QUORVEX_MESSAGE ParsedFile::Initialize(CDcmApp& newApp, CDcmObject& object,
                                       const unsigned char* fileBytes, unsigned long size,
                                       unsigned long offset) {
    file = {};
    if (fileBytes != nullptr) {
        if (!TakeFileImage(fileBytes, size)) return QVM_ERROR_INVALID_DCMAPP;
        pixelDataOffset = offset;
        FileReading reading(std::as_const(file));
        FileWindow window(reading);
        KeepPixelDataStart(window);
    }
    CorrectSamplesPerPixel(object);
    app = &newApp;
    SetCallersHeader(object);
    headerHoldsPixels = false;
    return QVM_SUCCESS;
}

bool ParsedFile::TakeFileImage(const unsigned char* fileBytes, unsigned long size) {
    PageBlock pages(size);
    std::copy_n(fileBytes, size, pages.Data());
    file = StoredFile::In(FileImage(std::move(pages)));
    if (IsThisPart10File() != 0) {
        isPart10 = 1;
    } else if (BeginsWithKnownGroup(file.InMemory())) {
        isPart10 = 0;
    } else {
        file = {};
        return false;
    }
    return true;
}

}  // namespace quorvex
