/// One coded frame under a header drawn from the options, decoded in every way there is.
#pragma once

#include "fuzz/target.h"
#include "quorvex/DicomObject.h"
#include "tests/support/answers.h"

#include <algorithm>

namespace quorvex::fuzz {

inline constexpr std::size_t kHeaderBytes = 12;

/// Syntax, photometric, rows (2 bytes), columns (2), samples, bits, flags: as
/// scripts/make_fuzz_seeds.py writes them behind a frame.
template <std::size_t count>
_IMAGE_PROCESS_PARAM DrawHeader(Options& options, const std::uint32_t (&syntaxes)[count]) {
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

/// Decodes into a block of the library's and into one of ours, of exactly the frame's size and
/// clear: both must say the same, or something was never written. A block for samples of 32 bits
/// has two or four bytes for each.
inline void DecodeKnown(_IMAGE_PROCESS_PARAM param, const test::Bytes& stream, Options& options) {
    const bool isUnsignedOnly = options.Flag();
    test::Bytes source = stream;
    const test::Answered made = test::DecodedOf(param, source, isUnsignedOnly);
    source = stream;
    const bool isWide = param.bitsAllocated == 32 && !options.Flag();
    test::Bytes own(FrameBytes(param) * (isWide ? 2 : 1));
    if (own.empty()) return;
    unsigned char* block = own.data();
    unsigned long size = own.size();
    const auto code = CxImageProcessor().DecompressFrameData(&param, source.data(), source.size(),
                                                             block, size, isUnsignedOnly ? 1 : 0);
    Require(block == own.data());
    const bool isWhole = made.IsDone() && made.code == code && made.bytes.size() == own.size();
    Require(!isWhole || made.bytes == own);
}

/// A stream under a drawn header, and with nothing else known about it where there is a decoder.
template <std::size_t count>
void DecodeFrame(Options& options, const std::uint32_t (&syntaxes)[count],
                 test::BlindDecoder blind = nullptr) {
    const _IMAGE_PROCESS_PARAM param = DrawHeader(options, syntaxes);
    DecodeKnown(param, options.Front(), options);
    test::Bytes stream = options.Front();
    if (blind != nullptr) (void)test::BlindlyDecoded(blind, stream);
}

}  // namespace quorvex::fuzz
