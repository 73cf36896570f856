#include "maker/rules/standard_image.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/functional_groups.h"
#include "foundation/dicom/object/object_state.h"
#include "maker/attribute_writing.h"
#include "maker/recoding/lossy_record.h"
#include "maker/recoding/recoding_plan.h"
#include "maker/rules/derived_image.h"
#include "maker/rules/secondary_capture.h"
#include "maker/rules/standard_settings.h"

#include <functional>
#include <string>

namespace quorvex {
namespace {

void WritePixelModule(const HostFrames& frames, int count, CDcmObject& object) {
    const StoredForms& forms = frames.forms;
    object.SetValue(tag::kSamplesPerPixel, forms.samplesPerPixel);
    object.SetValue(tag::kPhotometricInterpretation, frames.photometric);
    object.SetValue(tag::kRows, forms.rows);
    object.SetValue(tag::kColumns, forms.columns);
    object.SetValue(tag::kBitsAllocated, forms.bitsAllocated);
    object.SetValue(tag::kBitsStored, forms.bitsStored);
    object.SetValue(tag::kHighBit, forms.bitsStored - 1);
    object.SetValue(tag::kPixelRepresentation, forms.isSigned ? 1 : 0);
    if (forms.samplesPerPixel > 1) {
        object.SetValue(tag::kPlanarConfiguration, 0);
    } else {
        object.RemoveValue(tag::kPlanarConfiguration);
    }
    if (count > 1) object.SetValue(tag::kNumberOfFrames, CString(std::to_string(count)));
}

/// In the group of each frame, or at the top level of objects without such groups.
void WriteForFrames(CDcmObject& object, std::uint32_t macro,
                    const std::function<void(CDcmObjectCommon& group)>& write) {
    if (HasFunctionalGroups(object)) return ChangeGroups(object, macro, write);
    write(object);
}

/// What the host says of its pixels' size and window.
void WriteHostWords(const _DCM_PIXEL_INFO& format, CDcmObject& object) {
    const CString& first = format.pixelSpacing[0];
    const CString& second = format.pixelSpacing[1];
    if (!first.IsEmpty()) {
        WriteForFrames(object, tag::kPixelMeasuresSequence, [&](CDcmObjectCommon& group) {
            WritePair(group, tag::kPixelSpacing, first, second.IsEmpty() ? first : second);
        });
    }
    if (format.windowCenter.IsEmpty() || format.windowWidth.IsEmpty()) return;
    WriteForFrames(object, tag::kFrameVOILUTSequence, [&](CDcmObjectCommon& group) {
        for (const auto tag : {tag::kWindowCenterWidthExplanation, tag::kVOILUTFunction})
            group.RemoveValue(tag);
        group.SetValue(tag::kWindowCenter, format.windowCenter);
        group.SetValue(tag::kWindowWidth, format.windowWidth);
    });
}

QUORVEX_MESSAGE PutCoded(const RecodingPlan& plan, PackedFrames& frames, CDcmObject& object,
                         double& ratio) {
    std::vector<std::vector<unsigned char>> coded;
    std::size_t codedBytes = 0;
    while (!frames.AreAtEnd()) {
        std::span<unsigned char> frame;
        auto result = frames.Next(frame);
        std::vector<unsigned char> one;
        if (result == QVM_SUCCESS) result = CodeStored(plan.forms, frame, one);
        if (result != QVM_SUCCESS) return result;
        codedBytes += one.size();
        coded.push_back(std::move(one));
    }
    const auto plainBytes = static_cast<double>(plan.frameBytes * coded.size());
    ratio = codedBytes == 0 ? 1.0 : plainBytes / static_cast<double>(codedBytes);
    return PutCodedFrames(coded, object);
}

void DescribeCoding(const RecodingPlan& plan, double ratio, CDcmObject& object) {
    constexpr int kExtendedBits = 12;
    if (plan.forms.samplesPerPixel == 3)
        object.SetValue(tag::kPhotometricInterpretation, plan.written);
    if (plan.to->number == kJpegExtended) {
        object.SetValue(tag::kBitsStored, kExtendedBits);
        object.SetValue(tag::kHighBit, kExtendedBits - 1);
    }
    if (plan.to->isLossy) AppendLoss(*plan.to, ratio, object);
}

/// Coded photographs of several frames have one form alone (PS3.3 A.8.5.4).
void ShareChroma(const CDcmObject& object, RecodingPlan& plan) {
    if (plan.to->number != kJpegBaseline || !TextIs(object, tag::kSOPClassUID, kColourCaptures))
        return;
    plan.forms.halvesChroma = true;
    plan.written = "YBR_FULL_422";
}

/// The object has the attributes of its pixels.
QUORVEX_MESSAGE PutPixels(const NewImage& image, const HostFrames& host, FrameSupply& supply,
                          CDcmObject& object) {
    const auto form = static_cast<QUORVEX_XFERSYNTAX>(image.format.compressionType);
    RecodingPlan plan;
    auto result =
        PlanRecoding(object, kExplicitLittleEndian, {.form = form, .quality = image.quality}, plan);
    if (result != QVM_SUCCESS) return result;
    if (object.SetTransferSyntax(plan.to->number) != kDcmSuccess)
        return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    ShareChroma(object, plan);
    PackedFrames frames(supply, host);
    if (!plan.to->isEncapsulated)
        return PutNativeFrames(frames, host.forms.bitsAllocated > 8, object);
    double ratio = 1.0;
    result = PutCoded(plan, frames, object, ratio);
    if (result == QVM_SUCCESS) DescribeCoding(plan, ratio, object);
    return result;
}

template <class Describe>
QUORVEX_MESSAGE MakeImage(const NewImage& image, FrameSupply& frames, CDcmObject& target,
                          Describe describe) {
    HostFrames host;
    auto result = DescribeHostFrames(image, host);
    if (result != QVM_SUCCESS) return result;
    CDcmObject draft = target;
    result = describe(host, draft);
    if (result != QVM_SUCCESS) return result;
    WritePixelModule(host, frames.Count(), draft);
    if (image.isDescribedByHost) WriteHostWords(image.format, draft);
    FitSigns(draft, Read<int>(image.source, tag::kPixelRepresentation) == 1, host.forms.isSigned);
    NameMediaStorage(draft);
    result = PutPixels(image, host, frames, draft);
    if (result == QVM_SUCCESS)
        ObjectState::Of(target).Adopt(ObjectState::Of(draft).SharedContent());
    return result;
}

}  // namespace

QUORVEX_MESSAGE MakeStandardImage(const NewImage& image, FrameSupply& frames, CDcmObject& target) {
    const int count = frames.Count();
    return MakeImage(image, frames, target, [&](const HostFrames& host, CDcmObject& draft) {
        return AreLikeThoseOf(image.source, host, count)
                   ? DescribeDerivedImage(image.source, draft)
                   : DescribeCapture(image.source, host, count, draft);
    });
}

QUORVEX_MESSAGE MakeStandardCapture(const NewImage& image, FrameSupply& frames,
                                    CDcmObject& target) {
    const int count = frames.Count();
    return MakeImage(image, frames, target, [&](const HostFrames& host, CDcmObject& draft) {
        return DescribeCapture(image.source, host, count, draft);
    });
}

}  // namespace quorvex
