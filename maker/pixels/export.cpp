#include "maker/pixels/export.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/object_state.h"
#include "maker/pixels/pixel_attributes.h"
#include "maker/pixels/pixel_data_writing.h"
#include "maker/pixels/pixel_draft.h"
#include "maker/pixels/plain_frames.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

/// Plain frames, one after the other, each gone before the next one comes.
class PlainFrames final : public PlainFrameSource {
public:
    PlainFrames(PixelDraft& draft, FrameSupply& supply) : draft_(draft), supply_(supply) {}
    ~PlainFrames() override { Drop(); }
    PlainFrames(const PlainFrames&) = delete;
    PlainFrames& operator=(const PlainFrames&) = delete;

    [[nodiscard]] bool AreAtEnd() const override { return next_ == supply_.Count(); }
    QUORVEX_MESSAGE Next(std::span<unsigned char>& bytes) override {
        Drop();
        auto result = supply_.Fetch(next_++, frame_);
        if (result == QVM_SUCCESS) result = ProcessObjectForExportAction(draft_, *frame_);
        if (result != QVM_SUCCESS) return result;
        if (frame_->processedData == nullptr) return QVM_ERROR_NULL_SOURCE;
        bytes = {frame_->processedData, frame_->processedLength};
        return QVM_SUCCESS;
    }

private:
    void Drop() noexcept {
        if (frame_ == nullptr) return;
        delete[] std::exchange(frame_->processedData, nullptr);
        frame_->processedLength = 0;
    }

    PixelDraft& draft_;
    FrameSupply& supply_;
    int next_ = 0;
    _DCM_FRAME_BUFFER* frame_ = nullptr;
};

/// Coded frames, one behind the other.
class CodedFrames {
public:
    explicit CodedFrames(const PixelDraft& draft) : layout_(draft.outgoing) {
        param_ = layout_.ProcessParam();
        param_.transferSyntax = kImplicitLittleEndian;
        param_.quality = draft.format.quality;
        param_.targetSyntax = draft.written->form;
        coder_.SetKeepsRgb(true);  // as Photometric Interpretation says
    }

    QUORVEX_MESSAGE Add(std::span<unsigned char> plain) {
        if (plain.size() != layout_.FrameBytes()) return QVM_ERROR_FAILED_TO_COMPRESS;
        unsigned char* coded = nullptr;
        unsigned long length = 0;
        const auto result =
            coder_.CompressFrameData(&param_, plain.data(), plain.size(), coded, length);
        const std::unique_ptr<unsigned char[]> block(coded);
        if (result != QVM_SUCCESS || coded == nullptr) return QVM_ERROR_FAILED_TO_COMPRESS;
        frames_.emplace_back(coded, coded + length);
        return QVM_SUCCESS;
    }
    QUORVEX_MESSAGE PutInto(CDcmObject& object) { return PutCodedFrames(frames_, object); }

private:
    const PixelLayout& layout_;
    _IMAGE_PROCESS_PARAM param_;
    CxImageProcessor coder_;
    std::vector<std::vector<unsigned char>> frames_;
};

QUORVEX_MESSAGE PutCoded(PixelDraft& draft, PlainFrames& frames) {
    CodedFrames coded(draft);
    while (!frames.AreAtEnd()) {
        std::span<unsigned char> plain;
        auto result = frames.Next(plain);
        if (result == QVM_SUCCESS) result = coded.Add(plain);
        if (result != QVM_SUCCESS) return result;
    }
    return coded.PutInto(draft.object);
}

bool IsPlain(const _DCM_PIXEL_INFO& format) {
    return format.transferSyntax == kImplicitLittleEndian ||
           format.transferSyntax == kExplicitLittleEndian;
}

void DescribeAsRgbBytes(_DCM_PIXEL_INFO& format) {
    format.photometricInterpretation = "RGB";
    format.samplesPerPixel = 3;
    format.bitsAllocated = 8;
    format.bitsStored = 8;
    format.highBit = 7;
    format.planarConfiguration = 0;
}

/// Describes the frames as they are after decoding, their palettes expanded.
void DescribeOutgoing(PixelDraft& draft, bool holdsBitmaps) {
    constexpr unsigned kBitmapBits = 32;
    const PixelLayout& in = draft.incoming;
    if (holdsBitmaps && in.bitsAllocated * in.samplesPerPixel == kBitmapBits)
        draft.format.samplesPerPixel = 3;
    if (IsPlain(draft.format) && in.IsPalette()) DescribeAsRgbBytes(draft.format);
}

/// Everything else is written by the standard rules only.
bool IsWrittenByEstablished(const TransferSyntax* syntax) {
    if (syntax == nullptr || syntax->isDeflated) return false;
    return syntax->coding == FrameCoding::kNative || syntax->coding == FrameCoding::kJpeg ||
           syntax->coding == FrameCoding::kJpeg2000;
}

QUORVEX_MESSAGE Describe(PixelDraft& draft, const FrameSupply& frames) {
    if (draft.format.compressionType == 0) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    auto result = ResolveLayout(draft.format, draft.object, draft.incoming);
    if (result != QVM_SUCCESS) return result;
    DescribeOutgoing(draft, frames.HoldsBitmaps());
    result = ResolveLayout(draft.format, draft.object, draft.outgoing);
    if (result != QVM_SUCCESS) return result;
    draft.written = TransferSyntaxOf(static_cast<QUORVEX_XFERSYNTAX>(draft.format.compressionType));
    return IsWrittenByEstablished(draft.written) ? QVM_SUCCESS : QVM_ERROR_INVALID_TRANSFER_SYNTAX;
}

/// Writes attributes and Pixel Data into the draft's object.
QUORVEX_MESSAGE CreateDICOMExportObject(PixelDraft& draft, FrameSupply& supply) {
    if (draft.object.SetTransferSyntax(draft.written->number) != kDcmSuccess)
        return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    auto result = WritePixelAttributes(draft.format, draft.outgoing, supply.Count(), draft.object);
    if (result != QVM_SUCCESS) return result;
    PlainFrames frames(draft, supply);
    constexpr std::uint16_t kBitsOfAByte = 8;
    const bool areWords = draft.format.bitsStored > kBitsOfAByte;
    result = draft.written->isEncapsulated ? PutCoded(draft, frames)
                                           : PutNativeFrames(frames, areWords, draft.object);
    if (result == QVM_SUCCESS) WriteCodingAttributes(draft.format, *draft.written, draft.object);
    return result;
}

}  // namespace

QUORVEX_MESSAGE MakeEstablishedPixels(const _DCM_PIXEL_INFO& format, FrameSupply& frames,
                                      const CDcmObject& palette, CDcmObject& target) {
    PixelDraft draft(format, palette, target);
    auto result = Describe(draft, frames);
    if (result == QVM_SUCCESS) result = CreateDICOMExportObject(draft, frames);
    // The content alone: a name that is copied could fail between the two.
    if (result == QVM_SUCCESS)
        ObjectState::Of(target).Adopt(ObjectState::Of(draft.object).SharedContent());
    return result;
}

}  // namespace quorvex
