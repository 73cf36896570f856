// What `quorvex info` shows to a reader.
#include "tools/info/element_owner.h"
#include "tools/info/element_value.h"
#include "tools/info/info_report.h"
#include "tools/json.h"
#include "tools/report.h"
#include "tools/sop_class/sop_class.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace quorvex::tools {
namespace {

constexpr int kLongestText = 80;  // characters of one value
constexpr int kIndent = 4;

std::string Shortened(const CString& text) {
    return (text.GetLength() > kLongestText ? text.Left(kLongestText - 3) + "..." : text).ToUtf8();
}

// Text that some writer stored without saying that it is text.
bool IsReadable(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return c >= ' ' && c < 0x7F; });
}

std::string HeadOf(const DcmElementView& element) {
    std::array<char, 128> head{};
    std::snprintf(head.data(), head.size(), "(%04x,%04x) %s %-36s ", element.tag >> 16,
                  element.tag & 0xFFFF, std::string(RepresentationName(element.vr)).c_str(),
                  element.keyword);
    return head.data();
}

std::string CountOf(unsigned long count, const char* one, const char* several) {
    return std::to_string(count) + ' ' + (count == 1 ? one : several);
}

/// Collects the lines of one walk.
class Lines {
public:
    Lines(const CDcmObject& header, bool bigEndian) : owner_(header), bigEndian_(bigEndian) {}

    void Add(const DcmElementView& element) {
        owner_.Follow(element);
        NoteItem(element);
        text_ += Margin(element.depth) + HeadOf(element) + ValueOf(element) + '\n';
    }
    [[nodiscard]] std::string Take() { return std::move(text_); }

private:
    // A line ahead of the first element of each item.
    void NoteItem(const DcmElementView& element) {
        const auto depth = static_cast<std::size_t>(element.depth);
        const bool isDeeper = items_.size() < depth;
        items_.resize(depth, -1);
        if (depth == 0 || (!isDeeper && items_.back() == element.itemIndex)) return;
        items_.back() = element.itemIndex;
        text_ += Margin(element.depth) + "item " + std::to_string(element.itemIndex + 1) + '\n';
    }

    std::string ValueOf(const DcmElementView& element) {
        if (element.vr == MC_VR_SQ) return CountOf(element.valueCount, "item", "items");
        const std::string cut = element.isCut ? " (cut short)" : "";
        if (element.length == 0) return "(no value)" + cut;
        const auto understood = Understand(element, bigEndian_);
        if (IsText(understood.view.vr)) {
            const auto text = owner_.Text(element);
            return '[' + Printable(Shortened(text)) + ']' + NameOf(understood.view.vr, text) + cut;
        }
        if (understood.view.vr == MC_VR_UN && IsReadable(ValueBytes(element)))
            return '[' + Shortened(ValueBytes(element)) + ']' + cut;
        return NumbersAsText(understood) + LengthOf(element) + cut;
    }

    // What the standard calls a UID that it knows.
    static std::string NameOf(MC_VR vr, const std::string& uid) {
        if (vr != MC_VR_UI) return {};
        const auto* syntax = TransferSyntaxOfUid(uid);
        const auto name = syntax != nullptr ? syntax->name : SopClassName(uid);
        return name.empty() ? "" : ' ' + std::string(name);
    }

    static std::string LengthOf(const DcmElementView& element) {
        constexpr unsigned long kShort = 16;
        return element.length > kShort ? " (" + CountOf(element.length, "byte", "bytes") + ')' : "";
    }

    static std::string Margin(int depth) {
        std::string margin;
        margin.append(static_cast<std::size_t>(depth) * kIndent, ' ');
        return margin;
    }

    ElementOwner owner_;
    bool bigEndian_;
    std::vector<int> items_;
    std::string text_;
};

std::string Line(std::string_view label, const std::string& text) {
    constexpr std::size_t kLabelWidth = 18;
    std::string line = "  " + std::string(label);
    line.resize(std::max(line.size() + 1, kLabelWidth), ' ');
    return line + text + '\n';
}

std::string SizeLine(const ImageSummary& summary) {
    return Line("size", std::to_string(*summary.columns) + " x " + std::to_string(*summary.rows) +
                            ", " + std::to_string(summary.frames) +
                            (summary.frames == 1 ? " frame" : " frames"));
}

std::string PixelLine(const ImageSummary& summary) {
    std::string text;
    if (summary.samples)
        text += CountOf(static_cast<unsigned>(*summary.samples), "sample", "samples");
    if (summary.bitsStored) text += ", " + std::to_string(*summary.bitsStored) + " bits";
    if (summary.bitsAllocated) text += " in " + std::to_string(*summary.bitsAllocated);
    if (summary.sampleType != SampleType::kInteger) return Line("pixel", text + " bits, float");
    return Line("pixel", text + (summary.isSigned ? ", signed" : ", unsigned"));
}

std::string TableText(const ImageSummary::Table& table) {
    return std::to_string(table.entries) + " entries of " + std::to_string(table.bits) +
           " bits from " + std::to_string(table.first);
}

// How values become grey or colour.
std::string TableLines(const ImageSummary& summary) {
    std::string text;
    for (const auto& table : summary.voiTables) text += Line("VOI LUT", TableText(table));
    constexpr const char* kColours[] = {"red", "green", "blue"};
    for (std::size_t i = 0; i < summary.palette.size(); ++i)
        text += Line(
            "palette " + std::string(kColours[i]),
            TableText(summary.palette[i]) + (summary.isPaletteSegmented ? ", in segments" : ""));
    return text;
}

std::string OverlayLines(const ImageSummary& summary) {
    std::string text;
    for (const auto& overlay : summary.overlays) {
        std::array<char, 24> label{};
        std::snprintf(label.data(), label.size(), "overlay %04x", overlay.group);
        text += Line(
            label.data(),
            std::to_string(overlay.columns) + " x " + std::to_string(overlay.rows) +
                " from column " + std::to_string(overlay.originColumn) + ", row " +
                std::to_string(overlay.originRow) +
                (overlay.bit ? ", bit " + std::to_string(*overlay.bit) + " of the pixels" : "") +
                (overlay.description.empty() ? "" : ", " + Printable(overlay.description)));
    }
    return text;
}

std::string PresentationLines(const PresentationFacts& presentation) {
    std::string text;
    for (const auto& facts : presentation.shutters) text += Line("shutter", FactsAsText(facts));
    for (const auto& facts : presentation.annotations) {
        text += Line("annotation", FactsAsText(facts));
    }
    for (const auto& facts : presentation.masks) text += Line("mask", FactsAsText(facts));
    return text;
}

std::string Joined(const std::vector<std::string>& parts, const char* between) {
    std::string text;
    for (const auto& part : parts)
        if (!part.empty()) text += (text.empty() ? "" : between) + part;
    return Printable(text);
}

// What the object is, ahead of any detail.
std::string IdentityLines(const ObjectIdentity& identity) {
    const auto& uid = identity.sopClassUid;
    std::string object = identity.sopClassName;
    if (!uid.empty()) object += object.empty() ? "of class " + uid : " (" + uid + ')';
    std::string text = Line("object", object.empty() ? "of no stated class" : Printable(object));
    const auto add = [&](const char* label, const std::string& value) {
        if (!value.empty()) text += Line(label, value);
    };
    add("modality", Joined({identity.modality, identity.seriesDescription}, ", "));
    add("patient", Joined({identity.patientName, identity.patientId}, ", "));
    add("study", Joined({identity.studyDate, identity.studyDescription}, ", "));
    add("to show it", Joined(identity.needs, "; "));
    return text;
}

std::string SummaryLines(const ImageSummary& summary) {
    std::string text = IdentityLines(summary.identity);
    if (!summary.preamble.empty())
        text += Line("preamble", "begins like a " + std::string(summary.preamble));
    text += Line("transfer syntax", summary.syntax.empty() ? "unknown" : Printable(summary.syntax));
    if (summary.columns && summary.rows) text += SizeLine(summary) + PixelLine(summary);
    if (!summary.photometric.empty()) text += Line("photometric", Printable(summary.photometric));
    for (const auto& window : summary.windows)
        text += Line("window",
                     "centre " + JsonNumber(window.first) + ", width " + JsonNumber(window.second));
    if (summary.rescale)
        text += Line("rescale", "value x " + JsonNumber(summary.rescale->first) + " + " +
                                    JsonNumber(summary.rescale->second));
    text += TableLines(summary) + OverlayLines(summary);
    text += PresentationLines(summary.presentation);
    if (summary.sliceLocation)
        text += Line("slice location", JsonNumber(*summary.sliceLocation) + " mm");
    return text;
}

}  // namespace

std::string InfoAsText(const std::string& name, const ImageSummary& summary,
                       const CDcmObject& header, const std::vector<WantedTag>& wanted) {
    Lines lines(header, summary.bigEndian);
    const bool isThere =
        WalkWanted(header, wanted, [&](const DcmElementView& element) { lines.Add(element); });
    std::string text = Printable(name) + '\n';
    if (wanted.empty()) text += SummaryLines(summary) + '\n';
    return text + (isThere ? lines.Take() : "(none of these elements)\n") + '\n';
}

}  // namespace quorvex::tools
