#include "maker/recoding/recoding.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/limits.h"
#include "maker/pixels/pixel_data_writing.h"
#include "maker/recoding/jpeg_streams.h"
#include "maker/recoding/nested_pixels.h"
#include "maker/recoding/recoding_steps.h"
#include "maker/recoding/single_bits.h"

#include <memory>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

MC_STATUS CountBytes(int, std::uint32_t, void* user, int, unsigned long length, unsigned char*, int,
                     int) {
    *static_cast<std::size_t*>(user) += length;
    return kMcContinue;
}

std::size_t StoredBytes(const CDcmObject& object) {
    std::size_t stored = 0;
    object.GetValueEx(tag::kPixelData, &stored, CountBytes);
    return stored;
}

/// Frames as they are stored, one after the other.
class StoredFrames final : public PlainFrameSource {
public:
    StoredFrames(CxDcmParser& parser, std::size_t frameBytes, const ConversionProgress& progress)
        : parser_(parser),
          frameBytes_(frameBytes),
          progress_(progress),
          count_(parser.GetFrameCount()) {}

    [[nodiscard]] bool AreAtEnd() const override { return next_ == count_; }
    QUORVEX_MESSAGE Next(std::span<unsigned char>& bytes) override {
        unsigned long size = 0;
        const auto result = FetchStoredFrame(parser_, next_++, frameBytes_, frame_, size);
        if (result != QVM_SUCCESS) return result;
        bytes = {frame_.get(), size};
        return progress_.Report(next_, count_);
    }

private:
    CxDcmParser& parser_;
    std::size_t frameBytes_;
    const ConversionProgress& progress_;
    int count_;
    int next_ = 0;
    std::unique_ptr<unsigned char[]> frame_;
};

QUORVEX_MESSAGE PutPlain(const RecodingPlan& plan, StoredFrames& frames, CDcmObject& target) {
    if (plan.forms.bitsAllocated != 1)
        return PutNativeFrames(frames, plan.forms.bitsAllocated > 8, target);
    BitFrames bits(frames);
    return PutNativeFrames(bits, false, target);
}

QUORVEX_MESSAGE CodeAll(const RecodingPlan& plan, StoredFrames& frames, CDcmObject& target,
                        std::size_t& codedBytes) {
    std::vector<std::vector<unsigned char>> coded;
    while (!frames.AreAtEnd()) {
        std::span<unsigned char> frame;
        auto result = frames.Next(frame);
        std::vector<unsigned char> one;
        if (result == QVM_SUCCESS) result = CodeOne(plan, frame, one);
        if (result != QVM_SUCCESS) return result;
        codedBytes += one.size();
        coded.push_back(std::move(one));
    }
    return PutCodedFrames(coded, target);
}

}  // namespace

QUORVEX_MESSAGE RecodeByStandard(CxDcmParser& parser, TRANSFER_SYNTAX from,
                                 const RecodingWish& wish, CDcmObject& target) {
    if (KeepsJpegStreams(wish.form)) return KeepJpegStreams(parser, from, wish, target);
    RecodingPlan plan;
    auto result = PlanRecoding(*parser.GetHeader(), from, wish, plan);
    if (result != QVM_SUCCESS) return result;
    if (!plan.keepsFrames || !plan.to->isEncapsulated) {
        if (target.SetTransferSyntax(plan.to->number) != kDcmSuccess)
            return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    }
    if (plan.keepsFrames) return QVM_FRAME_COPIED;
    const int count = parser.GetFrameCount();
    if (count < 1 || (count > kMostFrames && !RefuseBy(Limit::kMostFrames)))
        return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const std::size_t plainBytes = plan.frameBytes * static_cast<std::size_t>(count);
    const std::size_t storedBytes = StoredBytes(*parser.GetHeader());
    if (plan.from->isEncapsulated && !IsPlausible(plainBytes, storedBytes))
        return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;

    if (plan.forms.samplesPerPixel == 3)
        parser.GetHeader()->SetValue(tag::kPhotometricInterpretation, plan.readAs);
    StoredFrames frames(parser, plan.frameBytes, wish.progress);
    std::size_t codedBytes = 0;
    result = plan.to->isEncapsulated ? CodeAll(plan, frames, target, codedBytes)
                                     : PutPlain(plan, frames, target);
    if (result == QVM_SUCCESS) result = DecodeNestedPixels(from, target);
    if (result != QVM_SUCCESS) return result;
    DescribeRecoded(plan, RatioOf(plainBytes, storedBytes), target);
    return DescribeLoss(plan, RatioOf(plainBytes, codedBytes), target);
}

}  // namespace quorvex
