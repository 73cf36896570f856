#include "tests/faults/fault_kinds.h"

#include "quorvex/Tags.h"
#include "quorvex/TransferSyntaxes.h"
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

CDcmObject Identified(CDcmObject object) {
    return With(std::move(object),
                "00080005=ISO_IR 192; 00080016=1.2.840.10008.5.1.4.1.1.7; 00080018=1.2.3.4; "
                "00080060=CT; 00100010=M\xC3\xBCller^Anna; 0020000D=1.2.3; 0020000E=1.2.3.1; "
                "00200032=1.5\\-20\\33.25; 00200037=1\\0\\0\\0\\1\\0; 00280030=0.5\\0.5");
}

CDcmObject Grey(int frames = 1) {
    CDcmObject object;
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < kPixels * static_cast<std::size_t>(frames); ++i)
        samples.push_back(static_cast<std::uint16_t>(i * 5 % 4096));
    FillImage(object, {.size = kSize}, samples);
    if (frames > 1) object.SetValue(tag::kNumberOfFrames, std::to_string(frames).c_str());
    return With(Identified(object), "00281050=40; 00281051=400; 00281052=-1024; 00281053=1.5");
}

CDcmObject Colour() {
    CDcmObject object;
    FillImage(object, {kSize, 3, 8, 8, 0, "RGB"}, WavyFrame(kPixels * 3, 1, 255));
    return With(Identified(object), "00280006=0");
}

CDcmObject Palette() {
    CDcmObject object;
    FillImage(object, {kSize, 1, 8, 8, 0, "PALETTE COLOR"}, WavyFrame(kPixels, 1, 255));
    TestTable ramp;
    for (int i = 0; i < 256; ++i) ramp.entries.push_back(static_cast<std::uint16_t>(i * 256));
    const TestTable flat{0, std::vector<std::uint16_t>(256, 0x8000)};
    AddPalette(object, ramp, flat, ramp, 16);
    return Identified(object);
}

CDcmObject Overlaid() {
    CDcmObject object = Grey();
    AddOverlay(object, 0x6000, {20, 36, 1, 1, 1, 0, RandomBytes(90, 7)});
    AddOverlay(object, 0x6002, {20, 36, 1, 1, 16, 15, {}});
    return With(object, "00181600=CIRCULAR; 00181610=10\\18; 00181612=8");
}

CDcmItem Ramp(int entries, int step, int bits = 16) {
    std::vector<int> ramp;
    for (int i = 0; i < entries; ++i) ramp.push_back(i * step);
    return LutItem(entries, 0, bits, ramp);
}

CDcmObject WithTables() {
    CDcmObject object = Grey();
    for (const auto tag :
         {tag::kRescaleIntercept, tag::kRescaleSlope, tag::kWindowCenter, tag::kWindowWidth})
        object.RemoveValue(tag);
    PutItems(object, tag::kModalityLUTSequence, {Ramp(256, 200)});
    PutItems(object, tag::kVOILUTSequence, {Ramp(256, 200)});
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

CDcmObject JpegLs(const CDcmObject& native, unsigned samples, unsigned bits) {
    CDcmObject object = native;
    Bytes coded = CodeJpegLsFrame({36, 20, samples, bits}, StoredFrames(native).front());
    const unsigned long length = coded.size();
    unsigned char* data = coded.data();
    object.SetTransferSyntax(kJpegLsLossless);
    object.SetValueEx(tag::kPixelData, 1, &length, &data);
    return object;
}

CDcmObject Converted(CDcmObject object, QUORVEX_XFERSYNTAX to) {
    if (ConvertTo(to, object, to == kXferJpeg2000 || to == kXferHtj2k ? 4 : 80).Code() !=
        QVM_SUCCESS)
        throw std::runtime_error("no such kind");
    return object;
}

/// In a coding that only the standard rules write.
CDcmObject Recoded(CDcmObject object, QUORVEX_XFERSYNTAX to) {
    if (Recode(object, to) != QVM_SUCCESS) throw std::runtime_error("no such kind");
    return object;
}

/// Samples of 32 bits.
CDcmObject Long() {
    CDcmObject object;
    std::vector<std::uint32_t> samples;
    for (std::uint32_t i = 0; i < kPixels; ++i) samples.push_back(i * 70001);
    FillImage(object, {kSize, 1, 32, 32, 0, "MONOCHROME2"}, samples);
    return Identified(object);
}

CDcmObject In(CDcmObject object, TRANSFER_SYNTAX syntax) {
    object.SetTransferSyntax(syntax);
    return object;
}

CDcmObject State() {
    const auto area =
        With<CDcmItem>("00700052=2\\1; 00700053=30\\18; 00700100=SCALE TO FIT; 00700102=1\\1");
    const auto text =
        With<CDcmItem>("00700004=PIXEL; 00700006=L\xC3\xA4nge; 00700014=3\\4; 00700015=Y");
    const auto shape = With<CDcmItem>(
        "00700005=PIXEL; 00700020=2; 00700021=3; 00700022=1\\1\\9\\9\\20\\5; 00700023=POLYLINE; "
        "00700024=N");
    CDcmItem annotation = Referring(CDcmItem(), {Reference(kImage)});
    PutItems(annotation, tag::kTextObjectSequence, {text});
    PutItems(annotation, tag::kGraphicObjectSequence, {shape});
    CDcmItem voi = Referring(CDcmItem(), {Reference(kImage)});
    PutItems(voi, tag::kVOILUTSequence, {Ramp(512, 100)});
    CDcmObject state =
        With(Identified(In({}, kExplicitLittleEndian)),
             "00080016=1.2.840.10008.5.1.4.1.1.11.1; 00080060=PR; 00700042=90; 00700041=Y; "
             "00181600=RECTANGULAR\\POLYGONAL; 00181602=3; 00181604=30; 00181606=3; 00181608=17; "
             "00181620=2\\2\\18\\3\\10\\30; 00181622=16384");
    PutItems(state, tag::kModalityLUTSequence, {Ramp(512, 100)});
    PutItems(state, tag::kSoftcopyVOILUTSequence, {voi});
    PutItems(state, tag::kPresentationLUTSequence, {Ramp(256, 100, 8)});
    PutItems(state, tag::kDisplayedAreaSelectionSequence, {Referring(area, {Reference(kImage)})});
    PutItems(state, tag::kGraphicAnnotationSequence, {annotation});
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
        Add("JPEG-LS", JpegLs(Colour(), 3, 8));
        if (TransferSyntaxOf(kHtj2k)->isWritten) Add("HTJ2K", Converted(Colour(), kXferHtj2k));
        Add("RLE 32 bits", Recoded(Long(), kXferRle));
        Add("deflated frames", Recoded(Grey(2), kXferDeflatedFrames));
        if (TransferSyntaxOf(kJpegXl)->isWritten) {
            Add("JPEG XL", Recoded(Grey(), kXferJpegXlLossless));
            Add("JPEG XL of JPEG",
                Recoded(Converted(Colour(), kXferJpegBaseline), kXferJpegXlOfJpeg));
        }
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
    object.GetValueEx(tag::kPixelData, &frames, TakeItem);
    return frames;
}

}  // namespace quorvex::test
