#include "maker/rules/making_rules.h"

#include "maker/pixels/export.h"
#include "maker/rules/standard_image.h"
#include "maker/rules/standard_settings.h"
#include "maker/rules/standard_skeleton.h"
#include "maker/settings.h"
#include "maker/skeleton.h"

namespace quorvex {
namespace {

class EstablishedMaking final : public MakingRules {
public:
    QUORVEX_MESSAGE FillSkeleton(const CDcmObject& source, CDcmObject& target) const override {
        FillEstablishedSkeleton(source, target);
        return QVM_SUCCESS;
    }
    void TakeOverImage(const CDcmObject& source, CDcmObject& target) const override {
        SetBasicInfo(source, target);
    }
    void ApplySettings(const _USER_SETTING_INFO& settings, CDcmObject& target) const override {
        UpdateUserSettingInfo(settings, target);
    }
    void ApplyRecord(const CXGSPSInfo& record, CDcmObject& target) const override {
        UpdateByRecord(record, target);
    }
    [[nodiscard]] bool AllowPixels(const _USER_SETTING_INFO* /*settings*/) const override {
        return true;
    }
    QUORVEX_MESSAGE MakePixels(const NewImage& image, FrameSupply& frames,
                               CDcmObject& target) const override {
        _DCM_PIXEL_INFO format = image.format;
        if (image.quality != 0) format.quality = image.quality;
        return MakeEstablishedPixels(format, frames, image.source, target);
    }
};

class StandardMaking final : public MakingRules {
public:
    QUORVEX_MESSAGE FillSkeleton(const CDcmObject& source, CDcmObject& target) const override {
        return FillStandardSkeleton(source, target);
    }
    /// What an image takes over depends on its pixels, and comes with them.
    void TakeOverImage(const CDcmObject& /*source*/, CDcmObject& /*target*/) const override {}
    void ApplySettings(const _USER_SETTING_INFO& settings, CDcmObject& target) const override {
        ApplyStandardSettings(settings, target);
    }
    void ApplyRecord(const CXGSPSInfo& record, CDcmObject& target) const override {
        ApplyStandardRecord(record, target);
    }
    [[nodiscard]] bool AllowPixels(const _USER_SETTING_INFO* settings) const override {
        return settings == nullptr || DocumentClassOf(*settings) == nullptr;
    }
    QUORVEX_MESSAGE MakePixels(const NewImage& image, FrameSupply& frames,
                               CDcmObject& target) const override {
        return MakeStandardImage(image, frames, target);
    }
};

}  // namespace

const MakingRules& MakingRulesOf(Rules rules) noexcept {
    static const EstablishedMaking established;
    static const StandardMaking standard;
    if (rules == Rules::kStandard) return standard;
    return established;
}

QUORVEX_MESSAGE MakeBasicObject(const MakingRules& rules, const CDcmObject& source,
                                const _USER_SETTING_INFO* settings,
                                std::unique_ptr<CDcmObject>& made) {
    const bool hasName = settings != nullptr && !settings->fileName.IsEmpty();
    auto object = std::make_unique<CDcmObject>();
    object->Open(hasName ? settings->fileName : CString("test.dcm"));
    const auto result = rules.FillSkeleton(source, *object);
    if (result != QVM_SUCCESS) return result;
    rules.TakeOverImage(source, *object);
    if (settings != nullptr) rules.ApplySettings(*settings, *object);
    made = std::move(object);
    return QVM_SUCCESS;
}

}  // namespace quorvex
