#include "tools/info/image_summary.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/info/first_values.h"
#include "tools/info/preamble.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

constexpr std::size_t kMostWindows = 16;

std::optional<int> ReadWord(const CDcmObject& header, std::uint32_t tag) {
    return Read<unsigned short>(header, tag);
}

// Without meta information the number is that of the syntax which the data set turned out to have.
std::string ReadSyntaxName(const CDcmObject& header, TRANSFER_SYNTAX syntax) {
    const auto uid = TextOf(header, tag::kTransferSyntaxUID);
    const auto* row = uid.empty() ? TransferSyntaxOf(syntax) : TransferSyntaxOfUid(uid);
    return row == nullptr ? uid : std::string(row->name);
}

std::vector<ValuePair<double>> ReadWindows(const CDcmObject& header) {
    const auto centres = FirstValues<double>(header, tag::kWindowCenter, kMostWindows);
    const auto widths = FirstValues<double>(header, tag::kWindowWidth, kMostWindows);
    std::vector<ValuePair<double>> windows;
    for (std::size_t i = 0; i < std::min(centres.size(), widths.size()); ++i)
        windows.push_back({centres[i], widths[i]});
    return windows;
}

std::optional<ValuePair<double>> ReadRescale(const CDcmObject& header) {
    const auto slope = Read<double>(header, tag::kRescaleSlope);
    const auto intercept = Read<double>(header, tag::kRescaleIntercept);
    if (!slope || !intercept) return std::nullopt;
    return ValuePair<double>{*slope, *intercept};
}

// 0 entries stand for 65536.
std::optional<ImageSummary::Table> ReadTable(const CDcmObjectCommon& source, std::uint32_t tag) {
    const auto descriptor = FirstValues<int>(source, tag, 3);
    if (descriptor.size() < 3) return std::nullopt;
    const int entries = descriptor[0] == 0 ? 1 << 16 : descriptor[0];
    return ImageSummary::Table{entries, descriptor[1], descriptor[2]};
}

std::vector<ImageSummary::Table> ReadVoiTables(const CDcmObject& header) {
    std::vector<ImageSummary::Table> tables;
    for (const auto& item : FirstValues<CDcmItem>(header, tag::kVOILUTSequence, kMostWindows))
        if (const auto table = ReadTable(item, tag::kLUTDescriptor)) tables.push_back(*table);
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
    const auto rows = ReadWord(header, of(tag::kOverlayRows));
    const auto columns = ReadWord(header, of(tag::kOverlayColumns));
    const auto bits = ReadWord(header, of(tag::kOverlayBitsAllocated));
    if (!rows || !columns || !bits) return std::nullopt;
    int originRow = 1;
    int originColumn = 1;
    header.GetValue(of(tag::kOverlayOrigin), originRow);
    header.GetNextValue(of(tag::kOverlayOrigin), originColumn);
    const int bit = ReadWord(header, of(tag::kOverlayBitPosition)).value_or(0);
    const bool hasOwnData = *bits == 1 && bit == 0;
    return ImageSummary::Overlay{group,
                                 *columns,
                                 *rows,
                                 originColumn,
                                 originRow,
                                 hasOwnData ? std::nullopt : std::optional(bit),
                                 TextOf(header, of(tag::kOverlayDescription))};
}

std::vector<ImageSummary::Overlay> ReadOverlays(const CDcmObject& header) {
    std::vector<ImageSummary::Overlay> overlays;
    for (std::uint32_t group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2)
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
    summary.identity = Identify(header);
    summary.syntax = ReadSyntaxName(header, syntax);
    const auto* row = TransferSyntaxOf(syntax);
    summary.bigEndian = row != nullptr && row->isBigEndian;
    summary.columns = ReadWord(header, tag::kColumns);
    summary.rows = ReadWord(header, tag::kRows);
    summary.samples = ReadWord(header, tag::kSamplesPerPixel);
    summary.bitsAllocated = ReadWord(header, tag::kBitsAllocated);
    summary.bitsStored = ReadWord(header, tag::kBitsStored);
    summary.isSigned = ReadWord(header, tag::kPixelRepresentation).value_or(0) != 0;
    summary.sampleType = parser.GetSampleType();
    summary.frames = summary.columns && summary.rows ? parser.GetFrameCount() : 0;
    summary.photometric = TextOf(header, tag::kPhotometricInterpretation);
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
