#include "foundation/types/answer.h"
#include "maker/object_change.h"
#include "maker/storage_classes.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmMaker.h"

#include <cstdint>

namespace quorvex {
namespace {

constexpr std::uint32_t kSopClassUid = 0x00080016;
constexpr std::uint32_t kModality = 0x00080060;
constexpr std::uint32_t kInstitutionName = 0x00080080;
constexpr std::uint32_t kSeriesDescription = 0x0008103E;
constexpr std::uint32_t kPatientName = 0x00100010;
constexpr std::uint32_t kSeriesInstanceUid = 0x0020000E;
constexpr std::uint32_t kSeriesNumber = 0x00200011;
constexpr std::uint32_t kInstanceNumber = 0x00200013;

template <class Record>
struct TextSetting {
    std::uint32_t tag;
    CString Record::*text;
};

constexpr TextSetting<_USER_SETTING_INFO> kUserTexts[] = {
    {kInstanceNumber, &_USER_SETTING_INFO::instanceNumber},
    {kInstitutionName, &_USER_SETTING_INFO::institutionName},
    {kPatientName, &_USER_SETTING_INFO::patientName},
    {kSeriesDescription, &_USER_SETTING_INFO::seriesDescription},
    {kSeriesInstanceUid, &_USER_SETTING_INFO::seriesInstanceUID},
    {kSeriesNumber, &_USER_SETTING_INFO::seriesNumber},
    {kModality, &_USER_SETTING_INFO::modality},
};

constexpr TextSetting<CXGSPSInfo> kStateTexts[] = {
    {kPatientName, &CXGSPSInfo::patientName},
    {kSeriesDescription, &CXGSPSInfo::seriesDescription},
    {kInstitutionName, &CXGSPSInfo::institutionName},
};

template <class Record, std::size_t Count>
void SetTexts(const TextSetting<Record> (&settings)[Count], const Record& record,
              CDcmObject& target) {
    for (const auto& [tag, text] : settings) {
        if (!(record.*text).IsEmpty()) target.SetValue(tag, record.*text, -1);
    }
}

bool IsChosen(const StorageClass& row, const _USER_SETTING_INFO& settings) {
    return settings.modality == CString(row.modality) &&
           (row.documentKind == 0 || row.documentKind == settings.documentKind);
}

}  // namespace

int CxDcmMaker::UpdateUserSettingInfo(_USER_SETTING_INFO* settings, CDcmObject* target) {
    if (settings == nullptr || target == nullptr) return 0;
    return Answer(0, [&] {
        ObjectChange change(*target);
        SetTexts(kUserTexts, *settings, *target);
        for (const StorageClass& row : kStorageClasses) {
            if (IsChosen(row, *settings)) target->SetValue(kSopClassUid, CString(row.sopClassUid));
        }
        change.Keep();
        return 1;
    });
}

int CxDcmMaker::UpdateUserSettingInfo(CXGSPSInfo* info, CDcmObject* target) {
    if (info == nullptr || target == nullptr) return 1;
    return Answer(0, [&] {
        ObjectChange change(*target);
        for (const StorageClass& row : kStorageClasses) {
            if (row.objectKind != info->objectKind) continue;
            target->SetValue(kModality, CString(row.modality));
            target->SetValue(kSopClassUid, CString(row.sopClassUid));
        }
        target->SetValue(kSeriesNumber, info->seriesNumber, -1);
        target->SetValue(kInstanceNumber, info->instanceNumber, -1);
        SetTexts(kStateTexts, *info, *target);
        change.Keep();
        return 1;
    });
}

}  // namespace quorvex
