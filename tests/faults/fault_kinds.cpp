#include "tests/faults/fault_kinds.h"

#include "quorvex/Tags.h"
#include "tests/maker/maker_objects.h"
#include "tests/pipeline/overlay_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/reliability/coded_frames.h"
#include "tests/support/answers.h"
#include "tests/support/scratch_folder.h"

#include <stdexcept>

namespace quorvex::test {
namespace {

using namespace pipeline_test;

constexpr CSize kSize = {36, 20};
constexpr std::size_t kPixels = 36 * 20;

void Identify(CDcmObject& object) {
    object.SetValue(0x00080005, "ISO_IR 192");
    object.SetValue(0x00080016, "1.2.840.10008.5.1.4.1.1.7");
    object.SetValue(0x00080018, kImage);
    object.SetValue(0x00080060, "CT");
    object.SetValue(0x00100010, "M\xC3\xBCller^Anna");
    object.SetValue(0x0020000D, "1.2.3");
    object.SetValue(0x0020000E, "1.2.3.1");
    Put<const char*>(object, 0x00200032, {"1.5", "-20", "33.25"});
    Put<const char*>(object, 0x00200037, {"1", "0", "0", "0", "1", "0"});
    Put<const char*>(object, 0x00280030, {"0.5", "0.5"});
}

CDcmObject Grey(int frames = 1) {
    CDcmObject object;
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < kPixels * static_cast<std::size_t>(frames); ++i)
        samples.push_back(static_cast<std::uint16_t>(i * 5 % 4096));
    FillImage(object, {.size = kSize}, samples);
    Identify(object);
    object.SetValue(0x00281050, "40");
    object.SetValue(0x00281051, "400");
    object.SetValue(0x00281052, "-1024");
    object.SetValue(0x00281053, "1.5");
    if (frames > 1) object.SetValue(0x00280008, std::to_string(frames).c_str());
    return object;
}

CDcmObject Colour() {
    CDcmObject object;
    const ImageShape shape = {kSize, 3, 8, 8, 0, "RGB"};
    FillImage(object, shape, WavyFrame(kPixels * 3, 1, 255));
    Identify(object);
    object.SetValue(0x00280006, static_cast<unsigned short>(0));
    return object;
}

CDcmObject Palette() {
    CDcmObject object;
    FillImage(object, {kSize, 1, 8, 8, 0, "PALETTE COLOR"}, WavyFrame(kPixels, 1, 255));
    Identify(object);
    TestTable ramp;
    for (int i = 0; i < 256; ++i) ramp.entries.push_back(static_cast<std::uint16_t>(i * 256));
    const TestTable flat{0, std::vector<std::uint16_t>(256, 0x8000)};
    AddPalette(object, ramp, flat, ramp, 16);
    return object;
}

CDcmObject Overlaid() {
    CDcmObject object = Grey();
    AddOverlay(object, 0x6000, {20, 36, 1, 1, 1, 0, RandomBytes(90, 7)});
    AddOverlay(object, 0x6002, {20, 36, 1, 1, 16, 15, {}});
    object.SetValue(0x00181600, "CIRCULAR");
    Put<const char*>(object, 0x00181610, {"10", "18"});
    object.SetValue(0x00181612, "8");
    return object;
}

CDcmObject WithTables() {
    CDcmObject object = Grey();
    object.RemoveValue(0x00281052);
    object.RemoveValue(0x00281053);
    std::vector<int> ramp;
    for (int i = 0; i < 256; ++i) ramp.push_back(i * 200);
    PutItems(object, 0x00283000, {LutItem(256, 0, 16, ramp)});
    PutItems(object, 0x00283010, {LutItem(256, 0, 16, ramp)});
    object.RemoveValue(0x00281050);
    object.RemoveValue(0x00281051);
    return object;
}

CDcmObject Rle(const CDcmObject& native, unsigned samples, unsigned bits) {
    CDcmObject object = native;
    const FrameForm form{36, 20, samples, bits};
    Bytes coded = CodeRle(form, StoredFrames(native).front());
    const unsigned long length = coded.size();
    unsigned char* data = coded.data();
    object.SetTransferSyntax(kRle);
    object.SetValueEx(tag::kPixelData, 1, &length, &data);
    return object;
}

CDcmObject Converted(CDcmObject object, QUORVEX_XFERSYNTAX to) {
    if (ConvertTo(to, object, to == kXferJpeg2000 ? 4 : 80).Code() != QVM_SUCCESS)
        throw std::runtime_error("no such kind");
    return object;
}

CDcmObject In(CDcmObject object, TRANSFER_SYNTAX syntax) {
    object.SetTransferSyntax(syntax);
    return object;
}

CDcmItem AreaItem() {
    CDcmItem area;
    Put<int>(area, 0x00700052, {2, 1});
    Put<int>(area, 0x00700053, {30, 18});
    area.SetValue(0x00700100, "SCALE TO FIT");
    Put<const char*>(area, 0x00700102, {"1", "1"});
    PutItems(area, 0x00081140, {Reference(kImage)});
    return area;
}

CDcmItem AnnotationItem() {
    CDcmItem text;
    text.SetValue(0x00700006,
                  "Gr\xC3\xB6\xC3\x9F"
                  "e");
    text.SetValue(0x00700004, "PIXEL");
    Put<double>(text, 0x00700014, {3.0, 4.0});
    text.SetValue(0x00700015, "Y");
    CDcmItem shape;
    shape.SetValue(0x00700005, "PIXEL");
    shape.SetValue(0x00700020, static_cast<unsigned short>(2));
    shape.SetValue(0x00700021, static_cast<unsigned short>(3));
    Put<double>(shape, 0x00700022, {1.0, 1.0, 9.0, 9.0, 20.0, 5.0});
    shape.SetValue(0x00700023, "POLYLINE");
    shape.SetValue(0x00700024, "N");
    CDcmItem item;
    PutItems(item, 0x00081140, {Reference(kImage)});
    PutItems(item, 0x00700008, {text});
    PutItems(item, 0x00700009, {shape});
    return item;
}

CDcmObject State() {
    CDcmObject state;
    state.SetTransferSyntax(kExplicitLittleEndian);
    Identify(state);
    state.SetValue(0x00080016, "1.2.840.10008.5.1.4.1.1.11.1");
    state.SetValue(0x00080060, "PR");
    std::vector<int> ramp;
    for (int i = 0; i < 512; ++i) ramp.push_back(i * 100);
    PutItems(state, 0x00283000, {LutItem(512, 0, 16, ramp)});
    CDcmItem voi;
    PutItems(voi, 0x00283010, {LutItem(512, 0, 16, ramp)});
    PutItems(voi, 0x00081140, {Reference(kImage)});
    PutItems(state, 0x00283110, {voi});
    PutItems(state, 0x20500010,
             {LutItem(256, 0, 8, std::vector<int>(ramp.begin(), ramp.begin() + 256))});
    PutItems(state, 0x0070005A, {AreaItem()});
    PutItems(state, 0x00700001, {AnnotationItem()});
    state.SetValue(0x00700042, static_cast<unsigned short>(90));
    state.SetValue(0x00700041, "Y");
    Put<const char*>(state, 0x00181600, {"RECTANGULAR", "POLYGONAL"});
    state.SetValue(0x00181602, "3");
    state.SetValue(0x00181604, "30");
    state.SetValue(0x00181606, "3");
    state.SetValue(0x00181608, "17");
    Put<const char*>(state, 0x00181620, {"2", "2", "18", "3", "10", "30"});
    state.SetValue(0x00181622, static_cast<unsigned short>(0x4000));
    return state;
}

class Shelf {
public:
    Shelf() {
        Add("native CT", Grey());
        Add("colour", Colour());
        Add("palette", Palette());
        Add("RLE", Rle(Grey(), 1, 16));
        Add("RLE colour", Rle(Colour(), 3, 8));
        Add("JPEG baseline", Converted(Colour(), kXferJpegBaseline));
        Add("JPEG 12 bits", Converted(Grey(), kXferJpegExtended));
        Add("JPEG lossless", Converted(Grey(), kXferJpegLossless));
        Add("JPEG 2000", Converted(Colour(), kXferJpeg2000));
        Add("JPEG 2000 lossless", Converted(Grey(), kXferJpeg2000Lossless));
        Add("multi-frame", Converted(Grey(3), kXferJpegLossless));
        Add("overlays and shutter", Overlaid());
        Add("tables", WithTables());
        Add("deflated", In(Grey(), kDeflatedExplicitLittleEndian));
        Add("big endian", In(Grey(2), kExplicitBigEndian));
        AddBare("bare data set", In(Grey(), kImplicitLittleEndian));
        Add("presentation state", State());
    }
    [[nodiscard]] std::span<const Kind> Kinds() const { return kinds_; }

private:
    void Add(const std::string& name, const CDcmObject& made) {
        Kind kind{.name = name, .path = folder_.Path(name)};
        if (made.WriteFile(kind.path) != kDcmSuccess) throw std::runtime_error(name);
        kind.bytes = BytesOfFile(kind.path);
        kind.object.Open(kind.path);
        if (kind.object.ReadFile(nullptr, nullptr, nullptr) != kDcmSuccess)
            throw std::runtime_error(name);
        kinds_.push_back(std::move(kind));
    }
    /// The same file without preamble and meta information.
    void AddBare(const std::string& name, const CDcmObject& made) {
        Add(name, made);
        Kind& kind = kinds_.back();
        const std::size_t meta = 132 + 12 + (kind.bytes[140] | kind.bytes[141] << 8);
        kind.bytes.erase(kind.bytes.begin(),
                         kind.bytes.begin() + static_cast<std::ptrdiff_t>(meta));
        folder_.Write(name, kind.bytes);
    }

    ScratchFolder folder_;
    std::vector<Kind> kinds_;
};

MC_STATUS PutDown(const DcmElementView& element, void* user) {
    auto& text = *static_cast<std::string*>(user);
    text += std::to_string(element.depth) + ' ' + std::to_string(element.itemIndex) + ' ' +
            std::to_string(element.tag) + ' ' + std::to_string(element.vr) + ' ' +
            std::to_string(element.valueCount) + ' ';
    text.append(reinterpret_cast<const char*>(element.data), element.data ? element.length : 0);
    return kMcContinue;
}

MC_STATUS TakeItem(int, std::uint32_t, void* user, int item, unsigned long length,
                   unsigned char* data, int, int) {
    auto& frames = *static_cast<std::vector<Bytes>*>(user);
    if (item == 0) return kMcContinue;
    frames.resize(static_cast<std::size_t>(item));
    frames.back().insert(frames.back().end(), data, data + length);
    return kMcContinue;
}

}  // namespace

std::span<const Kind> AllKinds() {
    static const Shelf shelf;
    return shelf.Kinds();
}

const Kind& KindOf(std::string_view name) {
    const auto kinds = AllKinds();
    const auto found = std::ranges::find(kinds, name, &Kind::name);
    if (found == kinds.end()) throw std::runtime_error(std::string(name));
    return *found;
}

std::string Look(const CDcmObjectCommon& object) {
    std::string text;
    object.WalkElements(&text, PutDown);
    return text;
}

std::vector<std::vector<unsigned char>> StoredFrames(const CDcmObject& object) {
    std::vector<std::vector<unsigned char>> frames;
    object.GetValueEx(0x7FE00010, &frames, TakeItem);
    return frames;
}

}  // namespace quorvex::test
