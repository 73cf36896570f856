#include "maker/skeleton.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "maker/attribute_writing.h"
#include "maker/configuration.h"
#include "maker/object_change.h"
#include "maker/object_maker.h"
#include "maker/rules/making_rules.h"

#include <cstdint>

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
    {tag::kMediaStorageSOPClassUID, From::kSource},
    {tag::kMediaStorageSOPInstanceUID, From::kSource},
    {tag::kPatientName, From::kSource},
    {tag::kPatientID, From::kSource},
    {tag::kPatientBirthDate, From::kSource},
    {tag::kPatientSex, From::kSource},
    {tag::kPatientBirthTime, From::kSource},
    {tag::kPatientComments, From::kSource},
    {tag::kStudyInstanceUID, From::kSource},
    {tag::kStudyDate, From::kSource},
    {tag::kStudyTime, From::kSource},
    {tag::kReferringPhysicianName, From::kSource},
    {tag::kStudyID, From::kSource},
    {tag::kAccessionNumber, From::kSource},
    {tag::kStudyDescription, From::kSource},
    {tag::kPatientAge, From::kSource},
    {tag::kPatientSize, From::kSource},
    {tag::kPatientWeight, From::kSource},
    {tag::kAdditionalPatientHistory, From::kSource},
    {tag::kModality, From::kSource},
    {tag::kSeriesInstanceUID, From::kSeriesUid},
    {tag::kLaterality, From::kSource},
    {tag::kSeriesDate, From::kDate},
    {tag::kSeriesTime, From::kTime},
    {tag::kSeriesDescription, From::kSource},
    {tag::kBodyPartExamined, From::kSource},
    {tag::kPatientPosition, From::kSource},
    {tag::kSmallestPixelValueInSeries, From::kSource},
    {tag::kLargestPixelValueInSeries, From::kSource},
    {tag::kPerformedProcedureStepID, From::kSource},
    {tag::kPerformedProcedureStepStartDate, From::kSource},
    {tag::kPerformedProcedureStepStartTime, From::kSource},
    {tag::kPerformedProcedureStepDescription, From::kSource},
    {tag::kManufacturer, From::kManufacturer},
    {tag::kInstitutionName, From::kInstitution},
    {tag::kPixelPaddingValue, From::kSource},
    {tag::kSOPClassUID, From::kSource},
    {tag::kSOPInstanceUID, From::kInstanceUid},
    {tag::kSpecificCharacterSet, From::kSourceAll},
    {tag::kInstanceCreationDate, From::kDate},
    {tag::kInstanceCreationTime, From::kTime},
};

/// What an image takes over besides.
constexpr std::uint32_t kCopiedForImages[] = {
    tag::kImageType,           tag::kRescaleIntercept,           tag::kRescaleSlope,
    tag::kFrameOfReferenceUID, tag::kPositionReferenceIndicator,
};

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
                target_.SetValue(step.tag, NewValue(step.from));
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
            target_.SetValue(tag::kManufacturerModelName, configuration_.modelName);
    }

    const CDcmObject& source_;
    CDcmObject& target_;
    MakerConfiguration configuration_;
};

}  // namespace

void FillEstablishedSkeleton(const CDcmObject& source, CDcmObject& target) {
    const Skeleton skeleton(source, target);
    target.SetTransferSyntax(kExplicitLittleEndian);
    for (const Step& step : kSteps) skeleton.Run(step);
}

int CxDcmMaker::MakeDcmSkeleton(CDcmObject* source, CDcmObject* target) {
    if (source == nullptr || target == nullptr) return 1;
    return Answer(0, [&] {
        ObjectChange change(*target);
        const auto result = MakingRulesOf(maker_->rules).FillSkeleton(*source, *target);
        if (result != QVM_SUCCESS) return 0;
        change.Keep();
        return 1;
    });
}

void SetBasicInfo(const CDcmObject& source, CDcmObject& target) {
    constexpr int kOrientationValues = 6;
    constexpr int kPositionValues = 3;
    for (const std::uint32_t tag : kCopiedForImages) CopyFirst(source, target, tag);
    CopyUpTo(kOrientationValues, source, target, tag::kImageOrientationPatient);
    CopyUpTo(kPositionValues, source, target, tag::kImagePositionPatient);
}

}  // namespace quorvex
