#include "codec/frame_coder.h"

#include "codec/jpeg2000/jpeg2000_route.h"
#include "foundation/engines/jpeg2000/high_throughput_encoding.h"
#include "foundation/raster/interleave.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>

namespace quorvex {

/// What codes the frames of one form.
struct FrameCoderRow {
    QUORVEX_XFERSYNTAX form{};
    int (FrameCoder::*codeGrey)() = nullptr;
    int (FrameCoder::*codeColour)() = nullptr;
    unsigned leastBits = 0;  ///< of Bits Allocated
    unsigned mostBits = 65535;
};

namespace {

constexpr FrameCoderRow kCoders[] = {
    {.form = kXferJpegBaseline,
     .codeGrey = &FrameCoder::CompressRawData2Jpeg_50_70,
     .codeColour = &FrameCoder::CompressRawData2Jpeg_50_70,
     .mostBits = 8},
    {.form = kXferJpegExtended,
     .codeGrey = &FrameCoder::CompressRawData2Jpeg_51_70,
     .codeColour = &FrameCoder::CompressRawData2Jpeg_51_70,
     .leastBits = 9},
    {.form = kXferJpegLossless,
     .codeGrey = &FrameCoder::CompressRawData2Jpeg_51_70,
     .codeColour = &FrameCoder::CompressRawData2Jpeg_50_70},
    {.form = kXferJpeg2000,
     .codeGrey = &FrameCoder::CompressRawData2J2K,
     .codeColour = &FrameCoder::CompressRawData2J2K},
    {.form = kXferJpeg2000Lossless,
     .codeGrey = &FrameCoder::CompressRawData2J2K,
     .codeColour = &FrameCoder::CompressRawData2J2K},
    {.form = kXferHtj2kLossless,
     .codeGrey = &FrameCoder::CompressRawData2J2K,
     .codeColour = &FrameCoder::CompressRawData2J2K},
    {.form = kXferHtj2kRpclLossless,
     .codeGrey = &FrameCoder::CompressRawData2J2K,
     .codeColour = &FrameCoder::CompressRawData2J2K},
    {.form = kXferHtj2k,
     .codeGrey = &FrameCoder::CompressRawData2J2K,
     .codeColour = &FrameCoder::CompressRawData2J2K},
};

/// Null for a form that nothing codes.
const FrameCoderRow* CoderOf(QUORVEX_XFERSYNTAX form) noexcept {
    const auto* row = std::ranges::find(kCoders, form, &FrameCoderRow::form);
    return row == std::end(kCoders) ? nullptr : row;
}

bool IsBuiltIn(QUORVEX_XFERSYNTAX form) noexcept {
    return !IsHighThroughput(form) || HasHighThroughputCoder();
}

constexpr int kCoded = 1;
constexpr std::uint32_t kLeastQuality = 1;
constexpr std::uint32_t kMostQuality = 1000;

bool IsUncompressedSource(TRANSFER_SYNTAX syntax) noexcept {
    return syntax == kImplicitLittleEndian || syntax == kExplicitLittleEndian ||
           syntax == kExplicitBigEndian;
}

}  // namespace

bool FrameCoder::IsKnownGrey() const noexcept {
    return frame_.Mentions(u"MONOCHROME1") || frame_.Mentions(u"MONOCHROME2") ||
           frame_.Mentions(u"PALETTE");
}

bool FrameCoder::IsRgb() const {
    constexpr std::u16string_view kRgb = u"RGB";
    return frame_.photometric.size() == kRgb.size() &&
           CString(frame_.photometric).CompareNoCase(CString(kRgb)) == 0;
}

bool FrameCoder::HasWholeSource() const noexcept {
    const auto frameBytes = frame_.FrameBytes(frame_.BytesPerSample());
    return frameBytes && *frameBytes > 0 && *frameBytes <= source_.size();
}

QUORVEX_MESSAGE FrameCoder::Check(const FrameCoderRow* coder) const {
    if (source_.data() == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (!IsUncompressedSource(frame_.transferSyntax)) return QVM_ERROR_INVALID_SOURCE_SYNTAX;
    if (coder == nullptr || !IsBuiltIn(coder->form)) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    if (!IsKnownGrey() && !IsRgb()) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const bool areBitsTaken =
        frame_.bitsAllocated >= coder->leastBits && frame_.bitsAllocated <= coder->mostBits;
    return areBitsTaken ? QVM_SUCCESS : QVM_ERROR_INVALID_IMAGE_FORMAT;
}

void FrameCoder::SetQuality() noexcept {
    frame_.quality = std::clamp(frame_.quality, kLeastQuality, kMostQuality);
    if (frame_.targetSyntax == kXferJpegLossless) frame_.quality = kLeastQuality;
    const auto quality = static_cast<float>(frame_.quality);
    if (frame_.targetSyntax == kXferJpegExtended) {
        SetQuantizationFactor(quality);
    } else {
        SetQualityFactor(quality);
    }
}

QUORVEX_MESSAGE FrameCoder::Code() {
    const FrameCoderRow* coder = CoderOf(frame_.targetSyntax);
    const QUORVEX_MESSAGE check = Check(coder);
    if (check != QVM_SUCCESS) return check;
    if (!HasWholeSource()) return QVM_ERROR_FAILED_TO_COMPRESS;
    Cancellation::OfThisThread().ThrowIfAsked();
    const FrameProgress progress;
    SetQuality();
    const auto code = IsKnownGrey() ? coder->codeGrey : coder->codeColour;
    const bool isCoded = (this->*code)() == kCoded && !coded_.empty();
    if (isCoded) progress.Finish();
    return isCoded ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_COMPRESS;
}

int FrameCoder::CompressRLEData(unsigned char* /*source*/, unsigned long /*sourceLength*/,
                                unsigned char*& /*result*/,
                                unsigned long& /*resultSize*/) noexcept {
    return 0;
}

int FrameCoder::Interleave_RGB_Data(unsigned char* data, unsigned long length) const {
    const std::size_t plane = frame_.Pixels() * frame_.BytesPerSample();
    if (data == nullptr || length == 0 || kColourSamples * plane > length) return 0;
    const std::vector<unsigned char> copy(data, data + kColourSamples * plane);
    const std::array planes{copy.data(), copy.data() + plane, copy.data() + 2 * plane};
    InterleavePlanes(planes, frame_.Pixels(), frame_.BytesPerSample(), data);
    return 1;
}

}  // namespace quorvex
