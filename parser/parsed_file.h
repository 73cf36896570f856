/// What a parser holds: the header of an object, and the bytes of its file where there are any.
#pragma once

#include "foundation/platform/pages.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace quorvex {

class ParsedFile {
public:
    ParsedFile() = default;
    /// Deep: the copy owns its header, also where this one came from a caller.
    ParsedFile(const ParsedFile& other);
    ParsedFile& operator=(const ParsedFile& other) = delete;

    /// The two operations of that name of CxDcmParser.
    QUORVEX_MESSAGE Initialize(CDcmApp& newApp, const CString& path, int readWholeFile);
    QUORVEX_MESSAGE Initialize(CDcmApp& newApp, CDcmObject& object, const unsigned char* fileBytes,
                               unsigned long size, unsigned long offset);

    /// Null before the first file or object, and after a file that could not be read.
    [[nodiscard]] CDcmObject* GetHeader() const noexcept { return header; }
    /// 0 without a header, else Number of Frames, or 1 where that is absent.
    [[nodiscard]] int GetFrameCount() const;
    /// The file, empty where the parser works from an object alone.
    [[nodiscard]] std::span<unsigned char> FileBytes() const noexcept {
        return {fileBuffer.get(), fileBuffer ? fileSize : 0};
    }
    /// Whether frames come from the file; else they come from the header, which holds Pixel Data.
    [[nodiscard]] bool FramesLieInFile(TRANSFER_SYNTAX syntax) const noexcept;
    /// The bytes from Pixel Data's value on: to the value's end where the element has a length, so
    /// that what follows a short value is no pixel, else to the end of the file. Empty where no
    /// Pixel Data begins; an offset that came with a caller's object is not checked.
    [[nodiscard]] std::span<unsigned char> PixelDataValue(TRANSFER_SYNTAX syntax) const noexcept;

    /// What the frames are made of: Pixel Data, where there is any.
    [[nodiscard]] SampleType GetSampleType() const;
    /// Where the value of an element lies in the file that is the last one ahead of where Pixel
    /// Data would be; nothing where it lies somewhere else.
    [[nodiscard]] std::optional<std::size_t> OffsetOfLast(std::uint32_t tag) const;

    /// A SOP Instance UID under the root of this system, from machine, universal time, random
    /// number and frame events.
    [[nodiscard]] static CString GetNewSOPInstanceUID();

private:
    struct GivePages {
        void operator()(unsigned char* block) const noexcept { PageAllocator::Give(block); }
    };
    using FileBuffer = std::unique_ptr<unsigned char[], GivePages>;

    // 1 for success, 0 for failure.
    int ReadDicomFileToBuffer(const CString& path);
    [[nodiscard]] int IsThisPart10File() const noexcept;
    int ParseDicomHeaderOfPart10File(std::unique_ptr<CDcmObject>& object, unsigned long& offset,
                                     const CString& path, int readWholeFile);
    int ParseDicomHeaderOfNonPart10File(std::unique_ptr<CDcmObject>& object, unsigned long& offset,
                                        const CString& path, int readWholeFile);

    /// False where there is no memory.
    bool TakeFileBuffer(std::size_t size);
    bool TakeFileImage(const unsigned char* fileBytes, unsigned long size);
    void SetOwnHeader(std::unique_ptr<CDcmObject> object) noexcept;
    void SetCallersHeader(CDcmObject& object) noexcept;

    std::int32_t isPart10 = 0;
    FileBuffer fileBuffer;
    unsigned long fileSize = 0;
    unsigned long pixelDataOffset = 0;  ///< of the element's tag
    CDcmObject* header = nullptr;
    CDcmApp* app = nullptr;
    std::int32_t ownsHeader = 1;
    std::unique_ptr<CDcmObject> ownHeader;
    bool headerHoldsPixels = false;
};

}  // namespace quorvex
