// The grey stages of images and presentation states.
#include "foundation/dicom/model/attributes.h"
#include "presentation/grey/grey_stages.h"
#include "presentation/grey/grey_table_reading.h"
#include "presentation/reference_matching.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace quorvex {
namespace {

ModalityStage ReadModality(const CDcmObject& object, const StoredForm& form) {
    ModalityStage stage;
    if (const auto item = Read<CDcmItem>(object, tag::kModalityLUTSequence)) {
        stage.table =
            ReadGreyTable(*item, form.isSigned ? FirstValue::kSigned : FirstValue::kUnsigned);
        if (stage.table) return stage;
    }
    // A dose is its grid's values times the scaling (DICOM PS3.3 C.8.8.3); it has no rescale.
    const double scaling = Read<double>(object, tag::kDoseGridScaling).value_or(1.0);
    const double slope = Read<double>(object, tag::kRescaleSlope).value_or(scaling);
    const double intercept = Read<double>(object, tag::kRescaleIntercept).value_or(0.0);
    if (slope == 0.0 || !std::isfinite(slope) || !std::isfinite(intercept)) return stage;
    stage.slope = slope;
    stage.intercept = intercept;
    return stage;
}

/// A VOI table counts from below 0 where modality values can lie there.
FirstValue FirstValueAfter(const ModalityStage& modality, const StoredForm& form) {
    const bool canBeNegative =
        !modality.table && std::min(modality(form.Lowest()), modality(form.Highest())) < 0.0;
    return canBeNegative ? FirstValue::kSigned : FirstValue::kUnsigned;
}

VoiFunction ReadFunction(const CDcmObjectCommon& object) {
    const auto word = Read<CString>(object, tag::kVOILUTFunction);
    if (word && word->CompareNoCase("SIGMOID") == 0) return VoiFunction::kSigmoid;
    if (word && word->CompareNoCase("LINEAR_EXACT") == 0) return VoiFunction::kLinearExact;
    return VoiFunction::kLinear;
}

template <class Value>
std::vector<Value> ReadAll(const CDcmObjectCommon& object, std::uint32_t tag) {
    std::vector<Value> values;
    ForEachValue<Value>(object, tag, [&](const Value& value) { values.push_back(value); });
    return values;
}

VoiStage ReadVoi(const CDcmObjectCommon& object, FirstValue firstValue) {
    VoiStage stage;
    ForEachItem(object, tag::kVOILUTSequence, [&](const CDcmItem& item) {
        if (auto table = ReadGreyTable(item, firstValue)) stage.tables.push_back(std::move(table));
    });
    const auto centres = ReadAll<double>(object, tag::kWindowCenter);
    const auto widths = ReadAll<double>(object, tag::kWindowWidth);
    const auto explanations = ReadAll<CString>(object, tag::kWindowCenterWidthExplanation);
    const VoiFunction function = ReadFunction(object);
    for (std::size_t i = 0; i < std::min(centres.size(), widths.size()); ++i) {
        const auto window = MakeWindow(centres[i], widths[i], function);
        if (!window) continue;
        stage.windows.push_back({*window, i < explanations.size() ? explanations[i] : CString()});
    }
    return stage;
}

void Append(VoiStage& stage, VoiStage&& more) {
    std::ranges::move(more.tables, std::back_inserter(stage.tables));
    std::ranges::move(more.windows, std::back_inserter(stage.windows));
}

PresentationStage ReadPresentation(const CDcmObject& state) {
    PresentationStage stage;
    if (const auto item = Read<CDcmItem>(state, tag::kPresentationLUTSequence)) {
        stage.table = ReadGreyTable(*item, FirstValue::kUnsigned);
    }
    const auto shape = Read<CString>(state, tag::kPresentationLUTShape);
    stage.isInverse = !stage.table && shape && shape->CompareNoCase("INVERSE") == 0;
    return stage;
}

}  // namespace

GreyStages ReadImageStages(const CDcmObject& header, const StoredForm& form) {
    GreyStages stages;
    stages.modality = ReadModality(header, form);
    stages.voi = ReadVoi(header, FirstValueAfter(stages.modality, form));
    const auto photometric = Read<CString>(header, tag::kPhotometricInterpretation);
    stages.presentation.isInverse = photometric && photometric->CompareNoCase("MONOCHROME1") == 0;
    return stages;
}

GreyStages ReadStateStages(const CDcmObject& state, const CString& imageUID,
                           std::int32_t frameNumber, const StoredForm& form) {
    GreyStages stages;
    stages.modality = ReadModality(state, form);
    const FirstValue firstValue = FirstValueAfter(stages.modality, form);
    ForEachItem(state, tag::kSoftcopyVOILUTSequence, [&](const CDcmItem& item) {
        if (AppliesTo(item, imageUID, frameNumber)) Append(stages.voi, ReadVoi(item, firstValue));
    });
    stages.presentation = ReadPresentation(state);
    return stages;
}

std::optional<PaddingRange> ReadPadding(const CDcmObject& header, const StoredForm& form) {
    const auto stored = [&](std::uint32_t tag) -> std::optional<std::int64_t> {
        const auto value = Read<int>(header, tag);
        if (!value) return std::nullopt;
        // Writers disagree on the VR: the value is as signed as the pixels are.
        const auto word = static_cast<std::uint16_t>(*value);
        return form.isSigned ? std::int64_t{static_cast<std::int16_t>(word)} : std::int64_t{word};
    };
    const auto padding = stored(tag::kPixelPaddingValue);
    if (!padding) return std::nullopt;
    const std::int64_t other = stored(tag::kPixelPaddingRangeLimit).value_or(*padding);
    const auto [low, high] = std::minmax(*padding, other);
    return PaddingRange{low, high};
}

std::optional<RealPaddingRange> ReadRealPadding(const CDcmObject& header, SampleType sampleType) {
    const bool isDouble = sampleType == SampleType::kFloat64;
    const auto padding = Read<double>(
        header, isDouble ? tag::kDoubleFloatPixelPaddingValue : tag::kFloatPixelPaddingValue);
    if (!padding || std::isnan(*padding)) return std::nullopt;
    const double other = Read<double>(header, isDouble ? tag::kDoubleFloatPixelPaddingRangeLimit
                                                       : tag::kFloatPixelPaddingRangeLimit)
                             .value_or(*padding);
    if (std::isnan(other)) return RealPaddingRange{*padding, *padding};
    const auto [low, high] = std::minmax(*padding, other);
    return RealPaddingRange{low, high};
}

bool RefersTo(const CDcmObject& state, const CString& imageUID, std::int32_t frameNumber) {
    bool hasSeries = false;
    bool isNamed = false;
    ForEachItem(state, tag::kReferencedSeriesSequence, [&](const CDcmItem& series) {
        hasSeries = true;
        isNamed = isNamed || AppliesTo(series, imageUID, frameNumber);
    });
    return isNamed || !hasSeries;
}

}  // namespace quorvex
