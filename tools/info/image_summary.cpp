#include "tools/info/image_summary.h"

#include "quorvex/Tags.h"
#include "tools/info/preamble.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

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

// Without meta information the number tells what the data set turned out to be.
std::string ReadSyntaxName(const CDcmObject& header, TRANSFER_SYNTAX syntax) {
    const auto uid = ReadText(header, tag::kTransferSyntaxUID);
    const auto* row = uid.empty() ? TransferSyntaxOf(syntax) : TransferSyntaxOfUid(uid);
    return row == nullptr ? uid : std::string(row->name);
}

std::vector<ImageSummary::Pair> ReadWindows(const CDcmObject& header) {
    std::vector<ImageSummary::Pair> windows;
    double centre = 0.0;
    double width = 0.0;
    bool isThere = header.GetValue(tag::kWindowCenter, centre) == kDcmSuccess &&
                   header.GetValue(tag::kWindowWidth, width) == kDcmSuccess;
    for (int i = 0; isThere && i < kMostWindows; ++i) {
        windows.push_back({centre, width});
        isThere = header.GetNextValue(tag::kWindowCenter, centre) == kDcmSuccess &&
                  header.GetNextValue(tag::kWindowWidth, width) == kDcmSuccess;
    }
    return windows;
}

std::optional<ImageSummary::Pair> ReadRescale(const CDcmObject& header) {
    const auto slope = ReadNumber(header, tag::kRescaleSlope);
    const auto intercept = ReadNumber(header, tag::kRescaleIntercept);
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
    std::vector<ImageSummary::Table> tables;
    CDcmItem item;
    bool isThere = header.GetValue(tag::kVOILUTSequence, item) == kDcmSuccess;
    for (int i = 0; isThere && i < kMostWindows; ++i) {
        if (const auto table = ReadTable(item, tag::kLUTDescriptor)) tables.push_back(*table);
        isThere = header.GetNextValue(tag::kVOILUTSequence, item) == kDcmSuccess;
    }
    return tables;
}

void ReadPalette(const CDcmObject& header, ImageSummary& summary) {
    std::vector<ImageSummary::Table> colours;
    for (const std::uint32_t tag :
         {tag::kRedPaletteColorLookupTableDescriptor, tag::kGreenPaletteColorLookupTableDescriptor,
          tag::kBluePaletteColorLookupTableDescriptor})
        if (const auto table = ReadTable(header, tag)) colours.push_back(*table);
    if (colours.size() != 3) return;
    summary.palette = std::move(colours);
    int count = 0;
    summary.isPaletteSegmented =
        header.GetValueCount(tag::kSegmentedRedPaletteColorLookupTableData, count) == kDcmSuccess;
}

std::optional<ImageSummary::Overlay> ReadOverlay(const CDcmObject& header, unsigned group) {
    const auto of = [&](std::uint32_t tag) { return tag::InGroup(group, tag); };
    const auto rows = ReadCount(header, of(tag::kOverlayRows));
    const auto columns = ReadCount(header, of(tag::kOverlayColumns));
    const auto bits = ReadCount(header, of(tag::kOverlayBitsAllocated));
    if (!rows || !columns || !bits) return std::nullopt;
    int originRow = 1;
    int originColumn = 1;
    header.GetValue(of(tag::kOverlayOrigin), originRow);
    header.GetNextValue(of(tag::kOverlayOrigin), originColumn);
    const int bit = ReadCount(header, of(tag::kOverlayBitPosition)).value_or(0);
    const bool hasOwnData = *bits == 1 && bit == 0;
    return ImageSummary::Overlay{group,
                                 *columns,
                                 *rows,
                                 originColumn,
                                 originRow,
                                 hasOwnData ? std::nullopt : std::optional(bit),
                                 ReadText(header, of(tag::kOverlayDescription))};
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
    const auto* row = TransferSyntaxOf(syntax);
    summary.bigEndian = row != nullptr && row->isBigEndian;
    summary.columns = ReadCount(header, tag::kColumns);
    summary.rows = ReadCount(header, tag::kRows);
    summary.samples = ReadCount(header, tag::kSamplesPerPixel);
    summary.bitsAllocated = ReadCount(header, tag::kBitsAllocated);
    summary.bitsStored = ReadCount(header, tag::kBitsStored);
    summary.isSigned = ReadCount(header, tag::kPixelRepresentation).value_or(0) != 0;
    summary.frames = summary.columns && summary.rows ? parser.GetFrameCount() : 0;
    summary.photometric = ReadText(header, tag::kPhotometricInterpretation);
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
