#include "foundation/dicom/frames/encapsulated_items.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/limits.h"
#include "parser/frames/frame_index.h"
#include "parser/frames/frame_shape.h"
#include "parser/frames/stored_frame.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace quorvex {
namespace {

constexpr std::size_t kTagBytes = 4;
constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

using Bytes = std::span<const unsigned char>;

std::uint32_t ReadHalf(Bytes bytes, bool isBigEndian) noexcept {
    return isBigEndian ? bytes[0] * 256U + bytes[1] : bytes[1] * 256U + bytes[0];
}

std::uint32_t ReadTag(Bytes bytes, bool isBigEndian) noexcept {
    return ReadHalf(bytes, isBigEndian) << 16 | ReadHalf(bytes.subspan(2), isBigEndian);
}

std::uint32_t ReadLength(Bytes bytes, bool isBigEndian) noexcept {
    const std::uint32_t low = ReadHalf(isBigEndian ? bytes.subspan(2) : bytes, isBigEndian);
    const std::uint32_t high = ReadHalf(isBigEndian ? bytes : bytes.subspan(2), isBigEndian);
    return high << 16 | low;
}

/// The six words that a walk hands to its callback.
std::array<void*, 6> UserRecord(CDcmObject* header, void* context) noexcept {
    return {nullptr, nullptr, header, nullptr, nullptr, context};
}

}  // namespace

bool CxDcmParser::FramesLieInFile(TRANSFER_SYNTAX syntax) const noexcept {
    return fileBuffer && !headerHoldsPixels && syntax != kDeflatedExplicitLittleEndian;
}

int CxDcmParser::IsEncodedImage(std::span<const unsigned char> value, int littleEndian) noexcept {
    return value.size() >= kTagBytes && ReadTag(value, littleEndian == 0) == tag::kItem ? 1 : 0;
}

/// The bytes from Pixel Data's value on: to the value's end where the element tells it, so that what
/// follows a short value is no pixel, else to the end of the file. Empty where no Pixel Data begins;
/// an offset that came with a caller's object is taken at its word.
std::span<unsigned char> CxDcmParser::PixelDataValue(TRANSFER_SYNTAX syntax) const noexcept {
    const bool isBigEndian = IsBigEndian(syntax);
    const std::size_t headerBytes = header->PixelDataHeaderLength();
    if (pixelDataOffset > fileSize || headerBytes > fileSize - pixelDataOffset) return {};
    const auto element = std::span(fileBuffer.get(), fileSize).subspan(pixelDataOffset);
    const auto value = element.subspan(headerBytes);
    if (ReadTag(element, isBigEndian) != tag::kPixelData) {
        return ownsHeader != 0 ? std::span<unsigned char>{} : value;
    }
    const auto length = ReadLength(element.subspan(headerBytes - 4), isBigEndian);
    const bool isTold = length != kUndefinedLength && length != 0;
    return isTold ? value.first(std::min<std::size_t>(value.size(), length)) : value;
}

/// Null where nothing is gained by an index, or where it would be too large. Extended offsets may
/// change in the header from fetch to fetch, so they go without.
const FrameIndex* CxDcmParser::IndexOf(std::span<unsigned char> value, TRANSFER_SYNTAX syntax,
                                       std::size_t frameBytes) const {
    const FrameIndex::Source source{value.data(), value.size(), frameBytes, GetFrameCount(),
                                    syntax};
    int extendedOffsets = 0;
    if (source.frameCount <= 1 ||
        header->GetValueCount(tag::kExtendedOffsetTable, extendedOffsets) == kDcmSuccess) {
        return nullptr;
    }
    if (frameTable == nullptr || !frameTable->IsFrom(source)) {
        // Kept when it is whole: what is thrown in the middle leaves none behind.
        auto made = std::make_shared<FrameIndex>(source);
        auto record = UserRecord(header, made.get());
        unsigned char* scratch = nullptr;
        const DCMRESULT result = header->GetValueEx(&scratch, value.size(), value.data(), 1, 0,
                                                    frameBytes, record.data(), FrameIndex::Collect);
        const std::unique_ptr<unsigned char[]> owner(scratch);
        made->Close(result == kDcmSuccess);
        frameTable = std::move(made);
    }
    return frameTable->IsUsable() ? frameTable.get() : nullptr;
}

QUORVEX_MESSAGE CxDcmParser::CollectFromFile(const FrameShape& shape, StoredFrame& frame) const {
    const auto value = PixelDataValue(shape.syntax);
    // Plain pixels may begin with the bytes of an item tag too.
    frame.isEncoded =
        IsEncapsulated(shape.syntax) ? IsEncodedImage(value, 1) != 0 : dicom::IsChainOfItems(value);
    const auto frameBytes = frame.isEncoded ? std::size_t{0} : shape.NativeFrameBytes();
    if (!frameBytes) RefuseBy(Limit::kLargestBlock);
    if (value.empty() || !frameBytes) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    if (const FrameIndex* index = IndexOf(value, shape.syntax, *frameBytes)) {
        frame.TakeFrom(*index);
        return frame.Length() != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    }
    auto record = UserRecord(header, &frame);
    const DCMRESULT result =
        header->GetValueEx(&frame.scratch.block, value.size(), value.data(), 1, 0, *frameBytes,
                           record.data(), StoredFrame::CollectFromBuffer);
    const bool isWalked = result == kDcmSuccess || frame.IsWhole();
    return isWalked && frame.Length() != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

QUORVEX_MESSAGE CxDcmParser::CollectFromObject(const FrameShape& shape, StoredFrame& frame) const {
    frame.isEncoded = IsEncapsulated(shape.syntax);
    auto record = UserRecord(header, &frame);
    const DCMRESULT result =
        header->GetValueEx(tag::kPixelData, record.data(), StoredFrame::CollectFromObject);
    return result == kDcmSuccess && frame.Length() != 0 ? QVM_SUCCESS
                                                        : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

}  // namespace quorvex
