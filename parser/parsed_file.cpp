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

}  // namespace quorvex
