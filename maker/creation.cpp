#include "foundation/types/answer.h"
#include "maker/frame_supply.h"
#include "maker/pixel_attributes.h"
#include "quorvex/CxDcmMaker.h"

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

CxDcmMaker::CxDcmMaker() = default;
CxDcmMaker::~CxDcmMaker() = default;

void CxDcmMaker::ReleaseFrames() noexcept {
    param.frames.RemoveAll();
    param.format = nullptr;
    ownFrames.clear();
    ownFormat.reset();
}

QUORVEX_MESSAGE CxDcmMaker::DcmMakerInit(CDcmObject* source, _USER_SETTING_INFO* settings,
                                         _FRAME_INFO* frameInfo) {
    if (source == nullptr) return QVM_ERROR_NO_SOURCE_OBJECT;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        CDcmObject* made = nullptr;
        MakeBasicObject(source, settings, made);
        std::unique_ptr<CDcmObject> basic(made);
        auto format = MakeFormat(*source, settings, frameInfo);
        ReleaseFrames();
        unfinished = std::move(basic);
        object = unfinished.get();
        ownFormat = std::move(format);
        param.format = ownFormat.get();
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmMaker::AddFrame(unsigned char* pixels) {
    if (ownFormat == nullptr) return QVM_ERROR_NO_PIXEL_INFO;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        auto frame = std::make_unique<_DCM_FRAME_BUFFER>();
        frame->rawLength = FrameBytes(*ownFormat).value_or(0);
        ownFrames.push_back(std::move(frame));
        param.frames.Add(ownFrames.back().get());
        ownFrames.back()->rawData = pixels;  // last: nothing after this line can fail
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmMaker::MakeDcmPixelObject(_DCM_MAKER_PARAM* maker, CDcmObject*& target) {
    if (maker == nullptr) return QVM_ERROR_INVALID_MAKER_PARAM;
    if (maker->frames.GetSize() == 0) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    if (maker->format == nullptr) return QVM_ERROR_NO_PIXEL_INFO;
    if (target == nullptr) {
        unfinished = std::make_unique<CDcmObject>();
        unfinished->Open("temp.dcm");
        target = unfinished.get();
    }
    _DCM_PIXEL_INFO format = *maker->format;
    if (quality != 0) format.quality = quality;
    ListedFrames frames(maker->frames);
    return MakePixels(format, frames, *target);
}

QUORVEX_MESSAGE CxDcmMaker::MakeDcmObject(CDcmObject*& result) {
    outcome = Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA,
                     [&] { return MakeDcmPixelObject(&param, object); });
    if (outcome != QVM_SUCCESS) return outcome;
    result = unfinished.release();
    ReleaseFrames();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CxDcmMaker::MakeDcmObject(CDcmObject* source, _USER_SETTING_INFO* settings,
                                          _FRAME_INFO* frameInfo, unsigned char* pixels,
                                          CDcmObject*& result) {
    outcome = DcmMakerInit(source, settings, frameInfo);
    if (outcome == QVM_SUCCESS) outcome = AddFrame(pixels);
    if (outcome != QVM_SUCCESS) return outcome;
    if (MakeDcmObject(result) != QVM_SUCCESS) ReleaseFrames();
    return QVM_SUCCESS;
}

}  // namespace quorvex
