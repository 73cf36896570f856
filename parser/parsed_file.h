/// What a parser holds: the header of an object, and where the bytes of its file are, if any.
#pragma once

#include "parser/source/stored_file.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace quorvex {

class FileWindow;

/// Where a Pixel Data value lies in a file.
struct PixelValue {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
    std::span<const unsigned char> start;  ///< its first bytes, at least four where it has those
};

class ParsedFile {
public:
    ParsedFile() = default;
    /// Deep: the copy owns its header, also where this one came from a caller. The file's bytes,
    /// which nobody changes, are shared.
    ParsedFile(const ParsedFile& other);
    ParsedFile& operator=(const ParsedFile& other) = delete;

    /// The three operations of that name of CxDcmParser.
    QUORVEX_MESSAGE Initialize(CDcmApp& newApp, const CString& path, int readWholeFile);
    QUORVEX_MESSAGE Initialize(CDcmApp& newApp, std::shared_ptr<FileSource> source,
                               int readWholeFile);
    QUORVEX_MESSAGE Initialize(CDcmApp& newApp, CDcmObject& object, const unsigned char* fileBytes,
                               unsigned long size, unsigned long offset);

    /// Null before the first file or object, and after a file that could not be read.
    [[nodiscard]] CDcmObject* GetHeader() const noexcept { return header; }
    /// 0 without a header, else Number of Frames, or 1 where that is absent.
    [[nodiscard]] int GetFrameCount() const;
    /// The file; not there where the parser works from an object alone.
    [[nodiscard]] const StoredFile& File() const noexcept { return file; }
    /// Whether frames come from the file; else they come from the header, which holds Pixel Data.
    [[nodiscard]] bool FramesLieInFile(TRANSFER_SYNTAX syntax) const noexcept;
    /// The bytes from Pixel Data's value on: to the value's end where the element has a length, so
    /// that what follows a short value is no pixel, else to the end of the file. Empty where no
    /// Pixel Data begins; an offset that came with a caller's object is not checked.
    [[nodiscard]] PixelValue PixelDataValue(TRANSFER_SYNTAX syntax) const noexcept;

    /// What the frames are made of: Pixel Data, where there is any.
    [[nodiscard]] SampleType GetSampleType() const;
    /// Where the value of an element lies in the file that is the last one ahead of where Pixel
    /// Data would be; nothing where it lies somewhere else.
    [[nodiscard]] std::optional<std::size_t> OffsetOfLast(std::uint32_t tag) const;

    /// A SOP Instance UID under the root of this system, from machine, universal time, random
    /// number and frame events.
    [[nodiscard]] static CString GetNewSOPInstanceUID();

private:
    /// From the file; what fails leaves none.
    QUORVEX_MESSAGE ReadHeader(const CString& path, int readWholeFile);
    QUORVEX_MESSAGE Parse(FileReading& reading, const CString& path, int readWholeFile);

    // 1 for success, 0 for failure.
    int ReadDicomFileToBuffer(FileReading& reading, FileWindow& window, int readWholeFile);
    [[nodiscard]] int IsThisPart10File() const noexcept;
    int ParseDicomHeaderOfPart10File(std::unique_ptr<CDcmObject>& object, FileReading& reading,
                                     FileWindow& window, const CString& path, int readWholeFile);
    int ParseDicomHeaderOfNonPart10File(std::unique_ptr<CDcmObject>& object, FileReading& reading,
                                        FileWindow& window, const CString& path, int readWholeFile);

    /// False where it cannot be read. Throws std::bad_alloc.
    bool TakeWholeFile(FileReading& reading);
    void KeepInMemory(FileImage image, FileReading& reading);
    bool TakeFileImage(const unsigned char* fileBytes, unsigned long size);
    void KeepPixelDataStart(FileWindow& window);
    void SetOwnHeader(std::unique_ptr<CDcmObject> object) noexcept;
    void SetCallersHeader(CDcmObject& object) noexcept;

    std::int32_t isPart10 = 0;
    StoredFile file;
    unsigned long pixelDataOffset = 0;  ///< of the element's tag
    /// The element's header and the first bytes of its value, as many as there are.
    std::array<unsigned char, 64> pixelDataStart{};
    std::size_t pixelDataStartBytes = 0;
    CDcmObject* header = nullptr;
    CDcmApp* app = nullptr;
    std::int32_t ownsHeader = 1;
    std::unique_ptr<CDcmObject> ownHeader;
    bool headerHoldsPixels = false;
};

}  // namespace quorvex
