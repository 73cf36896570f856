#include "foundation/dicom/frames/value_reader.h"
#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/coded_pixels.h"
#include "foundation/dicom/object/native_pixels.h"
#include "foundation/dicom/reading/element_header.h"
#include "foundation/types/limits.h"
#include "parser/frames/frame_events.h"
#include "parser/frames/frame_fetch.h"
#include "parser/photometric.h"

#include <utility>

namespace quorvex {

/// By the standard rules, the header's photometric interpretation as the standard writes it.
QUORVEX_MESSAGE FrameFetch::TakeRules() {
    if (parser_.rules != Rules::kStandard || shape_.photometric.IsEmpty()) return QVM_SUCCESS;
    const auto photometric = UnderstoodPhotometric(shape_.photometric.View());
    if (!photometric) return QVM_ERROR_INVALID_PHOTOMETRIC;
    shape_.photometric = CString(photometric->name);
    return QVM_SUCCESS;
}

/// Whether there is such a frame; reads what the header says about it.
QUORVEX_MESSAGE FrameFetch::Check() {
    ShowFrameEvents(0);
    const CDcmObject* header = file_.GetHeader();
    if (header == nullptr) return QVM_ERROR_FAILED_TO_PARSE_DICOM;
    if (frameIndex_ < 0 || frameIndex_ >= file_.GetFrameCount())
        return QVM_ERROR_INVALID_FRAME_INDEX;
    if (frameIndex_ >= kMostFrames && !RefuseBy(Limit::kMostFrames))
        return QVM_ERROR_INVALID_FRAME_INDEX;
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    if (header->GetTransferSyntax(syntax) != kDcmSuccess) return QVM_ERROR_FAILED_TO_PARSE_DICOM;
    auto shape = ReadFrameShape(*header, syntax);
    if (!shape) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    shape_ = std::move(*shape);
    shape_.sampleType = file_.GetSampleType();
    return QVM_SUCCESS;
}

int FrameFetch::IsEncodedImage(std::span<const unsigned char> value, int littleEndian) noexcept {
    const bool isItem = value.size() >= sizeof(std::uint32_t) &&
                        dicom::LoadTag(value.data(), littleEndian == 0) == tag::kItem;
    return isItem ? 1 : 0;
}

bool FrameFetch::HasNativeFrame() const noexcept {
    return native_ && static_cast<std::size_t>(frameIndex_) < native_->Count();
}

/// Pixel Data's value in the file that is being read.
class FrameFetch::ValueInFile final : public dicom::ValueReader {
public:
    ValueInFile(FileReading& reading, const PixelValue& value) noexcept
        : reading_(reading), value_(value) {}
    [[nodiscard]] std::uint64_t Size() const noexcept override { return value_.bytes; }
    [[nodiscard]] bool Read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        return reading_.Read(value_.offset + offset, bytes);
    }

private:
    FileReading& reading_;
    const PixelValue& value_;
};

/// The bytes of the frame; nothing that was read while the file changed.
QUORVEX_MESSAGE FrameFetch::CollectFromFile() {
    FileReading reading(file_.File());
    const QUORVEX_MESSAGE located = LocateInFile(reading);
    if (located != QVM_SUCCESS) return located;
    const bool isRead = native_ ? ReadNative(reading) : coded_.Read(reading);
    return isRead && reading.IsSound() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

/// Where the frame lies in the file.
QUORVEX_MESSAGE FrameFetch::LocateInFile(FileReading& reading) {
    value_ = file_.PixelDataValue(shape_.syntax);
    if (!reading.IsOpen()) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    // Plain pixels may begin with the bytes of an item tag too.
    const auto isChain = IsChainOfItems(reading);
    if (!isChain) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    isEncoded_ = IsEncapsulated(shape_.syntax) ? IsEncodedImage(value_.start, 1) != 0 : *isChain;
    const auto frameBytes = isEncoded_ ? std::size_t{0} : shape_.NativeFrameBytes();
    if (!frameBytes) RefuseBy(Limit::kLargestBlock);
    if (value_.bytes == 0 || !frameBytes) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    if (isEncoded_) return LocateCoded(reading);
    if (*isChain) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    native_ = dicom::NativePixels::In(*file_.GetHeader(), value_.bytes, *frameBytes);
    ShowFrameEvents(HasNativeFrame() ? frameIndex_ + 1 : static_cast<int>(native_->Count()));
    return HasNativeFrame() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

/// Floats are native in every transfer syntax, and the header has been read with them.
QUORVEX_MESSAGE FrameFetch::CollectFloats() {
    if (!shape_.AreFloats()) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    native_ = dicom::NativePixels::Of(*file_.GetHeader(), shape_.FloatTag());
    isEncoded_ = false;
    shape_.syntax = kExplicitLittleEndian;
    return HasNativeFrame() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

/// Whether the value is nothing but items, which only one that begins with an item tag can be.
/// Nothing where that cannot be read.
std::optional<bool> FrameFetch::IsChainOfItems(FileReading& reading) const {
    if (IsEncodedImage(value_.start, 0) == 0 && IsEncodedImage(value_.start, 1) == 0) return false;
    // What is encapsulated by its syntax and begins with an item is taken for that as it is.
    if (IsEncapsulated(shape_.syntax) && IsEncodedImage(value_.start, 1) != 0) return true;
    ValueInFile value(reading, value_);
    return dicom::ScanForChain(value);
}

QUORVEX_MESSAGE FrameFetch::LocateCoded(FileReading& reading) {
    std::optional<FrameIndex> made;
    const FrameIndex* index = IndexOf(reading, made);
    if (index == nullptr) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    coded_.Find(*index);
    isGuessed_ = index->IsGuessed();
    return coded_.Length() != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

/// The one that is kept, or else a new one, which is kept in turn unless it is large; then it comes
/// in `made`. Null where the value cannot be read.
const FrameIndex* FrameFetch::IndexOf(FileReading& reading, std::optional<FrameIndex>& made) {
    const FrameIndex::Source source{value_.offset, value_.bytes,
                                    dicom::HintsOf(*file_.GetHeader())};
    auto& kept = parser_.frameIndex;
    if (kept && kept->IsFrom(source)) return kept.get();
    ValueInFile value(reading, value_);
    made = FrameIndex::Of(value, source);
    // Nothing that was read while the file changed is kept.
    if (!made || !reading.IsSound()) return nullptr;
    if (!made->IsSmall()) return &*made;
    kept = std::make_unique<FrameIndex>(std::move(*made));
    return kept.get();
}

/// Brings the stored bytes to hand, in memory or in a block of their own.
bool FrameFetch::ReadNative(FileReading& reading) {
    auto range = native_->StoredRange(static_cast<std::size_t>(frameIndex_));
    const std::size_t begin = range.offset;
    if (TakeRowsOnly(range)) {
        const auto rows = reading.Show(value_.offset + begin + range.offset, range.length, stored_);
        native_->ShowStored(0, rows);
        return rows.size() == range.length;
    }
    const auto bytes = reading.Show(value_.offset + range.offset, range.length, stored_);
    native_->ShowStored(range.offset, bytes);
    return bytes.size() == range.length;
}

QUORVEX_MESSAGE FrameFetch::CollectFromObject() {
    const CDcmObject& header = *file_.GetHeader();
    isEncoded_ = IsEncapsulated(shape_.syntax);
    native_ = dicom::NativePixels::Of(header);
    if (native_) return HasNativeFrame() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    const DCMRESULT result =
        header.GetValueEx(tag::kPixelData, &coded_, StoredFrame::CollectFromObject);
    isEncoded_ = isEncoded_ || coded_.HasOffsetTable();
    isGuessed_ = dicom::AreCodedFramesGuessed(header);
    const bool isCollected = result == kDcmSuccess && coded_.Length() != 0;
    return isCollected ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

}  // namespace quorvex
