#include "parser/parsed_file.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/reading/element_header.h"

#include <algorithm>

namespace quorvex {

ParsedFile::ParsedFile(const ParsedFile& other)
    : isPart10(other.isPart10),
      fileSize(other.fileSize),
      pixelDataOffset(other.pixelDataOffset),
      app(other.app),
      headerHoldsPixels(other.headerHoldsPixels) {
    if (other.fileBuffer) {
        fileBuffer.reset(TakePages(fileSize));
        std::copy_n(other.fileBuffer.get(), fileSize, fileBuffer.get());
    }
    if (other.header != nullptr) SetOwnHeader(std::make_unique<CDcmObject>(*other.header));
}

void ParsedFile::SetOwnHeader(std::unique_ptr<CDcmObject> object) noexcept {
    ownHeader = std::move(object);
    header = ownHeader.get();
    ownsHeader = 1;
}

void ParsedFile::SetCallersHeader(CDcmObject& object) noexcept {
    // GetHeader() of this very parser may come back in: that one stays its own.
    if (ownHeader.get() == &object) return;
    ownHeader.reset();
    header = &object;
    ownsHeader = 0;
}

int ParsedFile::GetFrameCount() const {
    return header == nullptr ? 0 : Read<int>(*header, tag::kNumberOfFrames).value_or(1);
}

bool ParsedFile::FramesLieInFile(TRANSFER_SYNTAX syntax) const noexcept {
    return fileBuffer && !headerHoldsPixels && syntax != kDeflatedExplicitLittleEndian;
}

std::span<unsigned char> ParsedFile::PixelDataValue(TRANSFER_SYNTAX syntax) const noexcept {
    const bool isBigEndian = IsBigEndian(syntax);
    const std::size_t headerBytes = header->PixelDataHeaderLength();
    if (pixelDataOffset > fileSize || headerBytes > fileSize - pixelDataOffset) return {};
    const auto element = FileBytes().subspan(pixelDataOffset);
    const auto value = element.subspan(headerBytes);
    if (dicom::LoadTag(element.data(), isBigEndian) != tag::kPixelData) {
        return ownsHeader != 0 ? std::span<unsigned char>{} : value;
    }
    const auto* const lengthBytes = value.data() - sizeof(std::uint32_t);
    const auto length = dicom::Load<std::uint32_t>(lengthBytes, isBigEndian);
    if (length == dicom::kUndefinedLength || length == 0) return value;
    return value.first(std::min<std::size_t>(value.size(), length));
}

SampleType ParsedFile::GetSampleType() const {
    if (header == nullptr) return SampleType::kInteger;
    const auto has = [&](std::uint32_t tag) {
        int count = 0;
        return header->GetValueCount(tag, count) == kDcmSuccess;
    };
    const bool isFloat = has(tag::kFloatPixelData);
    if (!isFloat && !has(tag::kDoubleFloatPixelData)) return SampleType::kInteger;
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    header->GetTransferSyntax(syntax);
    const bool hasIntegers =
        has(tag::kPixelData) || (FramesLieInFile(syntax) && !PixelDataValue(syntax).empty());
    if (hasIntegers) return SampleType::kInteger;
    return isFloat ? SampleType::kFloat32 : SampleType::kFloat64;
}

std::optional<std::size_t> ParsedFile::OffsetOfLast(std::uint32_t tag) const {
    unsigned long length = 0;
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    const bool isThere = header->GetValueLength(tag, 1, length) == kDcmSuccess &&
                         header->GetTransferSyntax(syntax) == kDcmSuccess &&
                         FramesLieInFile(syntax);
    if (!isThere || pixelDataOffset > fileSize || length > pixelDataOffset) return std::nullopt;
    const std::size_t offset = pixelDataOffset - length;
    for (const std::size_t headerBytes : {dicom::kLongHeader, dicom::kShortHeader}) {
        if (headerBytes > offset) continue;
        const auto* const begin = FileBytes().data() + offset - headerBytes;
        if (dicom::LoadTag(begin, IsBigEndian(syntax)) == tag) return offset;
    }
    return std::nullopt;
}

}  // namespace quorvex
