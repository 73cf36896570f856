#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "maker/object_change.h"
#include "maker/object_maker.h"
#include "maker/pixels/export.h"
#include "maker/pixels/pixel_attributes.h"
#include "maker/recoding/recoding.h"
#include "maker/rules/making_rules.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

constexpr std::uint16_t kConversionQuality = 1;

/// Whether an object in this syntax is in this form already. The uncompressed forms count as one,
/// and big-endian and deflated objects are in none.
bool IsInForm(TRANSFER_SYNTAX syntax, std::int32_t compressionType) {
    const auto* row = TransferSyntaxOf(syntax);
    if (row == nullptr || row->form == 0 || row->isDeflated) return false;
    const auto form = static_cast<QUORVEX_XFERSYNTAX>(compressionType);
    const auto* wanted = TransferSyntaxOf(form);
    if (form == kXferDeflated) return false;
    const bool areNative = wanted != nullptr && !wanted->isEncapsulated && !row->isEncapsulated;
    return areNative || row->form == form;
}

/// The frames of an object, decoded one at a time.
class FetchedFrames final : public FrameSupply {
public:
    FetchedFrames(CxDcmParser& parser, std::size_t frameBytes, const ConversionProgress& progress)
        : parser_(parser), frameBytes_(frameBytes), progress_(progress) {}

    [[nodiscard]] int Count() const override { return parser_.GetFrameCount(); }
    QUORVEX_MESSAGE Fetch(int index, _DCM_FRAME_BUFFER*& frame) override {
        delete[] std::exchange(frame_.rawData, nullptr);
        if (parser_.GetSampleType() != SampleType::kInteger)
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        const auto result = parser_.GetAFrame(index, frame_.rawData, frame_.rawLength, 0);
        if (result != QVM_SUCCESS) return result;
        frame = &frame_;
        if (frame_.rawLength != frameBytes_) return QVM_ERROR_INVALID_BITS_ALLOCATED;
        return progress_.Report(index + 1, Count());
    }
    [[nodiscard]] bool HoldsBitmaps() const noexcept override { return false; }

private:
    CxDcmParser& parser_;
    std::size_t frameBytes_;
    const ConversionProgress& progress_;
    _DCM_FRAME_BUFFER frame_;
};

/// Whether a fetch converts colour by its photometric text: a text that the conversion does not
/// know leaves the frame black.
bool GoesByPhotometric(TRANSFER_SYNTAX syntax) {
    const FrameCoding coding = CodingOf(syntax);
    return coding == FrameCoding::kNative || coding == FrameCoding::kRle ||
           coding == FrameCoding::kDeflated || coding == FrameCoding::kFragment;
}

bool IsColourReadable(const _DCM_PIXEL_INFO& format, TRANSFER_SYNTAX syntax) {
    constexpr const char* kByteForms[] = {"YBR_FULL", "YBR_FULL_422", "YBR_PARTIAL_422"};
    const CString& text = format.photometricInterpretation;
    if (!GoesByPhotometric(syntax) || text == CString("RGB")) return true;
    return format.bitsAllocated == 8 &&
           std::ranges::any_of(kByteForms, [&](const char* form) { return text == CString(form); });
}

/// Whether whole bytes hold a frame, and nothing of the next one.
bool EndsWithAByte(const _DCM_PIXEL_INFO& format) {
    const std::uint64_t pixels = std::uint64_t{format.rows} * format.columns;
    return pixels % 8 * format.samplesPerPixel % 8 * format.bitsAllocated % 8 == 0;
}

MC_STATUS CountBytes(int, std::uint32_t, void* user, int, unsigned long length, unsigned char*, int,
                     int) {
    *static_cast<std::size_t*>(user) += length;
    return kMcContinue;
}

/// Coded frames may be far smaller than pictures, but a few bytes make no pictures of gigabytes.
bool ArePlausible(const CDcmObject& object, TRANSFER_SYNTAX syntax, std::size_t frameBytes,
                  int count) {
    const std::size_t all = frameBytes * static_cast<std::size_t>(count);
    if (!IsEncapsulated(syntax) || all <= kObjectAllowance) return true;
    std::size_t stored = 0;
    object.GetValueEx(tag::kPixelData, &stored, CountBytes);
    return all / kMostObjectPerByte <= stored || RefuseBy(Limit::kLargestObject);
}

/// Describes a decoded frame of the object; refuses frames that would come out changed.
QUORVEX_MESSAGE DescribeDecoded(const CDcmObject& object, TRANSFER_SYNTAX syntax,
                                _DCM_PIXEL_INFO& format) {
    const auto* row = TransferSyntaxOf(syntax);
    const bool isExplicit = row != nullptr && row->isExplicit && !row->isEncapsulated;
    format.transferSyntax = isExplicit ? kExplicitLittleEndian : kImplicitLittleEndian;
    ReadPixelInfo(object, format);
    if (format.samplesPerPixel == kUnset) format.samplesPerPixel = 1;
    if (format.samplesPerPixel != 1 && format.samplesPerPixel != 3)
        return QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    if (!EndsWithAByte(format)) return QVM_ERROR_INVALID_BITS_ALLOCATED;
    if (format.samplesPerPixel == 1) return QVM_SUCCESS;
    if (!IsColourReadable(format, syntax)) return QVM_ERROR_INVALID_PHOTOMETRIC;
    format.photometricInterpretation = "RGB";
    format.planarConfiguration = 0;
    return QVM_SUCCESS;
}

_DCM_PIXEL_INFO WantedFormat(const _USER_SETTING_INFO* settings, std::uint16_t quality) {
    _DCM_PIXEL_INFO format;
    format.compressionType = kXferUncompressed;
    if (settings != nullptr) format.compressionType = settings->compressionType;
    format.quality = quality == 0 ? kConversionQuality : quality;
    return format;
}

QUORVEX_MESSAGE ConvertPixels(CxDcmParser& parser, TRANSFER_SYNTAX syntax, _DCM_PIXEL_INFO format,
                              const ConversionProgress& progress, CDcmObject& target) {
    if (IsInForm(syntax, format.compressionType)) return QVM_FRAME_COPIED;
    const int count = parser.GetFrameCount();
    if (count < 1) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    if (count > kMostFrames && !RefuseBy(Limit::kMostFrames)) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const auto result = DescribeDecoded(*parser.GetHeader(), syntax, format);
    if (result != QVM_SUCCESS) return result;
    const std::size_t frameBytes = FrameBytes(format).value_or(0);
    if (!ArePlausible(*parser.GetHeader(), syntax, frameBytes, count))
        return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    FetchedFrames frames(parser, frameBytes, progress);
    return MakeEstablishedPixels(format, frames, target, target);
}

RecodingWish RecodingWishOf(const _USER_SETTING_INFO* settings, const ObjectMaker& maker) {
    RecodingWish wish{
        .form = kXferUncompressed, .quality = maker.quality, .progress = maker.progress};
    if (settings != nullptr) wish.form = static_cast<QUORVEX_XFERSYNTAX>(settings->compressionType);
    return wish;
}

/// Changes the object only when all is done.
QUORVEX_MESSAGE Recode(CxDcmParser& parser, TRANSFER_SYNTAX syntax, const RecodingWish& wish,
                       CDcmObject& object) {
    ObjectChange change(object);
    const auto result = RecodeByStandard(parser, syntax, wish, object);
    if (result == QVM_SUCCESS || result == QVM_FRAME_COPIED) change.Keep();
    return result;
}

/// Sets `outcome` by the Pixel Data; changes nothing when it answers with a failure or throws.
QUORVEX_MESSAGE Convert(CDcmApp& app, CDcmObject& object, const _USER_SETTING_INFO* settings,
                        ObjectMaker& maker) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    if (object.GetTransferSyntax(syntax) != kDcmSuccess) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    CDcmObject source = object;  // a parser corrects the header that it is given
    CxDcmParser parser;
    parser.SetRules(maker.rules);
    const auto result = parser.Initialize(&app, &source, nullptr, 0, 0);
    if (result != QVM_SUCCESS) return result;
    const MakingRules& rules = MakingRulesOf(maker.rules);
    const bool hasPixels = Read<CString>(object, tag::kRows).has_value();
    if (hasPixels && !rules.AllowPixels(settings)) return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    ObjectChange change(object);
    const auto ofPixels = Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] {
        return maker.rules == Rules::kStandard
                   ? Recode(parser, syntax, RecodingWishOf(settings, maker), object)
                   : ConvertPixels(parser, syntax, WantedFormat(settings, maker.quality),
                                   maker.progress, object);
    });
    if (settings != nullptr) rules.ApplySettings(*settings, object);
    if (settings != nullptr && !settings->fileName.IsEmpty()) object.RenameFile(settings->fileName);
    change.Keep();
    maker.outcome = ofPixels;
    return QVM_SUCCESS;
}

}  // namespace

QUORVEX_MESSAGE CxDcmMaker::MakeDcmObject(CDcmApp* app, CDcmObject* object,
                                          _USER_SETTING_INFO* settings) {
    if (app == nullptr || object == nullptr) {
        maker_->outcome = QVM_ERROR_INVALID_DCMAPP;
        return QVM_ERROR_INVALID_DCMAPP;
    }
    const auto result = Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA,
                               [&] { return Convert(*app, *object, settings, *maker_); });
    if (result != QVM_SUCCESS) maker_->outcome = result;
    return result;
}

}  // namespace quorvex
