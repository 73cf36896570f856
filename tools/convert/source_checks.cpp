#include "tools/convert/source_checks.h"

#include "quorvex/Tags.h"
#include "tools/convert/verify.h"
#include "tools/report.h"

namespace quorvex::tools {
namespace {

bool HasPixels(const CDcmObject& object) {
    int count = 0;
    unsigned short rows = 0;
    unsigned short columns = 0;
    return object.GetValueCount(tag::kPixelData, count) == kDcmSuccess &&
           object.GetValue(tag::kRows, rows) == kDcmSuccess && rows > 0 &&
           object.GetValue(tag::kColumns, columns) == kDcmSuccess && columns > 0;
}

MC_STATUS NoteCut(const DcmElementView& element, void* user) {
    auto& isCut = *static_cast<bool*>(user);
    isCut = isCut || element.isCut;
    return isCut ? kMcRefuse : kMcContinue;
}

unsigned long CountOf(const CDcmObject& object, std::uint32_t tag, unsigned long absent) {
    unsigned short count = 0;
    return object.GetValue(tag, count) == kDcmSuccess ? count : absent;
}

// Whether native Pixel Data holds less than its header says. At most 65535^3 x 65535 x 2^31 bits
// are told there, which a double holds well enough to compare.
bool LacksNativePixels(const CDcmObject& source) {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    unsigned long length = 0;
    source.GetTransferSyntax(syntax);
    const auto* row = TransferSyntaxOf(syntax);
    if (row == nullptr || row->isEncapsulated ||
        source.GetValueLength(tag::kPixelData, 1, length) != kDcmSuccess)
        return false;
    const bool isSubsampled =
        TextOf(source, tag::kPhotometricInterpretation).find("_42") != std::string::npos;
    double bits =
        isSubsampled ? 2.0 : static_cast<double>(CountOf(source, tag::kSamplesPerPixel, 1));
    for (const std::uint32_t tag : {tag::kRows, tag::kColumns, tag::kBitsAllocated})
        bits *= static_cast<double>(CountOf(source, tag, 0));
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
    unsigned short bits = 0;
    source.GetValue(tag::kBitsAllocated, bits);
    if (form == kXferJpegBaseline && bits > 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "JPEG Baseline holds 8 bits, and the image has more");
    if (form == kXferJpegExtended && bits <= 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "12-bit JPEG is for more than 8 bits, and the image has no more");
    unsigned short isSigned = 0;
    source.GetValue(tag::kPixelRepresentation, isSigned);
    if (isSigned != 0)
        throw BadInput(QVM_ERROR_INVALID_PIXEL_REPRESENTATION,
                       "lossy JPEG cannot hold signed values");
    const auto limits = LimitsOf(source);
    Require(limits.result);
    if (form == kXferJpegExtended && limits.highest > kHighest12)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED,
                       "values above 4095 cannot be coded with 12 bits");
}

}  // namespace

Refusal BadInput(QUORVEX_MESSAGE code) {
    return {Outcome::kBad, code, NamedSentenceOf(code)};
}

Refusal BadInput(QUORVEX_MESSAGE code, const std::string& sentence) {
    return {Outcome::kBad, code, sentence};
}

void Require(QUORVEX_MESSAGE result) {
    if (result != QVM_SUCCESS) throw BadInput(result);
}

std::string TextOf(const CDcmObject& object, std::uint32_t tag) {
    CString text;
    return object.GetValue(tag, text) == kDcmSuccess ? text.ToUtf8() : std::string();
}

int FramesOf(const CDcmObject& object) {
    int frames = 1;
    object.GetValue(tag::kNumberOfFrames, frames);
    return frames;
}

void RefuseUnfitSource(CDcmObject& source, const ConvertTarget& target) {
    if (!HasPixels(source)) throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    RefuseWhatIsCut(source);
    RefuseWhatTheCoderCannotHold(source, target);
}

}  // namespace quorvex::tools
