#include "maker/settings.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "maker/object_change.h"
#include "maker/object_maker.h"
#include "maker/rules/making_rules.h"
#include "maker/storage_classes.h"
#include "quorvex/CXGSPSInfo.h"

#include <cstdint>

namespace quorvex {
namespace {

template <class Record>
struct TextSetting {
    std::uint32_t tag;
    CString Record::*text;
};

constexpr TextSetting<_USER_SETTING_INFO> kUserTexts[] = {
    {tag::kInstanceNumber, &_USER_SETTING_INFO::instanceNumber},
    {tag::kInstitutionName, &_USER_SETTING_INFO::institutionName},
    {tag::kPatientName, &_USER_SETTING_INFO::patientName},
    {tag::kSeriesDescription, &_USER_SETTING_INFO::seriesDescription},
    {tag::kSeriesInstanceUID, &_USER_SETTING_INFO::seriesInstanceUID},
    {tag::kSeriesNumber, &_USER_SETTING_INFO::seriesNumber},
    {tag::kModality, &_USER_SETTING_INFO::modality},
};

constexpr TextSetting<CXGSPSInfo> kStateTexts[] = {
    {tag::kPatientName, &CXGSPSInfo::patientName},
    {tag::kSeriesDescription, &CXGSPSInfo::seriesDescription},
    {tag::kInstitutionName, &CXGSPSInfo::institutionName},
};

template <class Record, std::size_t Count>
void SetTexts(const TextSetting<Record> (&settings)[Count], const Record& record,
              CDcmObject& target) {
    for (const auto& [tag, text] : settings) {
        if (!(record.*text).IsEmpty()) target.SetValue(tag, record.*text);
    }
}

bool IsChosen(const StorageClass& row, const _USER_SETTING_INFO& settings) {
    return settings.modality == CString(row.modality) &&
           (row.documentKind == 0 || row.documentKind == settings.documentKind);
}

}  // namespace

void SetUserTexts(const _USER_SETTING_INFO& settings, CDcmObject& target) {
    SetTexts(kUserTexts, settings, target);
}

void SetRecordTexts(const CXGSPSInfo& record, CDcmObject& target) {
    SetTexts(kStateTexts, record, target);
}

void UpdateUserSettingInfo(const _USER_SETTING_INFO& settings, CDcmObject& target) {
    SetUserTexts(settings, target);
    for (const StorageClass& row : kStorageClasses) {
        if (IsChosen(row, settings)) target.SetValue(tag::kSOPClassUID, row.sopClassUid);
    }
}

void UpdateByRecord(const CXGSPSInfo& record, CDcmObject& target) {
    for (const StorageClass& row : kStorageClasses) {
        if (row.objectKind != record.objectKind) continue;
        target.SetValue(tag::kModality, row.modality);
        target.SetValue(tag::kSOPClassUID, row.sopClassUid);
    }
    target.SetValue(tag::kSeriesNumber, record.seriesNumber);
    target.SetValue(tag::kInstanceNumber, record.instanceNumber);
    SetRecordTexts(record, target);
}

int CxDcmMaker::UpdateUserSettingInfo(CXGSPSInfo* info, CDcmObject* target) {
    if (info == nullptr || target == nullptr) return 1;
    return Answer(0, [&] {
        ObjectChange change(*target);
        MakingRulesOf(maker_->rules).ApplyRecord(*info, *target);
        change.Keep();
        return 1;
    });
}

}  // namespace quorvex
