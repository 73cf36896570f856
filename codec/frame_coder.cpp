#include "codec/jpeg_coding.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace quorvex {
namespace {

constexpr int kCoded = 1;
constexpr std::uint32_t kLeastQuality = 1;
constexpr std::uint32_t kMostQuality = 1000;

bool IsUncompressedSource(std::uint32_t syntax) noexcept {
    return syntax == kImplicitLittleEndian || syntax == kExplicitLittleEndian ||
           syntax == kExplicitBigEndian;
}

bool HasCoder(std::uint32_t target) noexcept {
    return target >= kXferJpegBaseline && target <= kXferJpeg2000Lossless;
}

/// The trimmed copy of the coded data that the caller gets.
unsigned char* Trimmed(const std::vector<unsigned char>& coded) {
    HeapBlock block(coded.size());
    std::ranges::copy(coded, block.Data());
    return block.Release();
}

}  // namespace

bool CxImageProcessor::IsGreyPhotometric() const {
    return photometric.Find("MONOCHROME1") >= 0 || photometric.Find("MONOCHROME2") >= 0 ||
           photometric.Find("PALETTE") >= 0;
}

bool CxImageProcessor::IsRgbPhotometric() const {
    return photometric.CompareNoCase("RGB") == 0;
}

bool CxImageProcessor::FitsItsSource(unsigned long sourceLength) const noexcept {
    const auto frameBytes = FrameBytes(BytesPerSample());
    return frameBytes && *frameBytes > 0 && *frameBytes <= sourceLength;
}

QUORVEX_MESSAGE CxImageProcessor::CheckCompression(const unsigned char* source) const {
    if (source == nullptr) return QVM_ERROR_NULL_SOURCE;
    if (!IsUncompressedSource(transferSyntax)) return QVM_ERROR_INVALID_SOURCE_SYNTAX;
    if (!HasCoder(targetSyntax)) return QVM_ERROR_INVALID_TARGET_SYNTAX;
    if (!IsGreyPhotometric() && !IsRgbPhotometric()) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const bool isTooWide = targetSyntax == kXferJpegBaseline && bitsAllocated > 8;
    const bool isTooNarrow = targetSyntax == kXferJpegExtended && bitsAllocated <= 8;
    return isTooWide || isTooNarrow ? QVM_ERROR_INVALID_IMAGE_FORMAT : QVM_SUCCESS;
}

QUORVEX_MESSAGE CxImageProcessor::CompressFrameData(_IMAGE_PROCESS_PARAM* param,
                                                    unsigned char* source,
                                                    unsigned long sourceLength,
                                                    unsigned char*& result,
                                                    unsigned long& resultSize) {
    result = nullptr;
    resultSize = 0;
    return Answer(QVM_ERROR_FAILED_TO_COMPRESS, [&] {
        if (param == nullptr) return QVM_ERROR_NULL_SOURCE;
        InitializeMembers(param);
        const QUORVEX_MESSAGE check = CheckCompression(source);
        if (check != QVM_SUCCESS) return check;
        quality = std::clamp(quality, kLeastQuality, kMostQuality);
        if (targetSyntax == kXferJpegLossless) quality = kLeastQuality;
        if (targetSyntax == kXferJpegExtended) {
            SetQuantizationFactor(static_cast<float>(quality));
        } else {
            SetQualityFactor(static_cast<float>(quality));
        }
        std::vector<unsigned char> coded;
        if (!FitsItsSource(sourceLength) || CompressTo(source, sourceLength, coded) != kCoded ||
            coded.empty()) {
            return QVM_ERROR_FAILED_TO_COMPRESS;
        }
        result = Trimmed(coded);
        resultSize = coded.size();
        return QVM_SUCCESS;
    });
}

int CxImageProcessor::CompressTo(unsigned char* source, unsigned long sourceLength,
                                 std::vector<unsigned char>& coded) {
    if (targetSyntax == kXferJpeg2000 || targetSyntax == kXferJpeg2000Lossless) {
        return CompressRawData2J2K(source, sourceLength, coded);
    }
    const bool isWide = targetSyntax == kXferJpegExtended ||
                        (targetSyntax == kXferJpegLossless && IsGreyPhotometric());
    return isWide ? CompressRawData2Jpeg_51_70(source, sourceLength, coded, FrameDataConvertProc)
                  : CompressRawData2Jpeg_50_70(source, sourceLength, coded, FrameDataConvertProc);
}

QUORVEX_MESSAGE CxImageProcessor::CompressRawImage2Jp2File(_IMAGE_PROCESS_PARAM* param,
                                                           unsigned char* source,
                                                           unsigned long sourceLength,
                                                           unsigned char*& result,
                                                           unsigned long& resultSize) {
    result = nullptr;
    resultSize = 0;
    return Answer(QVM_SUCCESS, [&] {
        if (param == nullptr || source == nullptr) return QVM_SUCCESS;
        InitializeMembers(param);
        std::vector<unsigned char> coded;
        if (CompressRawData2J2K(source, sourceLength, coded) == kCoded && !coded.empty()) {
            result = Trimmed(coded);
            resultSize = coded.size();
        }
        return QVM_SUCCESS;
    });
}

int CxImageProcessor::CompressRLEData(unsigned char* /*source*/, unsigned long /*sourceLength*/,
                                      unsigned char*& /*result*/,
                                      unsigned long& /*resultSize*/) noexcept {
    return 0;
}

int CxImageProcessor::Interleave_RGB_Data(unsigned char* data, unsigned long length) const {
    const std::size_t sampleBytes = BytesPerSample();
    const std::size_t plane = std::size_t{columns} * rows * sampleBytes;
    if (data == nullptr || length == 0 || 3 * plane > length) return 0;
    const std::vector<unsigned char> planes(data, data + 3 * plane);
    unsigned char* out = data;
    for (std::size_t place = 0; place < plane; place += sampleBytes) {
        for (std::size_t sample = 0; sample < 3; ++sample, out += sampleBytes) {
            std::memcpy(out, planes.data() + sample * plane + place, sampleBytes);
        }
    }
    return 1;
}

// A coder learns from a 0 that there is no memory for its output.
int CxImageProcessor::FrameDataConvertProc(void* state, unsigned int /*tag*/, unsigned char* data,
                                           unsigned long length, CL_CONVERT_ACT action) noexcept {
    auto& output = *static_cast<CompressOutputState*>(state);
    return Contain(0, [&] {
        if (action == kConvertStart) output.startPosition = output.written;
        if (action == kConvertBlock) {
            output.coded.insert(output.coded.end(), data, data + length);
            output.written += length;
        }
        if (action == kConvertEnd) output.codedSize = output.written;
        return 1;
    });
}

void CxImageProcessor::SetQuantizationMatrix(const unsigned short (&matrix)[64]) noexcept {
    std::ranges::copy(matrix, quantizationTable.begin());
}

void CxImageProcessor::SetQuantizationFactor(float factor) noexcept {
    constexpr float kLargestStep = 32767;  // what coders take
    const float used = factor > 0 ? factor : 1;
    for (std::size_t i = 0; i < quantizationTable.size(); ++i) {
        const float step = static_cast<float>(kDefaultQuantization[i]) * used;
        quantizationTable[i] = static_cast<std::uint16_t>(std::min(step, kLargestStep));
    }
}

void CxImageProcessor::SetQualityFactor(float factor) noexcept {
    chromaQuality = static_cast<std::uint32_t>(factor);
    lumaQuality = static_cast<std::uint8_t>(chromaQuality & 0xFF);
}

}  // namespace quorvex
