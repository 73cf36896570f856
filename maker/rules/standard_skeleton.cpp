#include "maker/rules/standard_skeleton.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/platform/clock.h"
#include "maker/configuration.h"
#include "maker/rules/standard_settings.h"
#include "maker/uids.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace quorvex {
namespace {

constexpr std::uint32_t kPatientGroup = 0x0010;
constexpr std::uint32_t kClinicalTrialGroup = 0x0012;

/// Of study, series and equipment; the patient's whole groups come too.
constexpr std::uint32_t kTakenOver[] = {
    tag::kSpecificCharacterSet,
    tag::kTimezoneOffsetFromUTC,
    tag::kStudyInstanceUID,
    tag::kStudyDate,
    tag::kStudyTime,
    tag::kReferringPhysicianName,
    tag::kStudyID,
    tag::kAccessionNumber,
    tag::kIssuerOfAccessionNumberSequence,
    tag::kStudyDescription,
    tag::kProcedureCodeSequence,
    tag::kModality,
    tag::kLaterality,
    tag::kSeriesDescription,
    tag::kBodyPartExamined,
    tag::kPatientPosition,
    tag::kSmallestPixelValueInSeries,
    tag::kLargestPixelValueInSeries,
    tag::kPixelPaddingValue,
    tag::kPixelPaddingRangeLimit,
    tag::kPerformedProcedureStepID,
    tag::kPerformedProcedureStepStartDate,
    tag::kPerformedProcedureStepStartTime,
    tag::kPerformedProcedureStepDescription,
    tag::kInstitutionName,
    tag::kSOPClassUID,
};

/// Type 2: there, if only empty.
constexpr std::uint32_t kRequired[] = {
    tag::kPatientName,  tag::kPatientID,    tag::kPatientBirthDate, tag::kPatientSex,
    tag::kStudyDate,    tag::kStudyTime,    tag::kStudyID,          tag::kReferringPhysicianName,
    tag::kManufacturer, tag::kSeriesNumber, tag::kAccessionNumber,
};

bool DescribesPatient(const CDcmObjectCommon& /*target*/, std::uint32_t tag) {
    const std::uint32_t group = dicom::GroupOf(tag);
    return (group == kPatientGroup || group == kClinicalTrialGroup) && !dicom::IsGroupLength(tag);
}

bool SetNewUids(const CString& root, CDcmObject& target) {
    for (const std::uint32_t tag :
         {tag::kSeriesInstanceUID, tag::kSOPInstanceUID, tag::kStudyInstanceUID}) {
        const bool isKept = tag == tag::kStudyInstanceUID &&
                            !Read<CString>(target, tag).value_or(CString()).IsEmpty();
        if (isKept) continue;
        const auto uid = NewUid(root);
        if (!uid) return false;
        target.SetValue(tag, *uid);
    }
    return true;
}

void SetDates(CDcmObject& target) {
    const CString date = CxDcmMaker::GetDate();
    const CString time = StandardTime();
    for (const auto tag : {tag::kSeriesDate, tag::kInstanceCreationDate})
        target.SetValue(tag, date);
    for (const auto tag : {tag::kSeriesTime, tag::kInstanceCreationTime})
        target.SetValue(tag, time);
}

void SetEquipment(CDcmObject& target) {
    const MakerConfiguration configuration = ReadConfiguration();
    target.SetValue(tag::kManufacturer, configuration.manufacturer);
    if (!configuration.modelName.IsEmpty())
        target.SetValue(tag::kManufacturerModelName, configuration.modelName);
}

}  // namespace

QUORVEX_MESSAGE FillStandardSkeleton(const CDcmObject& source, CDcmObject& target) {
    target.SetTransferSyntax(kExplicitLittleEndian);
    for (const std::uint32_t tag : kTakenOver) CopyElement(source, target, tag);
    CopyElements(source, target, DescribesPatient);
    if (!SetNewUids(ConfiguredUidRoot(), target)) return QVM_ERROR_INVALID_MAKER_PARAM;
    SetDates(target);
    SetEquipment(target);
    for (const std::uint32_t tag : kRequired) RequireElement(target, tag);
    if (MayHaveLaterality(target)) RequireElement(target, tag::kLaterality);
    const bool isSigned = Read<int>(source, tag::kPixelRepresentation) == 1;
    FitSigns(target, isSigned, isSigned);
    NameMediaStorage(target);
    return QVM_SUCCESS;
}

CString StandardTime() {
    const CalendarTime now = LocalTime();
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d%02d%02d.%03d000", now.hour, now.minute,
                  now.second, now.millisecond);
    return text.data();
}

void RequireElement(CDcmObjectCommon& object, std::uint32_t tag) {
    if (!HasElement(object, tag)) object.SetValue(tag, "");
}

bool MayHaveLaterality(const CDcmObjectCommon& object) {
    constexpr const char* kPaired[] = {
        "ANKLE",   "ARM",     "AXILLA",     "BREAST", "CALCANEUS", "CLAVICLE",   "EAR",
        "ELBOW",   "EYE",     "FEMUR",      "FINGER", "FOOT",      "FOREARM",    "HAND",
        "HIP",     "HUMERUS", "KIDNEY",     "KNEE",   "LEG",       "LUNG",       "PATELLA",
        "RADIUS",  "SCAPULA", "SHOULDER",   "THIGH",  "THUMB",     "TIBIA",      "TIBIAFIBULA",
        "TOE",     "ULNA",    "ULNARADIUS", "WRIST",  "ZYGOMA",    "OPTICCANAL", "MASTOID",
        "ACJOINT", "SCJOINT", "SIJOINT",    "TMJOINT"};
    const CString part = Read<CString>(object, tag::kBodyPartExamined).value_or(CString());
    return part.IsEmpty() || std::ranges::any_of(kPaired, [&](const char* paired) {
               return part == CString(paired);
           });
}

}  // namespace quorvex
