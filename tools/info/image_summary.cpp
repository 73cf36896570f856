#include "tools/info/image_summary.h"

#include "tools/info/preamble.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

struct SyntaxName {
    std::string_view uid;
    std::string_view name;
};
constexpr std::array kSyntaxNames = {
    SyntaxName{"1.2.840.10008.1.2", "Implicit VR Little Endian"},
    SyntaxName{"1.2.840.10008.1.2.1", "Explicit VR Little Endian"},
    SyntaxName{"1.2.840.10008.1.2.1.98", "Encapsulated Uncompressed Explicit VR Little Endian"},
    SyntaxName{"1.2.840.10008.1.2.1.99", "Deflated Explicit VR Little Endian"},
    SyntaxName{"1.2.840.10008.1.2.2", "Explicit VR Big Endian"},
    SyntaxName{"1.2.840.10008.1.2.4.50", "JPEG Baseline (Process 1)"},
    SyntaxName{"1.2.840.10008.1.2.4.51", "JPEG Extended (Process 2 and 4)"},
    SyntaxName{"1.2.840.10008.1.2.4.57", "JPEG Lossless (Process 14)"},
    SyntaxName{"1.2.840.10008.1.2.4.70", "JPEG Lossless (Process 14, Selection Value 1)"},
    SyntaxName{"1.2.840.10008.1.2.4.80", "JPEG-LS Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.81", "JPEG-LS Near-Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.90", "JPEG 2000 Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.91", "JPEG 2000"},
    SyntaxName{"1.2.840.10008.1.2.4.92", "JPEG 2000 Part 2 Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.93", "JPEG 2000 Part 2"},
    SyntaxName{"1.2.840.10008.1.2.4.201", "High-Throughput JPEG 2000 Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.202", "High-Throughput JPEG 2000 RPCL Lossless"},
    SyntaxName{"1.2.840.10008.1.2.4.203", "High-Throughput JPEG 2000"},
    SyntaxName{"1.2.840.10008.1.2.5", "RLE Lossless"},
    SyntaxName{"1.2.840.10008.1.2.8.1", "Deflated Image Frame Compression"},
};
constexpr int kMostWindows = 16;

std::string ReadText(const CDcmObject& header, std::uint32_t tag) {
    CString text;
    return header.GetValue(tag, text) == kDcmSuccess ? text.ToUtf8() : std::string();
}

std::optional<int> ReadCount(const CDcmObject& header, std::uint32_t tag) {
    unsigned short value = 0;
    if (header.GetValue(tag, value) != kDcmSuccess) return std::nullopt;
    return value;
}

std::optional<double> ReadNumber(const CDcmObject& header, std::uint32_t tag) {
    double value = 0.0;
    if (header.GetValue(tag, value) != kDcmSuccess) return std::nullopt;
    return value;
}

// What the data set turned out to be, where the file has no meta information to say it.
std::string_view NameOf(TRANSFER_SYNTAX syntax) {
    switch (syntax) {
        case kImplicitLittleEndian:
            return "Implicit VR Little Endian";
        case kExplicitLittleEndian:
            return "Explicit VR Little Endian";
        case kExplicitBigEndian:
            return "Explicit VR Big Endian";
        case kImplicitBigEndian:
            return "Implicit VR Big Endian";
        default:
            return {};
    }
}

std::string ReadSyntaxName(const CDcmObject& header, TRANSFER_SYNTAX syntax) {
    const auto uid = ReadText(header, 0x00020010);
    const auto* found = std::ranges::find(kSyntaxNames, uid, &SyntaxName::uid);
    if (found != kSyntaxNames.end()) return std::string(found->name);
    return uid.empty() ? std::string(NameOf(syntax)) : uid;
}

std::vector<ImageSummary::Pair> ReadWindows(const CDcmObject& header) {
    constexpr std::uint32_t kCentre = 0x00281050;
    constexpr std::uint32_t kWidth = 0x00281051;
    std::vector<ImageSummary::Pair> windows;
    double centre = 0.0;
    double width = 0.0;
    bool isThere = header.GetValue(kCentre, centre) == kDcmSuccess &&
                   header.GetValue(kWidth, width) == kDcmSuccess;
    for (int i = 0; isThere && i < kMostWindows; ++i) {
        windows.push_back({centre, width});
        isThere = header.GetNextValue(kCentre, centre) == kDcmSuccess &&
                  header.GetNextValue(kWidth, width) == kDcmSuccess;
    }
    return windows;
}

std::optional<ImageSummary::Pair> ReadRescale(const CDcmObject& header) {
    const auto slope = ReadNumber(header, 0x00281053);
    const auto intercept = ReadNumber(header, 0x00281052);
    if (!slope || !intercept) return std::nullopt;
    return ImageSummary::Pair{*slope, *intercept};
}

// 0 entries stand for 65536.
std::optional<ImageSummary::Table> ReadTable(const CDcmObjectCommon& source, std::uint32_t tag) {
    int entries = 0;
    int first = 0;
    int bits = 0;
    const bool isThere = source.GetValue(tag, entries) == kDcmSuccess &&
                         source.GetNextValue(tag, first) == kDcmSuccess &&
                         source.GetNextValue(tag, bits) == kDcmSuccess;
    if (!isThere) return std::nullopt;
    return ImageSummary::Table{entries == 0 ? 1 << 16 : entries, first, bits};
}

std::vector<ImageSummary::Table> ReadVoiTables(const CDcmObject& header) {
    constexpr std::uint32_t kVoiLutSequence = 0x00283010;
    std::vector<ImageSummary::Table> tables;
    CDcmItem item;
    bool isThere = header.GetValue(kVoiLutSequence, item) == kDcmSuccess;
    for (int i = 0; isThere && i < kMostWindows; ++i) {
        if (const auto table = ReadTable(item, 0x00283002)) tables.push_back(*table);
        isThere = header.GetNextValue(kVoiLutSequence, item) == kDcmSuccess;
    }
    return tables;
}

void ReadPalette(const CDcmObject& header, ImageSummary& summary) {
    std::vector<ImageSummary::Table> colours;
    for (const std::uint32_t tag : {0x00281101U, 0x00281102U, 0x00281103U})
        if (const auto table = ReadTable(header, tag)) colours.push_back(*table);
    if (colours.size() != 3) return;
    summary.palette = std::move(colours);
    int count = 0;
    summary.isPaletteSegmented = header.GetValueCount(0x00281221, count) == kDcmSuccess;
}

std::optional<ImageSummary::Overlay> ReadOverlay(const CDcmObject& header, unsigned group) {
    const std::uint32_t base = group << 16;
    const auto rows = ReadCount(header, base | 0x0010);
    const auto columns = ReadCount(header, base | 0x0011);
    const auto bits = ReadCount(header, base | 0x0100);
    if (!rows || !columns || !bits) return std::nullopt;
    int originRow = 1;
    int originColumn = 1;
    header.GetValue(base | 0x0050, originRow);
    header.GetNextValue(base | 0x0050, originColumn);
    const int bit = ReadCount(header, base | 0x0102).value_or(0);
    const bool hasOwnData = *bits == 1 && bit == 0;
    return ImageSummary::Overlay{group,
                                 *columns,
                                 *rows,
                                 originColumn,
                                 originRow,
                                 hasOwnData ? std::nullopt : std::optional(bit),
                                 ReadText(header, base | 0x0022)};
}

std::vector<ImageSummary::Overlay> ReadOverlays(const CDcmObject& header) {
    std::vector<ImageSummary::Overlay> overlays;
    for (unsigned group = 0x6000; group <= 0x601E; group += 2)
        if (auto overlay = ReadOverlay(header, group)) overlays.push_back(std::move(*overlay));
    return overlays;
}

std::optional<double> ReadSliceLocation(CDcmObject& header) {
    double location = 0.0;
    if (CxDcmParser::GetSliceLocation(&header, location) != 1) return std::nullopt;
    return location;
}

}  // namespace

ImageSummary Summarise(CxDcmParser& parser, const std::string& path) {
    const CDcmObject& header = *parser.GetHeader();
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    header.GetTransferSyntax(syntax);
    ImageSummary summary;
    summary.syntax = ReadSyntaxName(header, syntax);
    summary.bigEndian = syntax == kExplicitBigEndian || syntax == kImplicitBigEndian;
    summary.columns = ReadCount(header, 0x00280011);
    summary.rows = ReadCount(header, 0x00280010);
    summary.samples = ReadCount(header, 0x00280002);
    summary.bitsAllocated = ReadCount(header, 0x00280100);
    summary.bitsStored = ReadCount(header, 0x00280101);
    summary.isSigned = ReadCount(header, 0x00280103).value_or(0) != 0;
    summary.frames = summary.columns && summary.rows ? parser.GetFrameCount() : 0;
    summary.photometric = ReadText(header, 0x00280004);
    summary.windows = ReadWindows(header);
    summary.rescale = ReadRescale(header);
    summary.voiTables = ReadVoiTables(header);
    ReadPalette(header, summary);
    summary.overlays = ReadOverlays(header);
    summary.presentation = ReadPresentationFacts(header);
    summary.sliceLocation = ReadSliceLocation(*parser.GetHeader());
    summary.preamble = PreambleKind(path);
    return summary;
}

}  // namespace quorvex::tools
