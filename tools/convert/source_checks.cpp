#include "tools/convert/source_checks.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/convert/refusal.h"
#include "tools/convert/stored_samples.h"
#include "tools/stored_image.h"

namespace quorvex::tools {
namespace {

unsigned short WordOf(const CDcmObject& object, std::uint32_t tag, unsigned short absent = 0) {
    return Read<unsigned short>(object, tag).value_or(absent);
}

bool HasPixels(const CDcmObject& object) {
    int count = 0;
    return object.GetValueCount(tag::kPixelData, count) == kDcmSuccess &&
           WordOf(object, tag::kRows) > 0 && WordOf(object, tag::kColumns) > 0;
}

MC_STATUS NoteCut(const DcmElementView& element, void* user) {
    auto& isCut = *static_cast<bool*>(user);
    isCut = isCut || element.isCut;
    return isCut ? kMcRefuse : kMcContinue;
}

bool IsNative(const CDcmObject& source) {
    TRANSFER_SYNTAX number = kSyntaxNone;
    source.GetTransferSyntax(number);
    const auto* syntax = TransferSyntaxOf(number);
    return syntax != nullptr && !syntax->isEncapsulated;
}

// Whether native Pixel Data holds less than its header says. A header can claim at most
// 65535^4 x 2^31 bits, which a double holds well enough to compare.
bool LacksNativePixels(const CDcmObject& source) {
    unsigned long length = 0;
    if (!IsNative(source) || source.GetValueLength(tag::kPixelData, 1, length) != kDcmSuccess)
        return false;
    const bool isSubsampled =
        TextOf(source, tag::kPhotometricInterpretation).find("_42") != std::string::npos;
    double bits = isSubsampled ? 2.0 : WordOf(source, tag::kSamplesPerPixel, 1);
    for (const auto tag : {tag::kRows, tag::kColumns, tag::kBitsAllocated})
        bits *= WordOf(source, tag);
    return static_cast<double>(length) * 8.0 < bits * FramesOf(source);
}

// A decoder fills up what is missing, and the output would look whole.
void RefuseWhatIsCut(const CDcmObject& source) {
    bool isCut = false;
    source.WalkElements(&isCut, NoteCut);
    if (isCut) throw BadInput(QVM_ERROR_FAILED_TO_READ_FILE, "the file ends before its data does");
    if (LacksNativePixels(source))
        throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                       "there are fewer pixels than the header says");
}

// What a lossy coder cannot take, or would change beyond its own noise.
void RefuseWhatTheCoderCannotHold(CDcmObject& source, const ConvertTarget& target) {
    constexpr long kHighest12 = 4095;
    const QUORVEX_XFERSYNTAX form = target.syntax->form;
    if (form != kXferJpegBaseline && form != kXferJpegExtended) return;
    const unsigned short bits = WordOf(source, tag::kBitsAllocated);
    if (form == kXferJpegBaseline && bits > 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "JPEG Baseline holds 8 bits, and the image has more");
    if (form == kXferJpegExtended && bits <= 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "12-bit JPEG is for more than 8 bits, and the image has no more");
    if (WordOf(source, tag::kPixelRepresentation) != 0)
        throw BadInput(QVM_ERROR_INVALID_PIXEL_REPRESENTATION,
                       "lossy JPEG cannot hold signed values");
    const auto limits = LimitsOf(source);
    Require(limits.result);
    if (form == kXferJpegExtended && limits.highest > kHighest12)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED, "values above " + std::to_string(kHighest12) +
                                                          " cannot be coded with 12 bits");
}

}  // namespace

int FramesOf(const CDcmObject& object) {
    return Read<int>(object, tag::kNumberOfFrames).value_or(1);
}

void RefuseUnfitSource(CDcmObject& source, const ConvertTarget& target) {
    if (!HasPixels(source)) throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    RefuseWhatIsCut(source);
    RefuseWhatTheCoderCannotHold(source, target);
}

}  // namespace quorvex::tools
