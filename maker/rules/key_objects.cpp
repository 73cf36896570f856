#include "maker/rules/key_objects.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/object_state.h"
#include "maker/attribute_writing.h"
#include "maker/rules/making_rules.h"
#include "maker/rules/standard_skeleton.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

/// What names an object in a document.
struct Named {
    CString study;
    CString series;
    CString sopClass;
    CString instance;
    const char* valueType = "IMAGE";

    [[nodiscard]] bool IsWhole() const {
        return !study.IsEmpty() && !series.IsEmpty() && !sopClass.IsEmpty() && !instance.IsEmpty();
    }
};

constexpr std::uint32_t kImageOnly[] = {
    tag::kPixelPaddingValue,
    tag::kPixelPaddingRangeLimit,
    tag::kPatientPosition,
    tag::kSmallestPixelValueInSeries,
    tag::kLaterality,
    tag::kBodyPartExamined,
    tag::kLargestPixelValueInSeries,
};

const char* ValueTypeOf(const CDcmObject& object) {
    if (HasElement(object, tag::kRows)) return "IMAGE";
    return HasElement(object, tag::kWaveformSequence) ? "WAVEFORM" : "COMPOSITE";
}

Named NameOf(const CDcmObject& object) {
    const auto text = [&](std::uint32_t tag) {
        return Read<CString>(object, tag).value_or(CString());
    };
    return {.study = text(tag::kStudyInstanceUID),
            .series = text(tag::kSeriesInstanceUID),
            .sopClass = text(tag::kSOPClassUID),
            .instance = text(tag::kSOPInstanceUID),
            .valueType = ValueTypeOf(object)};
}

CDcmItem CodeItem(const CString& value, const CString& scheme, const CString& meaning) {
    CDcmItem item;
    item.SetValue(tag::kCodeValue, value);
    item.SetValue(tag::kCodingSchemeDesignator, scheme);
    item.SetValue(tag::kCodeMeaning, meaning);
    return item;
}

CDcmItem Reference(const Named& object) {
    CDcmItem item;
    item.SetValue(tag::kReferencedSOPClassUID, object.sopClass);
    item.SetValue(tag::kReferencedSOPInstanceUID, object.instance);
    return item;
}

/// One item for each text that `textOf` gives, in the order in which they come.
template <class Make>
void GroupBy(const std::vector<Named>& objects, CString Named::*text, CDcmObjectCommon& parent,
             std::uint32_t sequence, Make make) {
    ValueWriter items(parent, sequence);
    std::vector<CString> done;
    for (const Named& object : objects) {
        if (std::ranges::find(done, object.*text) != done.end()) continue;
        done.push_back(object.*text);
        std::vector<Named> group;
        std::ranges::copy_if(objects, std::back_inserter(group),
                             [&](const Named& other) { return other.*text == object.*text; });
        items.Add(make(group));
    }
}

CDcmItem SeriesItem(const std::vector<Named>& objects) {
    CDcmItem series;
    series.SetValue(tag::kSeriesInstanceUID, objects.front().series);
    ValueWriter references(series, tag::kReferencedSOPSequence);
    for (const Named& object : objects) references.Add(Reference(object));
    return series;
}

CDcmItem StudyItem(const std::vector<Named>& objects) {
    CDcmItem study;
    study.SetValue(tag::kStudyInstanceUID, objects.front().study);
    GroupBy(objects, &Named::series, study, tag::kReferencedSeriesSequence, SeriesItem);
    return study;
}

CDcmItem DescriptionItem(const CString& text) {
    CDcmItem name = CodeItem("113012", "DCM", "Key Object Description");
    CDcmItem item;
    item.SetValue(tag::kRelationshipType, "CONTAINS");
    item.SetValue(tag::kValueType, "TEXT");
    item.SetValue(tag::kConceptNameCodeSequence, &name);
    item.SetValue(tag::kTextValue, text);
    return item;
}

CDcmItem ContentItem(const Named& object) {
    CDcmItem reference = Reference(object);
    CDcmItem item;
    item.SetValue(tag::kRelationshipType, "CONTAINS");
    item.SetValue(tag::kValueType, object.valueType);
    item.SetValue(tag::kReferencedSOPSequence, &reference);
    return item;
}

CDcmItem Template() {
    CDcmItem item;
    item.SetValue(tag::kMappingResource, "DCMR");
    item.SetValue(tag::kTemplateIdentifier, "2010");
    return item;
}

void WriteContent(const std::vector<Named>& objects, const _KEY_OBJECT_INFO& info,
                  CDcmObject& document) {
    CDcmItem title = CodeItem(info.titleCode, info.titleScheme, info.titleMeaning);
    CDcmItem used = Template();
    document.SetValue(tag::kValueType, "CONTAINER");
    document.SetValue(tag::kConceptNameCodeSequence, &title);
    document.SetValue(tag::kContinuityOfContent, "SEPARATE");
    document.SetValue(tag::kContentTemplateSequence, &used);
    ValueWriter content(document, tag::kContentSequence);
    if (!info.description.IsEmpty()) content.Add(DescriptionItem(info.description));
    for (const Named& object : objects) content.Add(ContentItem(object));
    GroupBy(objects, &Named::study, document, tag::kCurrentRequestedProcedureEvidenceSequence,
            StudyItem);
}

void RequireNumber(CDcmObject& object, std::uint32_t tag) {
    if (Read<CString>(object, tag).value_or(CString()).IsEmpty()) object.SetValue(tag, "1");
}

/// A sequence without items.
void RequireSequence(CDcmObject& object, std::uint32_t tag) {
    ObjectState::Of(object).Writable().PutItems(tag, {});
}

void WriteDocument(CDcmObject& document) {
    for (const auto tag : kImageOnly) document.RemoveValue(tag);
    RequireNumber(document, tag::kSeriesNumber);
    RequireNumber(document, tag::kInstanceNumber);
    RequireSequence(document, tag::kReferencedPerformedProcedureStepSequence);
    document.SetValue(tag::kContentDate, CxDcmMaker::GetDate());
    document.SetValue(tag::kContentTime, StandardTime());
}

}  // namespace

QUORVEX_MESSAGE MakeKeyObjectDocument(std::span<CDcmObject* const> objects,
                                      const _KEY_OBJECT_INFO& info,
                                      const _USER_SETTING_INFO* settings,
                                      std::unique_ptr<CDcmObject>& made) {
    if (objects.empty()) return QVM_ERROR_NO_SOURCE_OBJECT;
    std::vector<Named> named;
    for (const CDcmObject* object : objects) {
        if (object == nullptr) return QVM_ERROR_NO_SOURCE_OBJECT;
        named.push_back(NameOf(*object));
        if (!named.back().IsWhole()) return QVM_ERROR_NO_SOURCE_OBJECT;
    }
    _USER_SETTING_INFO choices = settings != nullptr ? *settings : _USER_SETTING_INFO();
    choices.modality = "KO";
    std::unique_ptr<CDcmObject> document;
    const auto result =
        MakeBasicObject(MakingRulesOf(Rules::kStandard), *objects.front(), &choices, document);
    if (result != QVM_SUCCESS) return result;
    WriteDocument(*document);
    WriteContent(named, info, *document);
    made = std::move(document);
    return QVM_SUCCESS;
}

}  // namespace quorvex
