// What `quorvex info --json` gives to a program.
#include "tools/info/element_owner.h"
#include "tools/info/element_value.h"
#include "tools/info/info_report.h"
#include "tools/json.h"
#include "tools/report.h"

#include <array>
#include <cstdio>

namespace quorvex::tools {
namespace {

/// Writes the elements of one walk as nested arrays.
///
/// The walk is flat: an element says how deep it lies and in which item. So a sequence is left open
/// until an element arrives that lies outside it.
class ElementArray {
public:
    ElementArray(const CDcmObject& header, bool bigEndian)
        : owner_(header), bigEndian_(bigEndian) {}

    [[nodiscard]] std::string Finish() {
        CloseDownTo(0);
        return '[' + std::move(json_) + ']';
    }

    void Add(const DcmElementView& element) {
        owner_.Follow(element);
        CloseDownTo(static_cast<std::size_t>(element.depth));
        if (element.depth > 0) OpenItem(element.itemIndex);
        if (!json_.empty() && json_.back() != '[') json_ += ',';
        AddHead(element);
        if (element.vr == MC_VR_SQ) {
            json_ += ",\"items\":[";
            open_.push_back({element.valueCount, -1});
        } else {
            json_ += ",\"value\":" + ValueOf(element) + '}';
        }
    }

private:
    struct OpenSequence {
        unsigned long count = 0;  // items that it has
        int item = -1;            // the one that is open
    };

    void AddHead(const DcmElementView& element) {
        std::array<char, 16> tag{};
        std::snprintf(tag.data(), tag.size(), "%08x", element.tag);
        json_ += R"({"tag":")" + std::string(tag.data()) + R"(","vr":")" +
                 std::string(RepresentationName(element.vr)) + '"';
        if (*element.keyword != '\0') json_ += ",\"keyword\":" + JsonString(element.keyword);
        json_ += ",\"length\":" + std::to_string(element.length);
        if (element.isCut) json_ += ",\"cut\":true";
    }

    std::string ValueOf(const DcmElementView& element) {
        const auto understood = Understand(element, bigEndian_);
        if (IsText(understood.view.vr)) return JsonString(owner_.Text(element));
        return NumbersAsJson(understood);
    }

    // Items without elements are never visited and stand as empty arrays.
    void OpenItem(int index) {
        auto& sequence = open_.back();
        if (sequence.item == index) return;
        if (sequence.item >= 0) json_ += ']';
        for (++sequence.item; sequence.item < index; ++sequence.item) AddItem("[]");
        AddItem("[");
    }
    void AddItem(const char* item) {
        if (json_.back() == ']') json_ += ',';
        json_ += item;
    }

    void CloseDownTo(std::size_t depth) {
        for (; open_.size() > depth; open_.pop_back()) {
            auto& sequence = open_.back();
            if (sequence.item >= 0) json_ += ']';
            for (auto i = sequence.item + 1; i < static_cast<int>(sequence.count); ++i)
                AddItem("[]");
            json_ += "]}";
        }
    }

    ElementOwner owner_;
    bool bigEndian_;
    std::vector<OpenSequence> open_;
    std::string json_;
};

std::string Number(std::string_view name, const std::optional<int>& number) {
    return number ? JsonMember(name, std::to_string(*number)) : "";
}

std::string Text(std::string_view name, std::string_view text) {
    return text.empty() ? "" : JsonMember(name, JsonString(text));
}

std::string PairOf(const ValuePair<double>& pair, const char* first, const char* second) {
    return std::string("{\"") + first + "\":" + JsonNumber(pair.first) +
           JsonMember(second, JsonNumber(pair.second)) + '}';
}

std::string TablesOf(const std::vector<ImageSummary::Table>& tables) {
    return JsonArray(tables, [](const ImageSummary::Table& table) {
        return "{\"entries\":" + std::to_string(table.entries) + Number("first", table.first) +
               Number("bits", table.bits) + '}';
    });
}

std::string OverlayOf(const ImageSummary::Overlay& overlay) {
    std::array<char, 8> group{};
    std::snprintf(group.data(), group.size(), "%04x", overlay.group);
    return "{\"group\":" + JsonString(group.data()) + Number("columns", overlay.columns) +
           Number("rows", overlay.rows) + Number("originColumn", overlay.originColumn) +
           Number("originRow", overlay.originRow) + Number("pixelBit", overlay.bit) +
           JsonMember("description", JsonString(overlay.description)) + '}';
}

std::string PresentationOf(const PresentationFacts& presentation) {
    std::string json;
    const auto add = [&](const char* name, const std::vector<NamedFacts>& several) {
        if (!several.empty()) json += JsonMember(name, FactsAsJson(several));
    };
    add("shutters", presentation.shutters);
    add("annotations", presentation.annotations);
    add("masks", presentation.masks);
    return json;
}

// How stored values become grey or colour.
std::string ValuesOf(const ImageSummary& summary) {
    std::string json;
    if (!summary.windows.empty())
        json += JsonMember("windows", JsonArray(summary.windows, [](const auto& window) {
                               return PairOf(window, "center", "width");
                           }));
    if (summary.rescale)
        json += JsonMember("rescale", PairOf(*summary.rescale, "slope", "intercept"));
    if (!summary.voiTables.empty()) json += JsonMember("voiLuts", TablesOf(summary.voiTables));
    if (!summary.palette.empty())
        json += JsonMember("palette", TablesOf(summary.palette)) +
                JsonMember("paletteSegmented", summary.isPaletteSegmented ? "true" : "false");
    return json;
}

// What the object is.
std::string IdentityOf(const ObjectIdentity& identity) {
    return Text("sopClass", identity.sopClassUid) + Text("sopClassName", identity.sopClassName) +
           Text("modality", identity.modality) + Text("patientName", identity.patientName) +
           Text("patientId", identity.patientId) + Text("studyDate", identity.studyDate) +
           JsonMember("needs", JsonArray(identity.needs, JsonString));
}

std::string SummaryOf(const ImageSummary& summary) {
    const bool isFloat = summary.sampleType != SampleType::kInteger;
    std::string json = "{\"transferSyntax\":" + JsonString(summary.syntax);
    json += IdentityOf(summary.identity) + Text("preamble", summary.preamble) +
            Number("columns", summary.columns) + Number("rows", summary.rows) +
            Number("frames", summary.frames) + Number("samplesPerPixel", summary.samples) +
            Number("bitsAllocated", summary.bitsAllocated) +
            Number("bitsStored", summary.bitsStored) +
            JsonMember("signed", isFloat || summary.isSigned ? "true" : "false") +
            (isFloat ? JsonMember("float", "true") : "") +
            Text("photometric", summary.photometric) + ValuesOf(summary);
    if (!summary.overlays.empty())
        json += JsonMember("overlays", JsonArray(summary.overlays, OverlayOf));
    json += PresentationOf(summary.presentation);
    if (summary.sliceLocation)
        json += JsonMember("sliceLocation", JsonNumber(*summary.sliceLocation));
    return json + '}';
}

}  // namespace

std::string InfoAsJson(const std::string& name, const ImageSummary& summary,
                       const CDcmObject& header, const std::vector<WantedTag>& wanted) {
    ElementArray elements(header, summary.bigEndian);
    WalkWanted(header, wanted, [&](const DcmElementView& element) { elements.Add(element); });
    return "{\"file\":" + JsonString(name) + JsonMember("summary", SummaryOf(summary)) +
           JsonMember("elements", elements.Finish()) + "}\n";
}

std::string ErrorAsJson(const std::string& name, const Trouble& trouble) {
    return "{\"file\":" + JsonString(name) + R"(,"error":{"code":)" + std::to_string(trouble.code) +
           JsonMember("name", JsonString(ResultName(trouble.code))) +
           JsonMember("sentence", JsonString(trouble.sentence)) + "}}\n";
}

}  // namespace quorvex::tools
