#include "maker/rules/standard_settings.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/object/element_copy.h"
#include "maker/settings.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace quorvex {
namespace {

constexpr std::int32_t kKeyObjects = 5;  ///< as a document kind

void SetClass(const StorageClass& row, CDcmObject& target) {
    target.SetValue(tag::kModality, ModalityOf(row));
    target.SetValue(tag::kSOPClassUID, row.sopClassUid);
}

}  // namespace

const StorageClass* DocumentClassOf(const _USER_SETTING_INFO& settings) {
    const bool isKeyObject = settings.modality == CString("KO");
    const CString modality = isKeyObject ? CString("SR") : settings.modality;
    const std::int32_t kind = isKeyObject ? kKeyObjects : settings.documentKind;
    const auto* row = std::ranges::find_if(kStorageClasses, [&](const StorageClass& one) {
        return modality == CString(one.modality) &&
               (one.documentKind == 0 || one.documentKind == kind);
    });
    return row == std::end(kStorageClasses) ? nullptr : row;
}

const char* ModalityOf(const StorageClass& row) noexcept {
    return row.documentKind == kKeyObjects ? "KO" : row.modality;
}

void ApplyStandardSettings(const _USER_SETTING_INFO& settings, CDcmObject& target) {
    SetUserTexts(settings, target);
    const auto* row = DocumentClassOf(settings);
    if (row == nullptr) return;
    SetClass(*row, target);
    NameMediaStorage(target);
}

void ApplyStandardRecord(const CXGSPSInfo& record, CDcmObject& target) {
    const auto* row =
        std::ranges::find(kStorageClasses, record.objectKind, &StorageClass::objectKind);
    const bool isDocument = row != std::end(kStorageClasses);
    if (isDocument) SetClass(*row, target);
    target.SetValue(tag::kSeriesNumber, record.seriesNumber);
    const bool needsNumber = isDocument && record.instanceNumber.IsEmpty();
    target.SetValue(tag::kInstanceNumber, needsNumber ? CString("1") : record.instanceNumber);
    SetRecordTexts(record, target);
    NameMediaStorage(target);
}

void NameMediaStorage(CDcmObject& object) {
    CString text;
    if (object.GetValue(tag::kSOPClassUID, text) == kDcmSuccess)
        object.SetValue(tag::kMediaStorageSOPClassUID, text);
    if (object.GetValue(tag::kSOPInstanceUID, text) == kDcmSuccess)
        object.SetValue(tag::kMediaStorageSOPInstanceUID, text);
}

}  // namespace quorvex
