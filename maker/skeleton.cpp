#include "foundation/types/answer.h"
#include "maker/configuration.h"
#include "maker/object_change.h"
#include "quorvex/CxDcmMaker.h"

#include <cstdint>
#include <memory>

namespace quorvex {
namespace {

constexpr std::uint32_t kInstitutionName = 0x00080080;
constexpr std::uint32_t kModelName = 0x00081090;
constexpr std::uint32_t kImagePosition = 0x00200032;
constexpr std::uint32_t kImageOrientation = 0x00200037;

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
    {0x00020002, From::kSource},        // Media Storage SOP Class UID
    {0x00020003, From::kSource},        // Media Storage SOP Instance UID
    {0x00100010, From::kSource},        // Patient's Name
    {0x00100020, From::kSource},        // Patient ID
    {0x00100030, From::kSource},        // Patient's Birth Date
    {0x00100040, From::kSource},        // Patient's Sex
    {0x00100032, From::kSource},        // Patient's Birth Time
    {0x00104000, From::kSource},        // Patient Comments
    {0x0020000D, From::kSource},        // Study Instance UID
    {0x00080020, From::kSource},        // Study Date
    {0x00080030, From::kSource},        // Study Time
    {0x00080090, From::kSource},        // Referring Physician's Name
    {0x00200010, From::kSource},        // Study ID
    {0x00080050, From::kSource},        // Accession Number
    {0x00081030, From::kSource},        // Study Description
    {0x00101010, From::kSource},        // Patient's Age
    {0x00101020, From::kSource},        // Patient's Size
    {0x00101030, From::kSource},        // Patient's Weight
    {0x001021B0, From::kSource},        // Additional Patient History
    {0x00080060, From::kSource},        // Modality
    {0x0020000E, From::kSeriesUid},     // Series Instance UID
    {0x00200060, From::kSource},        // Laterality
    {0x00080021, From::kDate},          // Series Date
    {0x00080031, From::kTime},          // Series Time
    {0x0008103E, From::kSource},        // Series Description
    {0x00180015, From::kSource},        // Body Part Examined
    {0x00185100, From::kSource},        // Patient Position
    {0x00280108, From::kSource},        // Smallest Pixel Value in Series
    {0x00280109, From::kSource},        // Largest Pixel Value in Series
    {0x00400253, From::kSource},        // Performed Procedure Step ID
    {0x00400244, From::kSource},        // Performed Procedure Step Start Date
    {0x00400245, From::kSource},        // Performed Procedure Step Start Time
    {0x00400254, From::kSource},        // Performed Procedure Step Description
    {0x00080070, From::kManufacturer},  // Manufacturer
    {kInstitutionName, From::kInstitution},
    {0x00280120, From::kSource},       // Pixel Padding Value
    {0x00080016, From::kSource},       // SOP Class UID
    {0x00080018, From::kInstanceUid},  // SOP Instance UID
    {0x00080005, From::kSourceAll},    // Specific Character Set
    {0x00080012, From::kDate},         // Instance Creation Date
    {0x00080013, From::kTime},         // Instance Creation Time
};

/// What an image takes over besides.
constexpr std::uint32_t kCopiedForImages[] = {
    0x00080008,  // Image Type
    0x00281052,  // Rescale Intercept
    0x00281053,  // Rescale Slope
    0x00200052,  // Frame of Reference UID
    0x00201040,  // Position Reference Indicator
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
        if (CopyFirst(source_, target_, kInstitutionName))
            target_.SetValue(kModelName, configuration_.modelName, -1);
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
    CopyUpTo(6, *source, *target, kImageOrientation);
    CopyUpTo(3, *source, *target, kImagePosition);
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
