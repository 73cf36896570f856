/// The one place where the two sets of rules part: what it means to make a new object.
#pragma once

#include "maker/pixels/frame_supply.h"
#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// A new image, ahead of its pixels.
struct NewImage {
    const CDcmObject& source;        ///< without its Pixel Data
    const _DCM_PIXEL_INFO& format;   ///< of the frames
    bool isDescribedByHost = false;  ///< else the frames are like those of the source
    std::uint16_t quality = 0;       ///< 0: the rules' own
};

class MakingRules {
public:
    MakingRules() = default;
    MakingRules(const MakingRules&) = delete;
    MakingRules& operator=(const MakingRules&) = delete;
    virtual ~MakingRules() = default;

    /// The work of `CxDcmMaker::MakeDcmSkeleton`; half of it may be done when it fails or throws.
    /// @return QVM_SUCCESS or QVM_ERROR_INVALID_MAKER_PARAM
    virtual QUORVEX_MESSAGE FillSkeleton(const CDcmObject& source, CDcmObject& target) const = 0;
    /// Copies what any image takes over besides.
    virtual void TakeOverImage(const CDcmObject& source, CDcmObject& target) const = 0;
    /// Puts the texts that are not empty over what the object has.
    virtual void ApplySettings(const _USER_SETTING_INFO& settings, CDcmObject& target) const = 0;
    virtual void ApplyRecord(const CXGSPSInfo& record, CDcmObject& target) const = 0;
    /// Whether these settings ask for an object that may have Pixel Data.
    [[nodiscard]] virtual bool AllowPixels(const _USER_SETTING_INFO* settings) const = 0;
    /// Puts the frames, and all that describes them, into `target`, which changes only when all is
    /// done.
    /// @return as `CxDcmMaker::MakeDcmObject`
    virtual QUORVEX_MESSAGE MakePixels(const NewImage& image, FrameSupply& frames,
                                       CDcmObject& target) const = 0;
};

[[nodiscard]] const MakingRules& MakingRulesOf(Rules rules) noexcept;

/// A new object with all but its pixel attributes. `settings` may be null, and win over the source.
/// @return as `FillSkeleton`; `made` is null on failure
QUORVEX_MESSAGE MakeBasicObject(const MakingRules& rules, const CDcmObject& source,
                                const _USER_SETTING_INFO* settings,
                                std::unique_ptr<CDcmObject>& made);

}  // namespace quorvex
