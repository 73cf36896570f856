#include "foundation/types/answer.h"
#include "maker/export.h"
#include "maker/object_maker.h"
#include "maker/pixel_attributes.h"
#include "maker/skeleton.h"

#include <utility>

namespace quorvex {
namespace {

/// The frames that a host has added.
class ListedFrames final : public FrameSupply {
public:
    explicit ListedFrames(const CPtrArray& frames) : frames_(frames) {}

    [[nodiscard]] int Count() const override { return frames_.GetSize(); }
    QUORVEX_MESSAGE Fetch(int index, _DCM_FRAME_BUFFER*& frame) override {
        frame = static_cast<_DCM_FRAME_BUFFER*>(frames_[index]);
        return QVM_SUCCESS;
    }
    [[nodiscard]] bool HoldsBitmaps() const noexcept override { return true; }

private:
    const CPtrArray& frames_;
};

void Describe(const _FRAME_INFO& frame, const CDcmObject& source, _DCM_PIXEL_INFO& format) {
    if (frame.samplesPerPixel == 1 && frame.bitsAllocated == 16) ReadRescale(source, format);
    format.samplesPerPixel = frame.samplesPerPixel;
    format.photometricInterpretation =
        frame.samplesPerPixel > 1 ? CString("RGB") : frame.photometricInterpretation;
    format.planarConfiguration = 0;
    format.rows = frame.rows;
    format.columns = frame.columns;
    format.pixelSpacing[0] = frame.pixelSpacing[0];
    format.pixelSpacing[1] = frame.pixelSpacing[1];
    format.bitsAllocated = frame.bitsAllocated;
    format.bitsStored = frame.bitsStored;
    format.highBit = static_cast<std::uint16_t>(frame.bitsStored - 1);
    format.pixelRepresentation = frame.pixelRepresentation;
    format.windowCenter = frame.windowCenter;
    format.windowWidth = frame.windowWidth;
}

std::unique_ptr<_DCM_PIXEL_INFO> MakeFormat(const CDcmObject& source,
                                            const _USER_SETTING_INFO* settings,
                                            const _FRAME_INFO* frameInfo) {
    auto format = std::make_unique<_DCM_PIXEL_INFO>();
    format->transferSyntax = kExplicitLittleEndian;
    format->compressionType = kXferUncompressed;
    if (settings != nullptr && settings->compressionType != 0)
        format->compressionType = settings->compressionType;
    if (frameInfo != nullptr) {
        Describe(*frameInfo, source, *format);
    } else {
        ReadRescale(source, *format);
        ReadPixelInfo(source, *format);
    }
    return format;
}

}  // namespace

void ObjectMaker::Start(const CDcmObject& source, const _USER_SETTING_INFO* settings,
                        const _FRAME_INFO* frameInfo) {
    auto basic = MakeBasicObject(source, settings);
    auto format = MakeFormat(source, settings, frameInfo);
    ReleaseFrames();
    unfinished_ = std::move(basic);
    object_ = unfinished_.get();
    ownFormat_ = std::move(format);
    param_.format = ownFormat_.get();
}

void ObjectMaker::Add(unsigned char* pixels) {
    auto frame = std::make_unique<_DCM_FRAME_BUFFER>();
    frame->rawLength = FrameBytes(*ownFormat_).value_or(0);
    ownFrames_.push_back(std::move(frame));
    param_.frames.Add(ownFrames_.back().get());
    ownFrames_.back()->rawData = pixels;  // last: nothing after this line can fail
}

QUORVEX_MESSAGE ObjectMaker::MakeDcmPixelObject(const _DCM_MAKER_PARAM* maker,
                                                CDcmObject*& target) {
    if (maker == nullptr) return QVM_ERROR_INVALID_MAKER_PARAM;
    if (maker->frames.GetSize() == 0) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    if (maker->format == nullptr) return QVM_ERROR_NO_PIXEL_INFO;
    if (target == nullptr) {
        unfinished_ = std::make_unique<CDcmObject>();
        unfinished_->Open("temp.dcm");
        target = unfinished_.get();
    }
    _DCM_PIXEL_INFO format = *maker->format;
    if (quality != 0) format.quality = quality;
    ListedFrames frames(maker->frames);
    return MakePixels(format, frames, *target);
}

std::unique_ptr<CDcmObject> ObjectMaker::Finish() noexcept {
    ReleaseFrames();
    return std::move(unfinished_);
}

void ObjectMaker::ReleaseFrames() noexcept {
    param_.frames.RemoveAll();
    param_.format = nullptr;
    ownFrames_.clear();
    ownFormat_.reset();
}

CxDcmMaker::CxDcmMaker() : maker_(std::make_unique<ObjectMaker>()) {}
CxDcmMaker::~CxDcmMaker() = default;

QUORVEX_MESSAGE CxDcmMaker::GetOutcome() const noexcept {
    return maker_->outcome;
}
void CxDcmMaker::SetProgress(FrameProgressCallback callback, void* user) noexcept {
    maker_->progress = {.callback = callback, .user = user};
}

void CxDcmMaker::SetRules(Rules rules) noexcept {
    maker_->rules = rules;
}
void CxDcmMaker::SetQuality(std::uint16_t quality) noexcept {
    maker_->quality = quality;
}
std::uint16_t CxDcmMaker::GetQuality() const noexcept {
    return maker_->quality;
}

QUORVEX_MESSAGE CxDcmMaker::DcmMakerInit(CDcmObject* source, _USER_SETTING_INFO* settings,
                                         _FRAME_INFO* frameInfo) {
    if (source == nullptr) return QVM_ERROR_NO_SOURCE_OBJECT;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        maker_->Start(*source, settings, frameInfo);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmMaker::AddFrame(unsigned char* pixels) {
    if (!maker_->IsStarted()) return QVM_ERROR_NO_PIXEL_INFO;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        maker_->Add(pixels);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmMaker::MakeDcmObject(CDcmObject*& result) {
    maker_->outcome =
        Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] { return maker_->MakeDcmPixelObject(); });
    if (maker_->outcome == QVM_SUCCESS) result = maker_->Finish().release();
    return maker_->outcome;
}

QUORVEX_MESSAGE CxDcmMaker::MakeDcmObject(CDcmObject* source, _USER_SETTING_INFO* settings,
                                          _FRAME_INFO* frameInfo, unsigned char* pixels,
                                          CDcmObject*& result) {
    auto begun = DcmMakerInit(source, settings, frameInfo);
    if (begun == QVM_SUCCESS) begun = AddFrame(pixels);
    if (begun != QVM_SUCCESS) {
        maker_->outcome = begun;
        return begun;
    }
    if (MakeDcmObject(result) != QVM_SUCCESS) maker_->ReleaseFrames();
    return QVM_SUCCESS;
}

}  // namespace quorvex
