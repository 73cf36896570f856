/// What a `CxDcmMaker` keeps between its operations.
#pragma once

#include "maker/conversion_progress.h"
#include "quorvex/CxDcmMaker.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex {

/// The object that is made frame by frame: started, given its frames, finished, started again.
class ObjectMaker {
public:
    /// Starts an object; what an earlier start left unfinished is released. Changes nothing when it
    /// fails or throws.
    /// @return as `CxDcmMaker::DcmMakerInit`
    QUORVEX_MESSAGE Start(const CDcmObject& source, const _USER_SETTING_INFO* settings,
                          const _FRAME_INFO* frameInfo);
    [[nodiscard]] bool IsStarted() const noexcept { return ownFormat_ != nullptr; }
    /// Takes the block over, unless it throws. Only between start and end.
    void Add(unsigned char* pixels);
    /// Writes the frames into the object.
    /// @return as `CxDcmMaker::MakeDcmObject`
    QUORVEX_MESSAGE MakeDcmPixelObject() { return MakeDcmPixelObject(&param_, object_); }
    /// Gives the object to the caller and drops the rest.
    [[nodiscard]] std::unique_ptr<CDcmObject> Finish() noexcept;
    void ReleaseFrames() noexcept;

    QUORVEX_MESSAGE outcome = QVM_SUCCESS;  ///< of the latest making or conversion
    std::uint16_t quality = 0;              ///< 0: the default of the operation
    Rules rules = Rules::kEstablished;
    ConversionProgress progress;

private:
    /// @param target  null: a new object is made for it
    QUORVEX_MESSAGE MakeDcmPixelObject(const _DCM_MAKER_PARAM* maker, CDcmObject*& target);

    /// Whether a Key Object Selection document was started, which has no frames.
    [[nodiscard]] bool IsKeyObject() const;
    QUORVEX_MESSAGE MakeKeyObject(CDcmObject*& target);

    CDcmObject* object_ = nullptr;  ///< the latest object, whoever owns it by now
    _DCM_MAKER_PARAM param_;        ///< refers to what the three below own
    std::unique_ptr<CDcmObject> unfinished_;
    std::unique_ptr<CDcmObject> source_;  ///< without its Pixel Data; null before a start
    Rules begunBy_ = Rules::kEstablished;
    std::unique_ptr<_USER_SETTING_INFO> settings_;  ///< null before a start
    bool isDescribedByHost_ = false;
    std::unique_ptr<_DCM_PIXEL_INFO> ownFormat_;
    std::vector<std::unique_ptr<_DCM_FRAME_BUFFER>> ownFrames_;
};

}  // namespace quorvex
