#include "codec/stored_coding.h"

#include "codec/frame_coder.h"
#include "codec/jpegls/jpegls_coding.h"
#include "codec/jpegxl/jpegxl_coding.h"
#include "codec/rle/rle_coding.h"
#include "foundation/engines/deflate/deflate_engine.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

_IMAGE_PROCESS_PARAM ParamOf(const StoredForms& forms) {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.targetSyntax = forms.form;
    param.samplesPerPixel = forms.samplesPerPixel;
    param.photometric = forms.samplesPerPixel == 1 ? "MONOCHROME2" : "RGB";
    param.planarConfiguration = 0;
    param.rows = forms.rows;
    param.columns = forms.columns;
    param.bitsAllocated = forms.bitsAllocated;
    param.pixelRepresentation = forms.isSigned ? 1 : 0;
    param.quality = forms.quality;
    return param;
}

template <class Sample>
bool FitBits(std::span<const unsigned char> frame, int bits) {
    const std::int64_t span = std::int64_t{1} << bits;
    const std::int64_t lowest = std::is_signed_v<Sample> ? -span / 2 : 0;
    for (std::size_t at = 0; at + sizeof(Sample) <= frame.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, frame.data() + at, sizeof sample);
        if (sample < lowest || sample >= lowest + span) return false;
    }
    return true;
}

bool FitBitsStored(const StoredForms& forms, std::span<const unsigned char> frame) {
    if (forms.bitsStored >= forms.bitsAllocated) return true;
    if (forms.bitsAllocated <= 8) {
        return forms.isSigned ? FitBits<std::int8_t>(frame, forms.bitsStored)
                              : FitBits<std::uint8_t>(frame, forms.bitsStored);
    }
    return forms.isSigned ? FitBits<std::int16_t>(frame, forms.bitsStored)
                          : FitBits<std::uint16_t>(frame, forms.bitsStored);
}

QUORVEX_MESSAGE CodeToRle(const StoredForms& forms, std::span<const unsigned char> frame,
                          std::vector<unsigned char>& coded) {
    // Single bits have no rows of bytes.
    const bool areBits = forms.bitsAllocated == 1;
    auto made = CodeRle({.frame = frame,
                         .rows = areBits ? 1 : std::size_t{forms.rows},
                         .columns = areBits ? frame.size() : std::size_t{forms.columns},
                         .samplesPerPixel = forms.samplesPerPixel,
                         .bytesPerSample = (forms.bitsAllocated + std::size_t{7}) / 8});
    if (!made) return QVM_ERROR_FAILED_TO_COMPRESS;
    coded = *std::move(made);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CodeByForm(const StoredForms& forms, std::span<unsigned char> frame,
                           std::vector<unsigned char>& coded) {
    const TransferSyntax* const row = TransferSyntaxOf(forms.form);
    if (row == nullptr || !row->isEncapsulated) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    if (row->coding == FrameCoding::kRle) return CodeToRle(forms, frame, coded);
    if (row->coding == FrameCoding::kDeflated) {
        coded = DeflateFrame(frame);
        return QVM_SUCCESS;
    }
    if (row->coding == FrameCoding::kFragment) {
        coded.assign(frame.begin(), frame.end());
        return QVM_SUCCESS;
    }
    const bool isFit = FitBitsStored(forms, frame);
    if (row->isLossy && !isFit) return QVM_ERROR_INVALID_BITS_STORED;
    if (row->coding == FrameCoding::kJpegLs) return CodeToJpegLs(forms, isFit, frame, coded);
    if (row->coding == FrameCoding::kJpegXl) return CodeToJpegXl(forms, isFit, frame, coded);
    const _IMAGE_PROCESS_PARAM param = ParamOf(forms);
    FrameCoder coder(param, frame, /*keepsRgb=*/true);
    coder.DescribeStored(isFit ? forms.bitsStored : forms.bitsAllocated, forms.isRgb);
    if (forms.halvesChroma) coder.HalveChroma();
    const QUORVEX_MESSAGE result = coder.Code();
    if (result == QVM_SUCCESS) coded = coder.TakeCoded();
    return result;
}

}  // namespace

QUORVEX_MESSAGE CodeStored(const StoredForms& forms, std::span<unsigned char> frame,
                           std::vector<unsigned char>& coded) {
    Cancellation::OfThisThread().ThrowIfAsked();
    const FrameProgress progress;
    const QUORVEX_MESSAGE result = CodeByForm(forms, frame, coded);
    if (result == QVM_SUCCESS) progress.Finish();
    return result;
}

}  // namespace quorvex
