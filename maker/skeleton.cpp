#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "maker/configuration.h"
#include "maker/object_change.h"
#include "quorvex/CxDcmMaker.h"

#include <cstdint>
#include <memory>

namespace quorvex {
namespace {

/// Where the value of an attribute comes from.
enum class From : std::uint8_t {
    kSource,     ///< its first value, where it has one
    kSourceAll,  ///< all its values
    kSeriesUid,
    kInstanceUid,
    kDate,
    kTime,
    kManufacturer,
    kInstitution,  ///< the source, and with it the configured model name
};

struct Step {
    std::uint32_t tag;
    From from;
};

/// In this order, so that no creation time lies ahead of its series' time.
constexpr Step kSteps[] = {
    {tag::kMediaStorageSOPClassUID, From::kSource},          // Media Storage SOP Class UID
    {tag::kMediaStorageSOPInstanceUID, From::kSource},       // Media Storage SOP Instance UID
    {tag::kPatientName, From::kSource},                      // Patient's Name
    {tag::kPatientID, From::kSource},                        // Patient ID
    {tag::kPatientBirthDate, From::kSource},                 // Patient's Birth Date
    {tag::kPatientSex, From::kSource},                       // Patient's Sex
    {tag::kPatientBirthTime, From::kSource},                 // Patient's Birth Time
    {tag::kPatientComments, From::kSource},                  // Patient Comments
    {tag::kStudyInstanceUID, From::kSource},                 // Study Instance UID
    {tag::kStudyDate, From::kSource},                        // Study Date
    {tag::kStudyTime, From::kSource},                        // Study Time
    {tag::kReferringPhysicianName, From::kSource},           // Referring Physician's Name
    {tag::kStudyID, From::kSource},                          // Study ID
    {tag::kAccessionNumber, From::kSource},                  // Accession Number
    {tag::kStudyDescription, From::kSource},                 // Study Description
    {tag::kPatientAge, From::kSource},                       // Patient's Age
    {tag::kPatientSize, From::kSource},                      // Patient's Size
    {tag::kPatientWeight, From::kSource},                    // Patient's Weight
    {tag::kAdditionalPatientHistory, From::kSource},         // Additional Patient History
    {tag::kModality, From::kSource},                         // Modality
    {tag::kSeriesInstanceUID, From::kSeriesUid},             // Series Instance UID
    {tag::kLaterality, From::kSource},                       // Laterality
    {tag::kSeriesDate, From::kDate},                         // Series Date
    {tag::kSeriesTime, From::kTime},                         // Series Time
    {tag::kSeriesDescription, From::kSource},                // Series Description
    {tag::kBodyPartExamined, From::kSource},                 // Body Part Examined
    {tag::kPatientPosition, From::kSource},                  // Patient Position
    {tag::kSmallestPixelValueInSeries, From::kSource},       // Smallest Pixel Value in Series
    {tag::kLargestPixelValueInSeries, From::kSource},        // Largest Pixel Value in Series
    {tag::kPerformedProcedureStepID, From::kSource},         // Performed Procedure Step ID
    {tag::kPerformedProcedureStepStartDate, From::kSource},  // Performed Procedure Step Start Date
    {tag::kPerformedProcedureStepStartTime, From::kSource},  // Performed Procedure Step Start Time
    {tag::kPerformedProcedureStepDescription,
     From::kSource},                            // Performed Procedure Step Description
    {tag::kManufacturer, From::kManufacturer},  // Manufacturer
    {tag::kInstitutionName, From::kInstitution},
    {tag::kPixelPaddingValue, From::kSource},        // Pixel Padding Value
    {tag::kSOPClassUID, From::kSource},              // SOP Class UID
    {tag::kSOPInstanceUID, From::kInstanceUid},      // SOP Instance UID
    {tag::kSpecificCharacterSet, From::kSourceAll},  // Specific Character Set
    {tag::kInstanceCreationDate, From::kDate},       // Instance Creation Date
    {tag::kInstanceCreationTime, From::kTime},       // Instance Creation Time
};

/// What an image takes over besides.
constexpr std::uint32_t kCopiedForImages[] = {
    tag::kImageType,                   // Image Type
    tag::kRescaleIntercept,            // Rescale Intercept
    tag::kRescaleSlope,                // Rescale Slope
    tag::kFrameOfReferenceUID,         // Frame of Reference UID
    tag::kPositionReferenceIndicator,  // Position Reference Indicator
};

/// Copies the first value, where there is one; whether it reached the target.
bool CopyFirst(const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    CString value;
    return source.GetValue(tag, value, -1) == kDcmSuccess &&
           target.SetValue(tag, value, -1) == kDcmSuccess;
}

bool CopyNext(const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    CString value;
    return source.GetNextValue(tag, value, -1) == kDcmSuccess &&
           target.SetNextValue(tag, value, -1) == kDcmSuccess;
}

void CopyAll(const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    bool isCopied = CopyFirst(source, target, tag);
    while (isCopied) isCopied = CopyNext(source, target, tag);
}

/// A value that cannot be copied is passed over, not the ones behind it.
void CopyUpTo(int count, const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    CopyFirst(source, target, tag);
    for (int i = 1; i < count; ++i) CopyNext(source, target, tag);
}

class Skeleton {
public:
    Skeleton(const CDcmObject& source, CDcmObject& target)
        : source_(source), target_(target), configuration_(ReadConfiguration()) {}

    void Run(const Step& step) const {
        switch (step.from) {
            case From::kSource:
                CopyFirst(source_, target_, step.tag);
                return;
            case From::kSourceAll:
                CopyAll(source_, target_, step.tag);
                return;
            case From::kInstitution:
                return CopyInstitution();
            default:
                target_.SetValue(step.tag, NewValue(step.from), -1);
        }
    }

private:
    [[nodiscard]] CString NewValue(From from) const {
        switch (from) {
            case From::kSeriesUid:
                return CxDcmMaker::GetSeriesUID(configuration_.uidPrefix);
            case From::kInstanceUid:
                return CxDcmMaker::GetSOPInstanceUID(configuration_.uidPrefix);
            case From::kDate:
                return CxDcmMaker::GetDate();
            case From::kTime:
                return CxDcmMaker::GetTime();
            default:
                return configuration_.manufacturer;
        }
    }
    void CopyInstitution() const {
        if (CopyFirst(source_, target_, tag::kInstitutionName))
            target_.SetValue(tag::kManufacturerModelName, configuration_.modelName, -1);
    }

    const CDcmObject& source_;
    CDcmObject& target_;
    MakerConfiguration configuration_;
};

}  // namespace

int CxDcmMaker::MakeDcmSkeleton(CDcmObject* source, CDcmObject* target) {
    if (source == nullptr || target == nullptr) return 1;
    return Answer(0, [&] {
        ObjectChange change(*target);
        const Skeleton skeleton(*source, *target);
        target->SetTransferSyntax(kExplicitLittleEndian);
        for (const Step& step : kSteps) skeleton.Run(step);
        change.Keep();
        return 1;
    });
}

int CxDcmMaker::SetBasicInfo(CDcmObject* source, CDcmObject* target) {
    for (const std::uint32_t tag : kCopiedForImages) CopyFirst(*source, *target, tag);
    CopyUpTo(6, *source, *target, tag::kImageOrientationPatient);
    CopyUpTo(3, *source, *target, tag::kImagePositionPatient);
    return 1;
}

int CxDcmMaker::MakeBasicObject(CDcmObject* source, _USER_SETTING_INFO* settings,
                                CDcmObject*& target) {
    if (source == nullptr) return 0;
    const bool hasName = settings != nullptr && !settings->fileName.IsEmpty();
    auto made = std::make_unique<CDcmObject>();
    made->Open(hasName ? settings->fileName : CString("test.dcm"));
    MakeDcmSkeleton(source, made.get());
    SetBasicInfo(source, made.get());
    UpdateUserSettingInfo(settings, made.get());
    target = made.release();
    return 1;
}

}  // namespace quorvex
