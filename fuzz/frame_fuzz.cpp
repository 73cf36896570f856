// One coded frame of every syntax under a header drawn from the first bytes, and the blind decoders.
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace {

using namespace quorvex;

constexpr std::uint32_t kSyntaxes[] = {kRle,          kJpegBaseline,      kJpegLosslessFirstOrder,
                                       kJpeg2000,     kExplicitBigEndian, kExplicitLittleEndian,
                                       kJpegExtended, kJpeg2000Lossless};
constexpr const char* kPhotometrics[] = {
    "MONOCHROME2",   "RGB",     "YBR_FULL",        "YBR_FULL_422",
    "PALETTE COLOR", "YBR_RCT", "YBR_PARTIAL_422", ""};

void DecodeBlind(std::vector<unsigned char>& stream) {
    using Decode = decltype(&CxImageProcessor::DecompressBlindJPEGData);
    for (const Decode decode :
         {&CxImageProcessor::DecompressBlindJPEGData, &CxImageProcessor::DecompressBlindJP2KData}) {
        CxImageProcessor processor;
        unsigned char* result = nullptr;
        unsigned long size = 0;
        unsigned short facts[5] = {};
        (void)(processor.*decode)(stream.data(), stream.size(), result, size, facts[0], facts[1],
                                  facts[2], facts[3], facts[4]);
        delete[] result;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kFacts = 6;
    if (size < kFacts || size > 1 << 16) return 0;
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kSyntaxes[data[0] % std::size(kSyntaxes)];
    param.photometric = kPhotometrics[data[1] % std::size(kPhotometrics)];
    param.rows = data[2];
    param.columns = data[3];
    param.samplesPerPixel = data[4] % 5U;
    param.planarConfiguration = data[4] / 128U;
    param.bitsAllocated = data[5] % 40U;
    param.pixelRepresentation = data[5] / 128U;
    std::vector<unsigned char> stream(data + kFacts, data + size);
    CxImageProcessor processor;
    unsigned char* result = nullptr;
    unsigned long resultSize = 0;
    (void)processor.DecompressFrameData(&param, stream.data(), stream.size(), result, resultSize,
                                        0);
    delete[] result;
    DecodeBlind(stream);
    return 0;
}
