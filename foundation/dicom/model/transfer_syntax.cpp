#include "foundation/dicom/model/transfer_syntax.h"

#include <algorithm>
#include <array>

namespace quorvex {
namespace {

constexpr TRANSFER_SYNTAX Numbered(std::uint32_t number) {
    return static_cast<TRANSFER_SYNTAX>(number);
}

enum Trait : unsigned {
    kImplicit = 1,
    kBigEndian = 2,
    kDeflated = 4,
    kEncapsulated = 8,
    kLossy = 16,
    kByJpegXl = 32,          ///< read and written in builds with libjxl
    kWrittenByOpenJph = 64,  ///< written in builds with OpenJPH
};

constexpr bool IsRead(unsigned traits) {
    return (traits & kByJpegXl) == 0 || QUORVEX_WITH_JPEGXL != 0;
}
constexpr bool IsCoded(unsigned traits) {
    return IsRead(traits) && ((traits & kWrittenByOpenJph) == 0 || QUORVEX_WITH_HTJ2K != 0);
}

/// A syntax with a name to convert to is the one that the coder of its form writes.
constexpr TransferSyntax Row(std::string_view uid, std::string_view name, TRANSFER_SYNTAX number,
                             unsigned traits, FrameCoding coding = FrameCoding::kNone,
                             QUORVEX_XFERSYNTAX form = {}, std::string_view convertName = {}) {
    return {.uid = uid,
            .name = name,
            .number = number,
            .isExplicit = (traits & kImplicit) == 0,
            .isBigEndian = (traits & kBigEndian) != 0,
            .isDeflated = (traits & kDeflated) != 0,
            .isEncapsulated = (traits & kEncapsulated) != 0,
            .isLossy = (traits & kLossy) != 0,
            .coding = IsRead(traits) ? coding : FrameCoding::kNone,
            .form = form,
            .isWritten = !convertName.empty() && IsCoded(traits),
            .convertName = convertName};
}

constexpr std::array kSyntaxes = {
    Row("1.2.840.10008.1.2", "Implicit VR Little Endian", kImplicitLittleEndian, kImplicit,
        FrameCoding::kNative, kXferUncompressedImplicit, "implicit"),
    Row("1.2.840.10008.1.2.1", "Explicit VR Little Endian", kExplicitLittleEndian, 0,
        FrameCoding::kNative, kXferUncompressedExplicit, "explicit"),
    Row("1.2.840.10008.1.2.2", "Explicit VR Big Endian", kExplicitBigEndian, kBigEndian,
        FrameCoding::kNative),
    Row("", "Implicit VR Big Endian", kImplicitBigEndian, kImplicit | kBigEndian,
        FrameCoding::kNative),
    Row("1.2.840.10008.1.2.1.99", "Deflated Explicit VR Little Endian",
        kDeflatedExplicitLittleEndian, kDeflated, FrameCoding::kNative, kXferDeflated, "deflated"),
    Row("1.2.840.10008.1.2.5", "RLE Lossless", kRle, kEncapsulated, FrameCoding::kRle, kXferRle,
        "rle"),
    Row("1.2.840.10008.1.2.4.50", "JPEG Baseline (Process 1)", kJpegBaseline,
        kEncapsulated | kLossy, FrameCoding::kJpeg, kXferJpegBaseline, "jpeg"),
    Row("1.2.840.10008.1.2.4.51", "JPEG Extended (Process 2 and 4)", kJpegExtended,
        kEncapsulated | kLossy, FrameCoding::kJpeg, kXferJpegExtended, "jpeg12"),
    Row("1.2.840.10008.1.2.4.52", "JPEG Extended (Process 3 and 5)", Numbered(108),
        kEncapsulated | kLossy, FrameCoding::kJpeg),
    Row("1.2.840.10008.1.2.4.53", "JPEG Spectral Selection, Non-Hierarchical (Process 6 and 8)",
        Numbered(109), kEncapsulated | kLossy, FrameCoding::kJpeg),
    Row("1.2.840.10008.1.2.4.54", "JPEG Spectral Selection, Non-Hierarchical (Process 7 and 9)",
        Numbered(110), kEncapsulated | kLossy, FrameCoding::kJpeg),
    Row("1.2.840.10008.1.2.4.55", "JPEG Full Progression, Non-Hierarchical (Process 10 and 12)",
        kJpegFullProgression, kEncapsulated | kLossy, FrameCoding::kJpeg),
    Row("1.2.840.10008.1.2.4.56", "JPEG Full Progression, Non-Hierarchical (Process 11 and 13)",
        Numbered(112), kEncapsulated | kLossy, FrameCoding::kJpeg),
    Row("1.2.840.10008.1.2.4.57", "JPEG Lossless (Process 14)", kJpegLossless, kEncapsulated,
        FrameCoding::kJpeg, kXferJpegLossless),
    Row("1.2.840.10008.1.2.4.58", "JPEG Lossless (Process 15)", Numbered(114), kEncapsulated),
    Row("1.2.840.10008.1.2.4.59", "JPEG Extended, Hierarchical (Process 16 and 18)", Numbered(115),
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.60", "JPEG Extended, Hierarchical (Process 17 and 19)", Numbered(116),
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.61", "JPEG Spectral Selection, Hierarchical (Process 20 and 22)",
        Numbered(117), kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.62", "JPEG Spectral Selection, Hierarchical (Process 21 and 23)",
        Numbered(118), kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.63", "JPEG Full Progression, Hierarchical (Process 24 and 26)",
        Numbered(119), kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.64", "JPEG Full Progression, Hierarchical (Process 25 and 27)",
        Numbered(120), kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.65", "JPEG Lossless, Hierarchical (Process 28)", Numbered(121),
        kEncapsulated),
    Row("1.2.840.10008.1.2.4.66", "JPEG Lossless, Hierarchical (Process 29)", Numbered(122),
        kEncapsulated),
    Row("1.2.840.10008.1.2.4.70", "JPEG Lossless (Process 14, Selection Value 1)",
        kJpegLosslessFirstOrder, kEncapsulated, FrameCoding::kJpeg, kXferJpegLossless,
        "jpeg-lossless"),
    Row("1.2.840.10008.1.2.4.80", "JPEG-LS Lossless", kJpegLsLossless, kEncapsulated,
        FrameCoding::kJpegLs, kXferJpegLsLossless, "jpegls-lossless"),
    Row("1.2.840.10008.1.2.4.81", "JPEG-LS Near-Lossless", kJpegLsNearLossless,
        kEncapsulated | kLossy, FrameCoding::kJpegLs, kXferJpegLs, "jpegls"),
    Row("1.2.840.10008.1.2.4.90", "JPEG 2000 Lossless", kJpeg2000Lossless, kEncapsulated,
        FrameCoding::kJpeg2000, kXferJpeg2000Lossless, "j2k-lossless"),
    Row("1.2.840.10008.1.2.4.91", "JPEG 2000", kJpeg2000, kEncapsulated | kLossy,
        FrameCoding::kJpeg2000, kXferJpeg2000, "j2k"),
    Row("1.2.840.10008.1.2.1.98", "Encapsulated Uncompressed Explicit VR Little Endian",
        kEncapsulatedUncompressed, kEncapsulated, FrameCoding::kFragment, kXferEncapsulated,
        "encapsulated"),
    Row("1.2.840.10008.1.2.8.1", "Deflated Image Frame Compression", kDeflatedImageFrames,
        kEncapsulated, FrameCoding::kDeflated, kXferDeflatedFrames, "deflated-frames"),
    Row("1.2.840.10008.1.2.4.92", "JPEG 2000 Part 2 Lossless", kJpeg2000Part2Lossless,
        kEncapsulated, FrameCoding::kJpeg2000),
    Row("1.2.840.10008.1.2.4.93", "JPEG 2000 Part 2", kJpeg2000Part2, kEncapsulated | kLossy,
        FrameCoding::kJpeg2000),
    Row("1.2.840.10008.1.2.4.100", "MPEG2 Main Profile / Main Level", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.100.1", "Fragmentable MPEG2 Main Profile / Main Level",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.101", "MPEG2 Main Profile / High Level", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.101.1", "Fragmentable MPEG2 Main Profile / High Level",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.102", "MPEG-4 AVC/H.264 High Profile / Level 4.1", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.102.1", "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.1",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.103", "MPEG-4 AVC/H.264 BD-compatible High Profile / Level 4.1",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.103.1",
        "Fragmentable MPEG-4 AVC/H.264 BD-compatible High Profile / Level 4.1", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.104", "MPEG-4 AVC/H.264 High Profile / Level 4.2 For 2D Video",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.104.1",
        "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.2 For 2D Video", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.105", "MPEG-4 AVC/H.264 High Profile / Level 4.2 For 3D Video",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.105.1",
        "Fragmentable MPEG-4 AVC/H.264 High Profile / Level 4.2 For 3D Video", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.106", "MPEG-4 AVC/H.264 Stereo High Profile / Level 4.2",
        kOtherEncapsulated, kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.106.1",
        "Fragmentable MPEG-4 AVC/H.264 Stereo High Profile / Level 4.2", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.107", "HEVC/H.265 Main Profile / Level 5.1", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.108", "HEVC/H.265 Main 10 Profile / Level 5.1", kOtherEncapsulated,
        kEncapsulated | kLossy),
    Row("1.2.840.10008.1.2.4.110", "JPEG XL Lossless", kJpegXlLossless, kEncapsulated | kByJpegXl,
        FrameCoding::kJpegXl, kXferJpegXlLossless, "jpegxl-lossless"),
    Row("1.2.840.10008.1.2.4.111", "JPEG XL JPEG Recompression", kJpegXlOfJpeg,
        kEncapsulated | kLossy | kByJpegXl, FrameCoding::kJpegXl, kXferJpegXlOfJpeg, "jpegxl-jpeg"),
    Row("1.2.840.10008.1.2.4.112", "JPEG XL", kJpegXl, kEncapsulated | kLossy | kByJpegXl,
        FrameCoding::kJpegXl, kXferJpegXl, "jpegxl"),
    Row("1.2.840.10008.1.2.4.201", "High-Throughput JPEG 2000 Lossless", kHtj2kLossless,
        kEncapsulated | kWrittenByOpenJph, FrameCoding::kJpeg2000, kXferHtj2kLossless,
        "htj2k-lossless"),
    Row("1.2.840.10008.1.2.4.202", "High-Throughput JPEG 2000 RPCL Lossless", kHtj2kRpclLossless,
        kEncapsulated | kWrittenByOpenJph, FrameCoding::kJpeg2000, kXferHtj2kRpclLossless,
        "htj2k-rpcl"),
    Row("1.2.840.10008.1.2.4.203", "High-Throughput JPEG 2000", kHtj2k,
        kEncapsulated | kLossy | kWrittenByOpenJph, FrameCoding::kJpeg2000, kXferHtj2k, "htj2k"),
};

template <class Test>
const TransferSyntax* FindSyntax(Test test) {
    const auto* place = std::find_if(kSyntaxes.begin(), kSyntaxes.end(), test);
    return place == kSyntaxes.end() ? nullptr : place;
}

}  // namespace

const TransferSyntax* TransferSyntaxOfUid(std::string_view uid) noexcept {
    if (uid.empty()) return nullptr;
    return FindSyntax([&](const TransferSyntax& syntax) { return syntax.uid == uid; });
}

const TransferSyntax* TransferSyntaxOf(TRANSFER_SYNTAX number) noexcept {
    if (number == kOtherEncapsulated) return nullptr;
    return FindSyntax([&](const TransferSyntax& syntax) { return syntax.number == number; });
}

const TransferSyntax* TransferSyntaxOf(QUORVEX_XFERSYNTAX form) noexcept {
    const auto written = form == kXferUncompressed ? kXferUncompressedImplicit : form;
    return FindSyntax(
        [&](const TransferSyntax& syntax) { return syntax.isWritten && syntax.form == written; });
}

const TransferSyntax* TransferSyntaxToConvertTo(std::string_view convertName) noexcept {
    if (convertName.empty()) return nullptr;
    return FindSyntax(
        [&](const TransferSyntax& syntax) { return syntax.convertName == convertName; });
}

FrameCoding CodingOf(TRANSFER_SYNTAX syntax) noexcept {
    const auto* row = TransferSyntaxOf(syntax);
    return row == nullptr ? FrameCoding::kNone : row->coding;
}

bool HasDecoder(TRANSFER_SYNTAX syntax) noexcept {
    return IsEncapsulated(syntax) && CodingOf(syntax) != FrameCoding::kNone;
}

bool IsEncapsulated(TRANSFER_SYNTAX syntax) noexcept {
    const auto* row = TransferSyntaxOf(syntax);
    return row == nullptr ? syntax == kOtherEncapsulated : row->isEncapsulated;
}

bool IsBigEndian(TRANSFER_SYNTAX syntax) noexcept {
    const auto* row = TransferSyntaxOf(syntax);
    return row != nullptr && row->isBigEndian;
}

std::string_view UidOf(std::span<const unsigned char> value) noexcept {
    const std::string_view text(reinterpret_cast<const char*>(value.data()), value.size());
    return text.substr(0, text.find_first_of(std::string_view("\0 ", 2)));
}

}  // namespace quorvex
