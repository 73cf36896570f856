/// One coded frame under a header drawn from the options, decoded in every way there is.
#pragma once

#include "fuzz/options.h"
#include "fuzz/require.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace quorvex::fuzz {

inline constexpr std::size_t kFactBytes = 12;

/// Syntax, photometric, rows (2 bytes), columns (2), samples, bits, flags: as scripts/make_seeds.py
/// writes them behind a frame.
template <std::size_t count>
_IMAGE_PROCESS_PARAM DrawFacts(Options& options, const std::uint32_t (&syntaxes)[count]) {
    constexpr const char* kPhotometrics[] = {
        "MONOCHROME2",   "RGB",     "YBR_FULL",        "YBR_FULL_422",
        "PALETTE COLOR", "YBR_RCT", "YBR_PARTIAL_422", ""};
    constexpr unsigned kMostPixels = 1 << 20;
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = options.OneOf(syntaxes);
    param.photometric = options.OneOf(kPhotometrics);
    param.rows = options.Word();
    param.columns = options.Word();
    if (unsigned{param.rows} * param.columns > kMostPixels) param.columns %= 16;
    param.samplesPerPixel = static_cast<std::uint16_t>(options.Below(5));
    param.bitsAllocated = static_cast<std::uint16_t>(options.Below(40));
    const unsigned flags = options.Byte();
    param.planarConfiguration = flags % 2;
    param.pixelRepresentation = flags / 2 % 2;
    return param;
}

inline std::size_t FrameBytes(const _IMAGE_PROCESS_PARAM& param) {
    return std::size_t{param.rows} * param.columns * param.samplesPerPixel *
           (param.bitsAllocated > 8 ? 2 : 1);
}

/// Decodes into a block of the library's and into one of ours, of exactly the frame's size and clear:
/// both must say the same, or something was never written.
inline void DecodeKnown(_IMAGE_PROCESS_PARAM param, const std::vector<unsigned char>& stream,
                        Options& options) {
    const int unsignedOnly = options.Flag() ? 1 : 0;
    CxImageProcessor processor;
    std::vector<unsigned char> source = stream;
    unsigned char* made = nullptr;
    unsigned long madeSize = 0;
    const auto first = processor.DecompressFrameData(&param, source.data(), source.size(), made,
                                                     madeSize, unsignedOnly);
    const std::unique_ptr<unsigned char[]> owner(made);
    source = stream;
    std::vector<unsigned char> own(FrameBytes(param));
    unsigned char* block = own.data();
    unsigned long size = own.size();
    if (own.empty()) return;
    const auto second = processor.DecompressFrameData(&param, source.data(), source.size(), block,
                                                      size, unsignedOnly);
    Require(block == own.data());
    const bool isDone = first == QVM_SUCCESS || first == QVM_FRAME_COPIED;
    if (!isDone || madeSize != own.size() || first != second) return;
    Require(std::equal(own.begin(), own.end(), made));
}

using DecodeBlindly = decltype(&CxImageProcessor::DecompressBlindJPEGData);

inline void DecodeBlind(DecodeBlindly decode, std::vector<unsigned char> stream) {
    CxImageProcessor processor;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    unsigned short facts[5] = {};
    (void)(processor.*decode)(stream.data(), stream.size(), result, size, facts[0], facts[1],
                              facts[2], facts[3], facts[4]);
    delete[] result;
}

}  // namespace quorvex::fuzz
