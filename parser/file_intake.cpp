#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/platform/diagnostics.h"
#include "foundation/platform/file_reader.h"
#include "foundation/types/answer.h"
#include "parser/parsed_file.h"
#include "parser/photometric.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>

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
    fileBuffer.reset();
    SetOwnHeader(nullptr);
    app = &newApp;
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

int ParsedFile::ReadDicomFileToBuffer(const CString& path) {
    const FileReader file(path.ToUtf8());
    if (!file.IsOpen()) {
        return Fail("ReadDicomFileToBuffer file open error :" + std::to_string(file.Error()));
    }
    std::array<unsigned char, dicom::kPart10Start> start{};
    if (file.Size() <= dicom::kPart10Start || !file.Read(start)) {
        return Fail("ReadDicomFileToBuffer file size error\n");
    }
    if (dicom::HasPart10Marker(start)) {
        isPart10 = 1;
    } else if (start[0] == 0 && (start[1] == 8 || start[1] == 2)) {
        isPart10 = 0;
    }
    fileSize = file.Size();
    if (!TakeFileBuffer(fileSize)) {
        WriteDebugLine("ReadDicomFileToBuffer VirtualAlloc error\n");
        throw std::bad_alloc();
    }
    if (file.Read(FileBytes())) return 1;
    fileBuffer.reset();
    return Fail("ReadDicomFileToBuffer file size error\n");
}

bool ParsedFile::TakeFileBuffer(std::size_t size) {
    return Contain(false, [&] {
        fileBuffer.reset(TakePages(size));
        return true;
    });
}

int ParsedFile::IsThisPart10File() const noexcept {
    return dicom::HasPart10Marker(FileBytes()) ? 1 : 0;
}

QUORVEX_MESSAGE ParsedFile::Initialize(CDcmApp& newApp, CDcmObject& object,
                                       const unsigned char* fileBytes, unsigned long size,
                                       unsigned long offset) {
    fileBuffer.reset();
    if (fileBytes != nullptr) {
        if (!TakeFileImage(fileBytes, size)) return QVM_ERROR_INVALID_DCMAPP;
        pixelDataOffset = offset;
    }
    CorrectSamplesPerPixel(object);
    app = &newApp;
    SetCallersHeader(object);
    headerHoldsPixels = false;
    return QVM_SUCCESS;
}

bool ParsedFile::TakeFileImage(const unsigned char* fileBytes, unsigned long size) {
    fileBuffer.reset(TakePages(size));
    fileSize = size;
    std::copy_n(fileBytes, size, fileBuffer.get());
    if (IsThisPart10File() != 0) {
        isPart10 = 1;
    } else if (BeginsWithKnownGroup(FileBytes())) {
        isPart10 = 0;
    } else {
        fileBuffer.reset();
        return false;
    }
    return true;
}

}  // namespace quorvex
