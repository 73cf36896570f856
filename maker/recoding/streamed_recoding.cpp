#include "maker/recoding/streamed_recoding.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/data_set.h"
#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/object/object_state.h"
#include "foundation/types/answer.h"
#include "foundation/types/limits.h"
#include "maker/recoding/jpeg_streams.h"
#include "maker/recoding/nested_pixels.h"

#include <array>
#include <utility>

namespace quorvex {
namespace {

constexpr unsigned char kPad[] = {0};

/// Native Pixel Data without frames yet.
void PutNoPixels(bool areWords, CDcmObject& object) {
    object.RemoveValue(tag::kExtendedOffsetTable);
    object.RemoveValue(tag::kExtendedOffsetTableLengths);
    dicom::DataSet& dataSet = ObjectState::Of(object).Writable();
    const dicom::Element* present = dataSet.Find(tag::kPixelData);
    const MC_VR vr = present == nullptr ? MC_VR_OB : present->vr;
    dataSet.PutBytes(tag::kPixelData, areWords ? MC_VR_OW : vr, {});
}

void PutItemHeader(std::size_t length, dicom::ByteSink& sink) {
    dicom::ByteBuffer header;
    dicom::AppendNumber(header, static_cast<std::uint16_t>(tag::kItem >> 16U));
    dicom::AppendNumber(header, static_cast<std::uint16_t>(tag::kItem & 0xFFFFU));
    dicom::AppendNumber(header, static_cast<std::uint32_t>(length + length % 2));
    sink.Put(header);
}

}  // namespace

/// A parser corrects the header that it is given, and the plan goes by what it has understood.
QUORVEX_MESSAGE StreamedRecoding::Plan(const CDcmObject& outline, const DcmConversionWish& wish) {
    TRANSFER_SYNTAX from = kSyntaxNone;
    if (outline.GetTransferSyntax(from) != kDcmSuccess) return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    if (KeepsJpegStreams(wish.form)) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    CDcmApp app;
    CDcmObject source = outline;
    CxDcmParser understood;
    understood.SetRules(Rules::kStandard);
    auto result = understood.Initialize(&app, &source, nullptr, 0, 0);
    const RecodingWish recoding{.form = wish.form, .quality = wish.quality};
    if (result == QVM_SUCCESS) result = PlanRecoding(source, from, recoding, plan_);
    if (result == QVM_SUCCESS && plan_.keepsFrames) return QVM_FRAME_COPIED;
    return result;
}

QUORVEX_MESSAGE StreamedRecoding::MakeHeader(TRANSFER_SYNTAX from, const DcmConversionWish& wish) {
    if (object_.SetTransferSyntax(plan_.to->number) != kDcmSuccess)
        return QVM_ERROR_INVALID_TRANSFER_SYNTAX;
    const auto result = DecodeNestedPixels(from, object_);
    if (result != QVM_SUCCESS) return result;
    DescribeRecoded(plan_, RatioOf(PlainBytes(), wish.storedBytes), object_);
    if (plan_.to->isEncapsulated) {
        dicom::PutFrameTable(object_, std::vector<std::uint64_t>(frames_));
    } else {
        PutNoPixels(plan_.forms.bitsAllocated > 8, object_);
    }
    auto around = dicom::WriteAroundPixels(object_, PlainBytes());
    if (!around) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    around_ = std::move(*around);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE StreamedRecoding::Begin(CxDcmParser& parser, const CDcmObject& outline,
                                        const DcmConversionWish& wish, const std::string& path) {
    auto result = Plan(outline, wish);
    if (result != QVM_SUCCESS) return result;
    const int count = parser.GetFrameCount();
    if (count < 1 || (count > kMostFrames && !RefuseBy(Limit::kMostFrames)))
        return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const bool isOfWords = plan_.forms.bitsAllocated != 1 || plan_.to->isEncapsulated;
    if (!isOfWords || plan_.to->isDeflated) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    frames_ = static_cast<std::size_t>(count);
    if (plan_.from->isEncapsulated && !IsPlausible(PlainBytes(), wish.storedBytes))
        return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    if (!plan_.to->isEncapsulated && PlainBytes() > kLongestValue)
        return QVM_ERROR_INVALID_TARGET_SYNTAX;
    object_ = outline;
    result = MakeHeader(plan_.from->number, wish);
    if (result != QVM_SUCCESS) return result;
    if (plan_.forms.samplesPerPixel == 3)
        parser.GetHeader()->SetValue(tag::kPhotometricInterpretation, plan_.readAs);
    path_ = path;
    file_ = std::make_unique<dicom::OutputFile>(path_);
    file_->Put(around_.ahead);
    return file_->IsOpen() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
}

QUORVEX_MESSAGE StreamedRecoding::Code(CxDcmParser& parser, int frame,
                                       std::vector<unsigned char>& coded) const {
    if (!file_) return QVM_ERROR_NO_PIXEL_INFO;
    std::unique_ptr<unsigned char[]> stored;
    unsigned long size = 0;
    const auto result = FetchStoredFrame(parser, frame, plan_.frameBytes, stored, size);
    if (result != QVM_SUCCESS) return result;
    if (plan_.to->isEncapsulated) return CodeOne(plan_, {stored.get(), size}, coded);
    coded.assign(stored.get(), stored.get() + size);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE StreamedRecoding::Add(const std::vector<unsigned char>& coded) {
    if (!file_ || lengths_.size() == frames_) return QVM_ERROR_NO_PIXEL_INFO;
    const bool isItem = plan_.to->isEncapsulated;
    if (!isItem && coded.size() != plan_.frameBytes) return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    if (coded.size() > kLongestValue && !RefuseBy(Limit::kLongestValue))
        return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    lengths_.push_back(coded.size());
    codedBytes_ += coded.size();
    if (isItem) PutItemHeader(coded.size(), *file_);
    file_->Put(coded);
    const bool isLast = lengths_.size() == frames_;
    const bool isOdd = isItem ? coded.size() % 2 != 0 : isLast && PlainBytes() % 2 != 0;
    if (isOdd) file_->Put(kPad);
    return file_->IsGood() ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
}

QUORVEX_MESSAGE StreamedRecoding::DescribeAll() {
    if (!plan_.to->isEncapsulated) return QVM_SUCCESS;
    dicom::PutFrameTable(object_, lengths_);
    return DescribeLoss(plan_, RatioOf(PlainBytes(), codedBytes_), object_);
}

bool StreamedRecoding::Finish() {
    auto final = dicom::WriteAroundPixels(object_, PlainBytes());
    if (!final) return false;
    const auto file = std::exchange(file_, nullptr);
    if (final->ahead.size() == around_.ahead.size()) {
        file->PutAt(0, final->ahead);
        file->Put(final->behind);
        return file->Commit();
    }
    dicom::OutputFile other(path_);
    other.Put(final->ahead);
    other.PutRestOf(*file, around_.ahead.size());
    other.Put(final->behind);
    return other.Commit();
}

QUORVEX_MESSAGE StreamedRecoding::End(CDcmObject* result) {
    if (!file_ || lengths_.size() != frames_) return QVM_ERROR_NO_PIXEL_INFO;
    const auto described = DescribeAll();
    if (described != QVM_SUCCESS) return described;
    if (!Finish()) return QVM_ERROR_FAILED_TO_SET_PIXEL_DATA;
    if (result != nullptr) *result = object_;
    return QVM_SUCCESS;
}

CxDcmConversion::CxDcmConversion() : recoding_(std::make_unique<StreamedRecoding>()) {}
CxDcmConversion::~CxDcmConversion() = default;

QUORVEX_MESSAGE CxDcmConversion::Begin(CxDcmParser& parser, const CDcmObject& outline,
                                       const DcmConversionWish& wish, const CString& path) {
    return Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] {
        recoding_ = std::make_unique<StreamedRecoding>();
        if (parser.GetHeader() == nullptr) return QVM_ERROR_FAILED_TO_PARSE_DICOM;
        const auto result = recoding_->Begin(parser, outline, wish, path.ToUtf8());
        if (result != QVM_SUCCESS) recoding_ = std::make_unique<StreamedRecoding>();
        return result;
    });
}

QUORVEX_MESSAGE CxDcmConversion::Code(CxDcmParser& parser, int frame,
                                      std::vector<unsigned char>& coded) const {
    return Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA,
                  [&] { return recoding_->Code(parser, frame, coded); });
}

QUORVEX_MESSAGE CxDcmConversion::Add(const std::vector<unsigned char>& coded) {
    return Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] { return recoding_->Add(coded); });
}

QUORVEX_MESSAGE CxDcmConversion::End(CDcmObject* result) {
    return Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] { return recoding_->End(result); });
}

void CxDcmConversion::Abandon() noexcept {
    recoding_->Abandon();
}

}  // namespace quorvex
