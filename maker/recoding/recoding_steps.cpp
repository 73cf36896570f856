#include "maker/recoding/recoding_steps.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/limits.h"
#include "maker/recoding/lossy_record.h"
#include "maker/recoding/single_bits.h"

namespace quorvex {
namespace {

void DescribeColours(const RecodingPlan& plan, CDcmObject& object) {
    if (plan.forms.samplesPerPixel != 3) return;
    if (Read<CString>(object, tag::kPhotometricInterpretation) != plan.written)
        object.SetValue(tag::kPhotometricInterpretation, plan.written);
    const bool keepsPlanes = plan.to->coding == FrameCoding::kRle &&
                             Read<int>(object, tag::kPlanarConfiguration).has_value();
    if (!keepsPlanes && Read<int>(object, tag::kPlanarConfiguration) != 0)
        object.SetValue(tag::kPlanarConfiguration, 0);
}

/// The process that is told from the transfer syntax has these bits, whatever the samples have.
void DescribeExtendedBits(CDcmObject& object) {
    constexpr int kBits = 12;
    object.SetValue(tag::kBitsStored, kBits);
    object.SetValue(tag::kHighBit, kBits - 1);
}

}  // namespace

bool IsPlausible(std::size_t all, std::size_t stored) {
    return all <= kObjectAllowance || all / kMostObjectPerByte <= stored ||
           RefuseBy(Limit::kLargestObject);
}

QUORVEX_MESSAGE FetchStoredFrame(CxDcmParser& parser, int index, std::size_t frameBytes,
                                 std::unique_ptr<unsigned char[]>& frame, unsigned long& size) {
    frame.reset();
    if (parser.GetSampleType() != SampleType::kInteger) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    unsigned char* data = nullptr;
    const auto result = parser.GetAFrameUnpacked(index, data, size);
    frame.reset(data);
    if (result != QVM_SUCCESS) return result;
    // What is missing would look as if it had been black.
    if (parser.GetFrameQuality() == FrameQuality::kPartial) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    return size == frameBytes ? QVM_SUCCESS : QVM_ERROR_INVALID_BITS_ALLOCATED;
}

QUORVEX_MESSAGE CodeOne(const RecodingPlan& plan, std::span<unsigned char> frame,
                        std::vector<unsigned char>& coded) {
    if (plan.forms.bitsAllocated != 1) return CodeStored(plan.forms, frame, coded);
    auto bits = PackBits(frame);
    return CodeStored(plan.forms, bits, coded);
}

double RatioOf(std::size_t plain, std::size_t coded) {
    return coded == 0 ? 1.0 : static_cast<double>(plain) / static_cast<double>(coded);
}

void DescribeRecoded(const RecodingPlan& plan, double sourceRatio, CDcmObject& object) {
    DescribeColours(plan, object);
    if (plan.isLossySource) MarkEarlierLoss(*plan.from, sourceRatio, object);
    if (plan.forms.form == kXferJpegExtended) DescribeExtendedBits(object);
}

QUORVEX_MESSAGE DescribeLoss(const RecodingPlan& plan, double ratio, CDcmObject& object) {
    const unsigned errorBound = plan.to->coding == FrameCoding::kJpegLs ? plan.forms.quality : 0;
    const bool isDescribed = !plan.to->isLossy || RecordLoss(*plan.to, ratio, errorBound, object);
    return isDescribed ? QVM_SUCCESS : QVM_ERROR_INVALID_MAKER_PARAM;
}

}  // namespace quorvex
