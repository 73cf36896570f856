#include "parser/parsed_file.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/reading/element_header.h"
#include "parser/source/file_window.h"

#include <algorithm>

namespace quorvex {

ParsedFile::ParsedFile(const ParsedFile& other)
    : isPart10(other.isPart10),
      file(other.file),
      pixelDataOffset(other.pixelDataOffset),
      pixelDataStart(other.pixelDataStart),
      pixelDataStartBytes(other.pixelDataStartBytes),
      app(other.app),
      headerHoldsPixels(other.headerHoldsPixels) {
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
    return file.IsThere() && !headerHoldsPixels && syntax != kDeflatedExplicitLittleEndian;
}

PixelValue ParsedFile::PixelDataValue(TRANSFER_SYNTAX syntax) const noexcept {
    const bool isBigEndian = IsBigEndian(syntax);
    const std::size_t headerBytes = header->PixelDataHeaderLength();
    const auto element = std::span(pixelDataStart).first(pixelDataStartBytes);
    if (headerBytes > element.size()) return {};
    const PixelValue rest = {.offset = pixelDataOffset + headerBytes,
                             .bytes = file.Size() - pixelDataOffset - headerBytes,
                             .start = element.subspan(headerBytes)};
    if (dicom::LoadTag(element.data(), isBigEndian) != tag::kPixelData)
        return ownsHeader != 0 ? PixelValue{} : rest;
    const auto* const lengthBytes = rest.start.data() - sizeof(std::uint32_t);
    const auto length = dicom::Load<std::uint32_t>(lengthBytes, isBigEndian);
    if (length == dicom::kUndefinedLength || length == 0) return rest;
    PixelValue value = rest;
    value.bytes = std::min<std::uint64_t>(rest.bytes, length);
    value.start = rest.start.first(std::min<std::uint64_t>(rest.start.size(), length));
    return value;
}

void ParsedFile::KeepPixelDataStart(FileWindow& window) {
    pixelDataStartBytes = 0;
    if (pixelDataOffset >= file.Size()) return;
    const auto start = std::span(pixelDataStart)
                           .first(std::min(pixelDataStart.size(), file.Size() - pixelDataOffset));
    if (window.Copy(pixelDataOffset, start)) pixelDataStartBytes = start.size();
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
        has(tag::kPixelData) || (FramesLieInFile(syntax) && PixelDataValue(syntax).bytes != 0);
    if (hasIntegers) return SampleType::kInteger;
    return isFloat ? SampleType::kFloat32 : SampleType::kFloat64;
}

std::optional<std::size_t> ParsedFile::OffsetOfLast(std::uint32_t tag) const {
    unsigned long length = 0;
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    const bool isThere = header->GetValueLength(tag, 1, length) == kDcmSuccess &&
                         header->GetTransferSyntax(syntax) == kDcmSuccess &&
                         FramesLieInFile(syntax);
    if (!isThere || pixelDataOffset > file.Size() || length > pixelDataOffset) return std::nullopt;
    const std::size_t offset = pixelDataOffset - length;
    FileReading reading(file);
    for (const std::size_t headerBytes : {dicom::kLongHeader, dicom::kShortHeader}) {
        if (headerBytes > offset) continue;
        std::array<unsigned char, sizeof(std::uint32_t)> start{};
        const bool isRead = reading.Read(offset - headerBytes, start) && reading.IsSound();
        if (isRead && dicom::LoadTag(start.data(), IsBigEndian(syntax)) == tag) return offset;
    }
    return std::nullopt;
}

}  // namespace quorvex
