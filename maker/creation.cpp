#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "maker/object_maker.h"
#include "maker/pixels/pixel_attributes.h"
#include "maker/rules/key_objects.h"
#include "maker/rules/making_rules.h"
#include "maker/rules/standard_image.h"
#include "maker/rules/standard_settings.h"

#include <algorithm>
#include <span>
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

/// Frames that a host lends for as long as an object is made.
class LentFrames final : public FrameSupply {
public:
    LentFrames(const unsigned char* const* frames, int count, std::size_t bytes)
        : frames_(frames), count_(count), bytes_(bytes) {}

    [[nodiscard]] int Count() const override { return count_; }
    QUORVEX_MESSAGE Fetch(int index, _DCM_FRAME_BUFFER*& frame) override {
        if (frames_[index] == nullptr) return QVM_ERROR_NULL_SOURCE;
        HeapBlock copy(bytes_);
        std::copy_n(frames_[index], bytes_, copy.Data());
        delete[] std::exchange(frame_.rawData, copy.Release());
        frame_.rawLength = bytes_;
        frame = &frame_;
        return QVM_SUCCESS;
    }
    [[nodiscard]] bool HoldsBitmaps() const noexcept override { return true; }

private:
    const unsigned char* const* frames_;
    int count_;
    std::size_t bytes_;
    _DCM_FRAME_BUFFER frame_;
};

std::unique_ptr<CDcmObject> WithoutPixels(const CDcmObject& source) {
    auto copy = std::make_unique<CDcmObject>(source);
    copy->RemoveValue(tag::kPixelData);
    return copy;
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

QUORVEX_MESSAGE ObjectMaker::Start(const CDcmObject& source, const _USER_SETTING_INFO* settings,
                                   const _FRAME_INFO* frameInfo) {
    const MakingRules& making = MakingRulesOf(rules);
    std::unique_ptr<CDcmObject> basic;
    const auto result = MakeBasicObject(making, source, settings, basic);
    if (result != QVM_SUCCESS) return result;
    auto format = MakeFormat(source, settings, frameInfo);
    auto withoutPixels = WithoutPixels(source);
    auto choices = std::make_unique<_USER_SETTING_INFO>();
    if (settings != nullptr) *choices = *settings;
    ReleaseFrames();
    source_ = std::move(withoutPixels);
    settings_ = std::move(choices);
    begunBy_ = rules;
    isDescribedByHost_ = frameInfo != nullptr;
    unfinished_ = std::move(basic);
    object_ = unfinished_.get();
    ownFormat_ = std::move(format);
    param_.format = ownFormat_.get();
    return QVM_SUCCESS;
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
    if (maker->frames.GetSize() == 0)
        return IsKeyObject() ? MakeKeyObject(target) : QVM_ERROR_INVALID_IMAGE_FORMAT;
    if (maker->format == nullptr) return QVM_ERROR_NO_PIXEL_INFO;
    if (target == nullptr) {
        unfinished_ = std::make_unique<CDcmObject>();
        unfinished_->Open("temp.dcm");
        target = unfinished_.get();
    }
    const MakingRules& making = MakingRulesOf(begunBy_);
    if (!making.AllowPixels(settings_.get())) return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    ListedFrames frames(maker->frames);
    const NewImage image{.source = *source_,
                         .format = *maker->format,
                         .isDescribedByHost = isDescribedByHost_,
                         .quality = quality};
    return making.MakePixels(image, frames, *target);
}

bool ObjectMaker::IsKeyObject() const {
    if (begunBy_ != Rules::kStandard || !IsStarted()) return false;
    const StorageClass* chosen = DocumentClassOf(*settings_);
    return chosen != nullptr && CString(ModalityOf(*chosen)) == CString("KO");
}

QUORVEX_MESSAGE ObjectMaker::MakeKeyObject(CDcmObject*& target) {
    CDcmObject* const source = source_.get();
    std::unique_ptr<CDcmObject> document;
    const auto result =
        MakeKeyObjectDocument(std::span(&source, 1), _KEY_OBJECT_INFO(), settings_.get(), document);
    if (result != QVM_SUCCESS) return result;
    unfinished_ = std::move(document);
    target = unfinished_.get();
    return QVM_SUCCESS;
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
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM,
                  [&] { return maker_->Start(*source, settings, frameInfo); });
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

QUORVEX_MESSAGE CxDcmMaker::MakeSecondaryCapture(CDcmObject* source, _USER_SETTING_INFO* settings,
                                                 _FRAME_INFO* frameInfo,
                                                 const unsigned char* const* frames, int count,
                                                 CDcmObject*& result) {
    const auto make = [&]() -> QUORVEX_MESSAGE {
        if (source == nullptr) return QVM_ERROR_NO_SOURCE_OBJECT;
        if (frameInfo == nullptr) return QVM_ERROR_NO_PIXEL_INFO;
        if (frames == nullptr || count < 1) return QVM_ERROR_INVALID_IMAGE_FORMAT;
        const MakingRules& making = MakingRulesOf(Rules::kStandard);
        if (!making.AllowPixels(settings)) return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
        std::unique_ptr<CDcmObject> made;
        const auto begun = MakeBasicObject(making, *source, settings, made);
        if (begun != QVM_SUCCESS) return begun;
        const auto format = MakeFormat(*source, settings, frameInfo);
        LentFrames lent(frames, count, FrameBytes(*format).value_or(0));
        const auto withoutPixels = WithoutPixels(*source);
        const NewImage image{.source = *withoutPixels,
                             .format = *format,
                             .isDescribedByHost = true,
                             .quality = maker_->quality};
        const auto done = MakeStandardCapture(image, lent, *made);
        if (done == QVM_SUCCESS) result = made.release();
        return done;
    };
    maker_->outcome = Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, make);
    return maker_->outcome;
}

QUORVEX_MESSAGE CxDcmMaker::MakeKeyObject(CDcmObject* const* objects, int count,
                                          _KEY_OBJECT_INFO* info, _USER_SETTING_INFO* settings,
                                          CDcmObject*& result) {
    if (objects == nullptr || count < 1) return QVM_ERROR_NO_SOURCE_OBJECT;
    return Answer(QVM_ERROR_INVALID_MAKER_PARAM, [&] {
        std::unique_ptr<CDcmObject> made;
        const auto done =
            MakeKeyObjectDocument(std::span(objects, static_cast<std::size_t>(count)),
                                  info != nullptr ? *info : _KEY_OBJECT_INFO(), settings, made);
        if (done == QVM_SUCCESS) result = made.release();
        return done;
    });
}

}  // namespace quorvex
