#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg2000/jpeg2000_engine.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace quorvex {
namespace {

std::atomic<bool> isCoderLoaded{false};

// What the private coder answers beside 1.
constexpr int kNotBegun = 5;
constexpr int kNotCoded = 2;
constexpr int kNotEnded = 6;

bool LoadCoder() noexcept {
    constexpr int kEngineVersion = 20;
    if (isCoderLoaded.load(std::memory_order_acquire)) return true;
    if (PegasusLoadFromRes(kPegasusEncode, kEngineVersion, 0, 0) != 0) return false;
    isCoderLoaded.store(true, std::memory_order_release);
    return true;
}

std::size_t TargetBytes(unsigned long sourceLength, std::uint32_t ratio) noexcept {
    const double share = 1.0 / std::max<std::uint32_t>(ratio, 1);
    return std::max<std::size_t>(
        1, static_cast<std::size_t>(share * static_cast<double>(sourceLength)));
}

int Run(PegasusParameters& parameters) noexcept {
    if (Pegasus(parameters, kPegasusBegin) != kPegasusDone) return kNotBegun;
    if (Pegasus(parameters, kPegasusWork) != kPegasusDone) return kNotCoded;
    if (Pegasus(parameters, kPegasusEnd) != kPegasusDone) return kNotEnded;
    return 1;
}

}  // namespace

int CxImageProcessor::CompressRawData2J2K(unsigned char* source, unsigned long sourceLength,
                                          std::vector<unsigned char>& coded) {
    if (!LoadCoder()) return kNotBegun;
    PegasusParameters parameters;
    parameters.operation = kPegasusEncode;
    parameters.input = {source, sourceLength};
    parameters.columns = columns;
    parameters.rows = rows;
    parameters.samples = samplesPerPixel;
    parameters.bytesPerSample = static_cast<int>(BytesPerSample());
    parameters.bitDepth = bitsAllocated & 0xFF;
    parameters.isBigEndian = IsBigEndian(SourceSyntax());
    const bool isGrey = photometric.Find("MONOCHROME") >= 0 || photometric.Find("PALETTE") >= 0;
    parameters.isSigned = isGrey && pixelRepresentation == 1;
    parameters.isLossless = targetSyntax == kXferJpeg2000Lossless;
    if (!parameters.isLossless) parameters.targetBytes = TargetBytes(sourceLength, quality);
    std::vector<unsigned char> pixels;
    if (samplesPerPixel == 3 && planarConfiguration == 1) {
        pixels.assign(source, source + sourceLength);
        if (Interleave_RGB_Data(pixels.data(), sourceLength) == 0) return kNotBegun;
        parameters.input = pixels;
    }
    const int result = Run(parameters);
    if (result == 1) coded.swap(parameters.coded);
    return result;
}

}  // namespace quorvex
