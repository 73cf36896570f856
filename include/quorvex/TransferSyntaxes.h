/// The transfer syntaxes: what each is called, how it encodes a data set, and what decodes and
/// codes its frames.
#pragma once

#include "quorvex/Export.h"

#include <cstdint>
#include <string_view>

namespace quorvex {

/// Transfer syntaxes by number. 106 to 123 follow the order of the JPEG UIDs
/// 1.2.840.10008.1.2.4.50 to .66 and .70.
enum TRANSFER_SYNTAX : std::uint32_t {
    kSyntaxNone = 0,
    kImplicitLittleEndian = 100,
    kExplicitLittleEndian = 101,
    kExplicitBigEndian = 102,
    kImplicitBigEndian = 103,
    kDeflatedExplicitLittleEndian = 104,
    kRle = 105,
    kJpegBaseline = 106,
    kJpegExtended = 107,
    kJpegFullProgression = 111,
    kJpegLossless = 113,
    kJpegLosslessFirstOrder = 123,
    kJpeg2000Lossless = 124,
    kJpeg2000 = 125,
    kJpegLsLossless = 126,
    kJpegLsNearLossless = 127,
    kEncapsulatedUncompressed = 140,
    kDeflatedImageFrames = 141,
    kJpeg2000Part2Lossless = 150,  ///< decoded without a multi-component transform
    kJpeg2000Part2 = 151,
    kHtj2kLossless = 152,  ///< High-Throughput JPEG 2000
    kHtj2kRpclLossless = 153,
    kHtj2k = 154,
    kJpegXlLossless = 160,
    kJpegXlOfJpeg = 161,
    kJpegXl = 162,
    kOtherEncapsulated = 199,  ///< encapsulated in a way that has no number of its own
};

/// The output formats that callers of this library ask for.
enum QUORVEX_XFERSYNTAX : std::uint32_t {
    kXferUncompressed = 1,
    kXferUncompressedImplicit = 2,
    kXferUncompressedExplicit = 3,
    kXferRle = 4,           ///< written by the standard rules only
    kXferJpegBaseline = 5,  ///< 8-bit data only
    kXferJpegExtended = 6,  ///< more than 8 bits only
    kXferJpegLossless = 7,
    kXferJpeg2000 = 8,
    kXferJpeg2000Lossless = 9,
    kXferDeflated = 10,  ///< Deflated Explicit VR Little Endian; by the standard rules only
    kXferJpegLs = 11,  ///< JPEG-LS near-lossless; this one and the next by the standard rules only
    kXferJpegLsLossless = 12,
    kXferDeflatedFrames = 13,  ///< each frame deflated; by the standard rules only, as the next one
    kXferEncapsulated = 14,    ///< each frame uncompressed in a fragment
    kXferHtj2kLossless = 15,   ///< High-Throughput JPEG 2000, in builds with its coder
    kXferHtj2kRpclLossless = 16,  ///< the same, its resolutions one behind the other
    kXferHtj2k = 17,              ///< the same with losses
    kXferJpegXl = 18,             ///< this one and the next by the standard rules only
    kXferJpegXlLossless = 19,
    kXferJpegXlOfJpeg =
        20,  ///< JPEG frames of 8 bits kept in JPEG XL; conversion of such ones only
    kXferJpegOriginal = 21,  ///< those frames again, to the byte, in the syntax of their process
};

/// How frames are stored, and with that what decodes them here.
enum class FrameCoding : std::uint8_t {
    kNone,    ///< a coding without a decoder in this build: such frames are refused
    kNative,  ///< uncoded
    kRle,
    kJpeg,  ///< the stream says which process
    kJpeg2000,
    kJpegLs,
    kDeflated,  ///< each frame, not the data set
    kFragment,  ///< uncoded, each in a fragment
    kJpegXl,
};

/// One transfer syntax.
struct TransferSyntax {
    std::string_view uid;   ///< empty for Implicit VR Big Endian, which has none
    std::string_view name;  ///< as the standard has it
    TRANSFER_SYNTAX number = kSyntaxNone;
    bool isExplicit = true;
    bool isBigEndian = false;
    bool isDeflated = false;  ///< the data set, not its frames
    bool isEncapsulated = false;
    bool isLossy = false;  ///< its frames may have lost something
    FrameCoding coding = FrameCoding::kNone;
    QUORVEX_XFERSYNTAX form{};     ///< the output format that it is one of; 0 for none
    bool isWritten = false;        ///< the coder of `form` writes this one, and this build has it
    std::string_view convertName;  ///< its name as a target of `quorvex convert`; empty for none
};

/// Null for a UID that no transfer syntax of the standard has.
[[nodiscard]] QUORVEX_API const TransferSyntax* TransferSyntaxOfUid(std::string_view uid) noexcept;

/// Null for a number without a row; `kOtherEncapsulated`, which several share, has none.
[[nodiscard]] QUORVEX_API const TransferSyntax* TransferSyntaxOf(TRANSFER_SYNTAX number) noexcept;

/// The syntax that the coder of a form writes; null for a form without a coder.
[[nodiscard]] QUORVEX_API const TransferSyntax* TransferSyntaxOf(QUORVEX_XFERSYNTAX form) noexcept;

/// The target of that name, whether this build writes it or not; null for any other text.
[[nodiscard]] QUORVEX_API const TransferSyntax* TransferSyntaxToConvertTo(
    std::string_view convertName) noexcept;

}  // namespace quorvex
