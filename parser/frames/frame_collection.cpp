#include "foundation/dicom/frames/encapsulated_items.h"
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

QUORVEX_MESSAGE FrameFetch::CollectFromFile() {
    const auto value = file_.PixelDataValue(shape_.syntax);
    // Plain pixels may begin with the bytes of an item tag too.
    isEncoded_ = IsEncapsulated(shape_.syntax) ? IsEncodedImage(value, 1) != 0
                                               : dicom::IsChainOfItems(value);
    const auto frameBytes = isEncoded_ ? std::size_t{0} : shape_.NativeFrameBytes();
    if (!frameBytes) RefuseBy(Limit::kLargestBlock);
    if (value.empty() || !frameBytes) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    if (isEncoded_) return CollectCoded(value);
    native_ = dicom::NativePixels::In(*file_.GetHeader(), value, *frameBytes);
    if (!native_) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
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

QUORVEX_MESSAGE FrameFetch::CollectCoded(std::span<unsigned char> value) {
    bool isWalked = true;
    if (const FrameIndex* index = IndexOf(value)) {
        coded_.TakeFrom(*index);
        isGuessed_ = index->IsGuessed();
    } else {
        isGuessed_ = dicom::AreCodedFramesGuessed(*file_.GetHeader(), value);
        const DCMRESULT result = file_.GetHeader()->GetValueEx(
            nullptr, value.size(), value.data(), 1, 0, 0, &coded_, StoredFrame::CollectFromBuffer);
        isWalked = result == kDcmSuccess || coded_.IsWhole();
    }
    return isWalked && coded_.Length() != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

/// Null where nothing is gained by an index, or where it would be too large. Extended offsets may
/// change in the header from fetch to fetch, so they go without.
const FrameIndex* FrameFetch::IndexOf(std::span<unsigned char> value) {
    const CDcmObject& header = *file_.GetHeader();
    const FrameIndex::Source source{value.data(), value.size(), file_.GetFrameCount(),
                                    shape_.syntax};
    int extendedOffsets = 0;
    if (source.frameCount <= 1 ||
        header.GetValueCount(tag::kExtendedOffsetTable, extendedOffsets) == kDcmSuccess) {
        return nullptr;
    }
    auto& kept = parser_.frameIndex;
    if (kept == nullptr || !kept->IsFrom(source)) {
        // Kept when it is whole: what is thrown in the middle leaves none behind.
        auto made =
            std::make_unique<FrameIndex>(source, dicom::AreCodedFramesGuessed(header, value));
        const DCMRESULT result = header.GetValueEx(nullptr, value.size(), value.data(), 1, 0, 0,
                                                   made.get(), FrameIndex::Collect);
        made->Close(result == kDcmSuccess);
        kept = std::move(made);
    }
    return kept->IsUsable() ? kept.get() : nullptr;
}

QUORVEX_MESSAGE FrameFetch::CollectFromObject() {
    const CDcmObject& header = *file_.GetHeader();
    isEncoded_ = IsEncapsulated(shape_.syntax);
    native_ = dicom::NativePixels::Of(header);
    if (native_) return HasNativeFrame() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    const DCMRESULT result =
        header.GetValueEx(tag::kPixelData, &coded_, StoredFrame::CollectFromObject);
    isEncoded_ = isEncoded_ || coded_.HasOffsetTable();
    isGuessed_ = dicom::AreCodedFramesGuessed(header, {});
    const bool isCollected = result == kDcmSuccess && coded_.Length() != 0;
    return isCollected ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
}

}  // namespace quorvex
