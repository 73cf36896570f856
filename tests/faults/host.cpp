#include "tests/faults/host.h"

#include "tests/presentation/presentation_objects.h"
#include "tests/support/answers.h"
#include "tests/support/digest.h"

namespace quorvex::test {
namespace {

std::string TextOf(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

template <class... Number>
std::string TextOfNumbers(Number... number) {
    return ((std::to_string(number) + ' ') + ...);
}

std::string WithoutTheNew(CDcmObject object) {
    for (const auto tag : kNewEachTime) object.RemoveValue(tag);
    return Look(object) + object.GetFileName().ToUtf8();
}

std::string TextOfResult(const CXDIPP& shown) {
    const RenderedResult result = ResultOf(shown);
    if (result.code != QVM_SUCCESS) return "no result";
    return TextOfNumbers(result.size.cx, result.size.cy) + TextOf(result.bytes);
}

}  // namespace

Host::Host(const Kind& of) : kind(of), object(of.object), path(of.path) {
    object.Open(of.path);
    reader.imageUID = of.name == kStates ? kImage : "";
    for (auto& record : records) {
        record.imageColumns = kKindSize.cx;
        record.imageRows = kKindSize.cy;
    }
}

void ShowUnderState(Host& s) {
    Show(s, s.object);
    CDcmObject state = KindOf(kStates).object;
    static_cast<void>(s.dipp.ApllyGSPSObject(&s.app, &state));
}

std::string SeenObject(Host& s) {
    return Look(s.object) + s.object.GetFileName().ToUtf8();
}
std::string SeenConverted(Host& s) {
    return WithoutTheNew(s.object);
}
std::string SeenMade(Host& s) {
    return s.made ? WithoutTheNew(*s.made) : "none";
}
std::string SeenValues(Host& s) {
    return s.text.ToUtf8() + Look(s.item) + std::to_string(s.count);
}

std::string SeenFolder(Host& s) {
    std::string text;
    for (const auto& name : s.folder->Names()) text += name + ReadAll(s.folder->Path(name));
    return text;
}

std::string SeenParser(Host& s) {
    const auto* header = s.parser.GetHeader();
    return (header == nullptr ? std::string("no header") : Look(*header)) + s.block.Look() +
           s.bitmap.Look() + s.text.ToUtf8() +
           TextOfNumbers(s.parser.GetFrameCount(), s.place, s.length, s.location);
}

std::string SeenFrame(Host& s) {
    const Answered frame = FrameOf(s.parser);
    return SeenParser(s) + std::to_string(frame.code) + TextOf(frame.bytes);
}

std::string SeenPalette(Host& s) {
    return TextOfNumbers(s.lut.GetEntryBits(), s.lut.GetEntries().size(), s.lut.Lookup(9));
}

std::string SeenCoding(Host& s) {
    if (s.pages != nullptr) return TextOf({s.pages, s.block.size});
    return s.block.Look() + TextOf(s.source);
}
std::string SeenBlock(Host& s) {
    return s.block.Look();
}

std::string SeenDisplay(Host& s) {
    int window[2] = {};
    s.dipp.GetWindowingFactor(window[0], window[1]);
    CXDIPP copy(s.dipp);
    static_cast<void>(copy.Render());
    return TextOfNumbers(window[0], window[1], s.dipp.GetZoomFactor(), s.dipp.GetPanOffset().x) +
           TextOfResult(s.dipp) + TextOf(s.surface) + TextOfResult(copy);
}

std::string SeenWindows(Host& s) {
    int size = 0;
    int low = 0;
    s.windowing.GetValue(CXWindowing::kDisplayTableCount, &size, &low);
    std::string table(static_cast<std::size_t>(size), '\0');
    s.windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
    int width = 0;
    int level = 0;
    s.windowing.GetWindowingFactor(width, level);
    return table + TextOfNumbers(low, width, level);
}

std::string SeenSurface(Host& s) {
    return TextOf(s.surface);
}
std::string SeenPixels(Host& s) {
    return TextOf(s.pixels);
}

std::string SeenRecord(Host& s) {
    if (s.latest == 0) return "";
    const Record& r = s.records[s.latest - 1];
    std::string text;
    for (const auto& table :
         {Entries(r.modalityLUTData, r.modalityLUTCount), Entries(r.voiLUTData, r.voiLUTCount),
          Entries(r.presentationLUTData, r.presentationLUTCount)}) {
        for (const int entry : table) text += std::to_string(entry) + ' ';
        text += '|';
    }
    if (r.shutterMask != nullptr) text += TextOf({r.shutterMask, 720});
    return text + TextOfNumbers(r.windowCenter, r.windowWidth, r.rescaleSlope, r.rescaleIntercept,
                                r.pixelSpacingX, r.imageRotation, r.textObjects.GetSize(),
                                r.graphicObjects.GetSize());
}

}  // namespace quorvex::test
