// Failing memory under the parser, the image processor, the display pipeline and its windows.
#include "quorvex/Tags.h"
#include "tests/faults/fault_harness.h"
#include "tests/support/answers.h"

namespace quorvex {
namespace {

using namespace test;

std::string TextOfResult(const CXDIPP& shown) {
    const RenderedResult result = ResultOf(shown);
    if (result.code != QVM_SUCCESS) return "no result";
    return TextOfNumbers(result.size.cx, result.size.cy) + TextOf(result.bytes);
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

std::string SeenPixels(Host& s) {
    return TextOf(s.pixels);
}

constexpr How kThrowsOnImages{.notOn = kStates, .reports = Reports::kException};
constexpr auto kJpegBlind = &CxImageProcessor::DecompressBlindJPEGData;
constexpr auto kJp2kBlind = &CxImageProcessor::DecompressBlindJP2KData;

// --- Parser --------------------------------------------------------------------------------------

template <int readWhole>
bool Open(Host& s) {
    return IsDone(s.parser.Initialize(&s.app, s.path.Give(), readWhole));
}
template <int readWhole>
void Opened(Host& s) {
    static_cast<void>(Open<readWhole>(s));
}
/// A parser that holds something else so far.
void OpenedOther(Host& s) {
    static_cast<void>(s.parser.Initialize(&s.app, AllKinds().front().path, 0));
    s.from = std::make_unique<Host>(s.kind);
    Opened<0>(*s.from);
}

bool FetchLast(Host& s) {
    s.block.Drop();
    const int last = s.parser.GetFrameCount() - 1;
    return IsDone(s.parser.GetAFrame(last, s.block.data, s.block.size, 0));
}

bool MakeThumbnail(Host& s, QUORVEX_XFERSYNTAX format, int usesDataRange) {
    s.block.Drop();
    s.bitmap.Drop();
    tagBITMAPINFOHEADER* header = nullptr;
    const auto code = s.parser.MakeThumbNail(0, {16, 12}, format, usesDataRange, s.block.data,
                                             s.block.size, header, s.bitmap.size, 80);
    s.bitmap.data = static_cast<unsigned char*>(static_cast<void*>(header));
    return IsDone(code);
}

bool Colour(Host& s) {
    unsigned short bits = 8;
    unsigned short samples = 0;
    s.block.Drop();
    const auto code = s.parser.GetRGBBufferFromPaletteImage(s.pixels.data(), 36, 20, bits, samples,
                                                            s.text, s.block.data, 0);
    s.block.size = s.block.data != nullptr ? 36 * 20 * 3 : 0;
    return IsDone(code);
}

constexpr Operation kParsers[] = {
    {"CxDcmParser::Initialize, header", kUsable, SeenFrame, Open<0>},
    {"CxDcmParser::Initialize, whole", kUsable, SeenFrame, Open<1>},
    {"CxDcmParser::Initialize, again", kUsable, SeenFrame, Open<0>, OpenedOther},
    {"CxDcmParser::Initialize, object", kUsable, SeenFrame,
     DONE(s.parser.Initialize(&s.app, &s.object, nullptr, 0, 0))},
    {"CxDcmParser::Initialize, memory", kUsable, SeenParser,
     DONE(s.parser.Initialize(&s.app, &s.object, s.source.data(), s.source.size(), 132)),
     DO(s.source = s.kind.bytes)},
    {"CxDcmParser::GetAFrame, file", kOnImages, SeenParser, FetchLast, Opened<0>},
    {"CxDcmParser::GetAFrame, object", kOnImages, SeenParser, FetchLast, Opened<1>},
    {"CxDcmParser::GetAFrame, stored", kOnAll, SeenParser,
     DONE(s.block.Drop(), s.parser.GetAFrame(0, s.block.size = 200, s.block.data)), Opened<0>},
    {"CxDcmParser::GetAFrameOffsetSize", NotOn("presentation state|deflated"), SeenParser,
     DONE(s.parser.GetAFrameOffsetSize(0, s.place, s.length)), Opened<0>},
    {"CxDcmParser::GetRGBBufferFromPaletteImage", On("palette"), SeenParser, Colour, Opened<0>},
    {"CxDcmParser::MakeThumbNail, plain", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, plain, range", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 1)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, JPEG", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferJpegBaseline, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, lossless", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferJpegLossless, 0)), Opened<0>},
    {"CxDcmParser::MakeThumbNail, standard", kOnImages, SeenParser,
     DONE(MakeThumbnail(s, kXferUncompressed, 1)),
     DO(s.parser.SetRules(Rules::kStandard), Opened<0>(s))},
    {"CxDcmParser::GetSliceLocation", kOnImages, SeenParser,
     DONE(CxDcmParser::GetSliceLocation(&s.object, s.location) == 1)},
    {"CxDcmParser, copy", kThrows, SeenFrame, DONE(s.parser = s.from->parser, true), OpenedOther},
    {"CxPaletteLUT::LoadLUT", On("palette", Leaves::kUsable), SeenPalette,
     DONE(s.lut.LoadLUT(&s.object, tag::kGreenPaletteColorLookupTableDescriptor,
                        tag::kGreenPaletteColorLookupTableData, 0) != 0)},
};

// --- Image processor -----------------------------------------------------------------------------

/// A frame as it is stored, and its record.
void TakeFrame(Host& s) {
    s.param = ParamOf(s.object);
    s.param.quality = 50;
    s.source = StoredFrames(s.object).front();
}

template <int allocMode>
bool Decode(Host& s) {
    s.processor.SetAllocMode(allocMode);
    s.block.Drop();
    ReleasePages(std::exchange(s.pages, nullptr));
    unsigned char*& result = allocMode == 1 ? s.block.data : s.pages;
    const auto code = s.processor.DecompressFrameData(&s.param, s.source.data(), s.source.size(),
                                                      result, s.block.size, 0);
    return IsDone(code) || code == QVM_FRAME_COPIED;
}

template <auto decode>
bool DecodeBlindly(Host& s) {
    unsigned short word[5] = {};
    s.block.Drop();
    return IsDone((s.processor.*decode)(s.source.data(), s.source.size(), s.block.data,
                                        s.block.size, word[0], word[1], word[2], word[3], word[4]));
}

template <auto compress = &CxImageProcessor::CompressFrameData>
bool Compress(Host& s, std::uint32_t target) {
    s.block.Drop();
    s.param.targetSyntax = target;
    return IsDone((s.processor.*compress)(&s.param, s.source.data(), s.source.size(), s.block.data,
                                          s.block.size)) &&
           s.block.data != nullptr;
}

bool CompressPlanes(Host& s) {
    s.source = s.from->source;  // of the same size: nothing is allocated
    s.param.planarConfiguration = 1;
    return Compress(s, kXferJpegLossless);
}

constexpr How kCodedStreams = NotOn("presentation state|big endian", Leaves::kUsable);
constexpr How kPlain = On("native CT|colour");

void KeepFrame(Host& s) {
    TakeFrame(s);
    s.from = std::make_unique<Host>(s.kind);
    s.from->source = s.source;
}

constexpr Operation kCoders[] = {
    {"CxImageProcessor::DecompressFrameData", kCodedStreams, SeenCoding, Decode<1>, TakeFrame},
    {"CxImageProcessor::DecompressFrameData, pages", kCodedStreams, SeenCoding, Decode<2>,
     TakeFrame},
    {"CxImageProcessor::DecompressBlindJPEGData", On("JPEG baseline"), SeenCoding,
     DecodeBlindly<kJpegBlind>, TakeFrame},
    {"CxImageProcessor::DecompressBlindJP2KData", On("JPEG 2000"), SeenCoding,
     DecodeBlindly<kJp2kBlind>, TakeFrame},
    {"CxImageProcessor::CompressFrameData, baseline", On("colour"), SeenCoding,
     DONE(Compress(s, kXferJpegBaseline)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, extended", On("native CT"), SeenCoding,
     DONE(Compress(s, kXferJpegExtended)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, lossless", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpegLossless)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, JPEG 2000", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpeg2000)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, 2000 lossless", kPlain, SeenCoding,
     DONE(Compress(s, kXferJpeg2000Lossless)), TakeFrame},
    {"CxImageProcessor::CompressFrameData, planes", On("colour"), SeenBlock, CompressPlanes,
     KeepFrame},
    {"CxImageProcessor::CompressRawImage2Jp2File", On("native CT"), SeenCoding,
     DONE(Compress<&CxImageProcessor::CompressRawImage2Jp2File>(s, kXferJpeg2000Lossless)),
     TakeFrame},
    {"CxImageProcessor::ResizeImage", On("native CT|colour|palette"), SeenCoding,
     DONE(s.block.Drop(),
          s.processor.ResizeImage(&s.param, s.source.data(), s.block.data, s.block.size, {20, 33})),
     TakeFrame},
};

// --- Display -------------------------------------------------------------------------------------

/// Something else is shown so far.
void ShowOther(Host& s) {
    s.made = std::make_unique<CDcmObject>(KindOf("colour").object);
    Show(s, *s.made);
    s.volume.pixels = s.pixels.data();
    s.volume.width = 36;
    s.volume.height = 20;
    s.volume.bitsAllocated = 8;
    s.volume.photometricInterpretation = "MONOCHROME2";
}

/// The image with all that can be laid over it, rendered; and a state for it.
void ShowAll(Host& s) {
    Show(s, s.object);
    static_cast<void>(s.dipp.ShowOverlays(1));
    static_cast<void>(s.dipp.ShowShutter(1));
    static_cast<void>(s.dipp.ShowAnnotations(1));
    static_cast<void>(s.dipp.Render());
    s.made = std::make_unique<CDcmObject>(KindOf(kStates).object);
    s.path = GivenText(KindOf(kStates).path);
}

template <int imageKind>
bool ShowVolume(Host& s) {
    return IsDone(s.dipp.Initialize(&s.object, &s.volume, kView, 255, 0, imageKind));
}

bool DrawOnTarget(Host& s) {
    CDC context(&s.target);
    return IsDone(s.dipp.Draw(&context));
}

/// A plane of the image's size, for overlays to be burned into.
void MakePlane(Host& s) {
    s.block.size = 36 * 20;
    s.block.data = new unsigned char[s.block.size]();
}

void ShowBoth(Host& s) {
    ShowOther(s);
    s.from = std::make_unique<Host>(s.kind);
    Show(*s.from, s.from->object);
}

bool BurnOne(Host& s) {
    unsigned short width = 0;
    return IsDone(s.dipp.MakeOverlayImage(&s.object, nullptr, s.block.data, s.length, width, 0));
}

bool BurnAll(Host& s) {
    unsigned short width = 0;
    return IsDone(s.dipp.MakeOverlayImage2(&s.object, nullptr, s.block.data, s.length, width, 0, 0,
                                           0, 0, 0, 0));
}

bool MakePaletteColours(Host& s) {
    unsigned short padded = 0;
    s.block.Drop();
    return IsDone(s.dipp.MakePaletteColorImage(&s.object, s.pixels.data(), s.block.data,
                                               s.block.size, padded));
}

constexpr How kOverlays = On("overlays and shutter", Leaves::kUsable);

constexpr Operation kDisplays[] = {
    {"CXDIPP::Initialize, file", kOnImages, SeenDisplay,
     DONE(s.dipp.Initialize(&s.app, s.path.Give(), kView, 0)), ShowOther},
    {"CXDIPP::Initialize, object", kOnImages, SeenDisplay,
     DONE(s.dipp.Initialize(&s.app, &s.object, kView, 0)), ShowOther},
    {"CXDIPP::Initialize, object and pixels", kOnImages, SeenDisplay,
     DONE(s.dipp.Initialize(&s.app, &s.object, s.pixels.data(), kView, 4095, 0, 0)), ShowOther},
    {"CXDIPP::Initialize, pixels", On("native CT"), SeenDisplay,
     DONE(s.dipp.Initialize(s.pixels.data(), kView, kKindSize, 1, 255, 0, 0)), ShowOther},
    {"CXDIPP::Initialize, volume and palette", kOnImages, SeenDisplay, ShowVolume<2>, ShowOther},
    {"CXDIPP::Initialize, volume and supplement", kOnImages, SeenDisplay, ShowVolume<3>, ShowOther},
    {"CXDIPP::Initialize, volume and overlays", kOnImages, SeenDisplay, ShowVolume<5>, ShowOther},
    {"CXDIPP::Initialize, volume", On("native CT"), SeenDisplay,
     DONE(s.dipp.Initialize(&s.volume, kView, 255, 0)), ShowOther},
    {"CXDIPP::Initialize, other frame", On("multi-frame|big endian"), SeenDisplay,
     DONE(s.dipp.Initialize(&s.app, kView, 1)), ShowAll},
    {"CXDIPP, copy", kThrowsOnImages, SeenDisplay, DONE(s.dipp = s.from->dipp, true), ShowBoth},
    {"CXDIPP::ApllyGSPSObject, file", kOnImages, SeenDisplay,
     DONE(s.dipp.ApllyGSPSObject(&s.app, s.path.Give())), ShowAll},
    {"CXDIPP::ApllyGSPSObject, object", kOnImages, SeenDisplay,
     DONE(s.dipp.ApllyGSPSObject(&s.app, s.made.get())), ShowAll},
    {"CXDIPP::UpdateVOILUT_ABS", kOnImages, SeenDisplay, DONE(s.dipp.UpdateVOILUT_ABS(77, 333)),
     ShowAll},
    {"CXDIPP::Render", kOnImagesUsable, SeenDisplay,
     DONE(s.dipp.UpdateZoom_ABS(1.25), s.dipp.Render()), ShowAll},
    {"CXDIPP::Render, state and shutter", kOnImages, SeenDisplay, DONE(s.dipp.Render()),
     DO(ShowUnderState(s), s.dipp.ShowShutter(1))},
    {"CXDIPP::Draw, annotations", kOnImagesUsable, SeenDisplay, DrawOnTarget,
     DO(ShowUnderState(s), s.dipp.ShowAnnotations(1), s.dipp.Render())},
    {"CXDIPP::Initialize, by standard rules", kOnImages, SeenDisplay,
     DONE(s.dipp.Initialize(&s.app, s.path.Give(), kView, 0)),
     DO(ShowOther(s), s.dipp.SetRules(Rules::kStandard))},
    {"CXDIPP::Initialize, volume by standard rules", kOnImages, SeenDisplay, ShowVolume<5>,
     DO(ShowOther(s), s.dipp.SetRules(Rules::kStandard))},
    {"CXDIPP::ApllyGSPSObject, by standard rules", kOnImages, SeenDisplay,
     DONE(s.dipp.ApllyGSPSObject(&s.app, s.made.get())),
     DO(s.dipp.SetRules(Rules::kStandard), ShowAll(s))},
    {"CXDIPP::Render, smaller by standard rules", kOnImagesUsable, SeenDisplay,
     DONE(s.dipp.UpdateZoom_ABS(0.75), s.dipp.Render()),
     DO(s.dipp.SetRules(Rules::kStandard), ShowAll(s), s.dipp.ShowOverlays(1),
        s.dipp.ShowShutter(1))},
    {"CXDIPP::MakeOverlayImage", kOverlays, SeenBlock, BurnOne, MakePlane},
    {"CXDIPP::MakeOverlayImage2", kOverlays, SeenBlock, BurnAll, MakePlane},
    {"CXDIPP::MakeSPCOverlay", On("palette"), SeenBlock,
     DONE(s.block.Drop(),
          s.dipp.MakeSPCOverlay(&s.object, s.pixels.data(), s.block.data, s.block.size))},
    {"CXDIPP::MakeSPCOverlayForMPR", On("palette"), SeenBlock,
     DONE(s.block.Drop(), s.dipp.MakeSPCOverlayForMPR(&s.object, s.pixels.data(), 36, 20,
                                                      s.block.data, s.block.size))},
    {"CXDIPP::MakePaletteColorImage", On("palette"), SeenBlock, MakePaletteColours},
    {"MakeEmbeddedOverlayPlane", On("overlays and shutter"), SeenBlock,
     DONE(s.block.Drop(), MakeEmbeddedOverlayPlane(&s.object, s.pixels.data(), s.pixels.size(),
                                                   s.block.data, s.block.size))},
};

// --- Windows -------------------------------------------------------------------------------------

void TakeRecord(Host& s) {
    ReadImage(s.object, s.records[0]);
    s.records[0].pixelBitDepth = 12;
}
void PrepareWindows(Host& s) {
    TakeRecord(s);
    s.windowing.PrepareGSPSProcessing(s.records.data());
}

bool SetWindow(Host& s) {
    int window[] = {100, 20};
    return s.windowing.SetValue(CXWindowing::kWindow, window, nullptr) == 0;
}

template <int rotation>
bool RunJob(Host& s) {
    _IMAGE_INFO info;
    info.bytesPerPixel = 2;
    info.imageWidth = 36;
    info.imageHeight = 20;
    info.pixels = s.pixels.data();
    info.output = s.surface.data();
    info.outputWidth = 48;
    info.outputHeight = 40;
    info.roi = {0, 0, 36, 20};
    info.rotation = rotation;
    info.windowing = &s.windowing;
    info.bitsStored = 12;
    return s.creator.GetImageWithInfo(info) == 0;
}
void PrepareJob(Host& s) {
    TakeRecord(s);
    s.windowing.PrepareGSPSProcessing2(s.records.data(), 0, 4095);
}

bool ApplyModalityOnce(Host& s) {
    if (s.count == 0 &&
        s.creator.ApplyModalityLUT(&s.windowing, s.pixels.data(), kKindSize, 2) == 0)
        s.count = 1;
    return s.count == 1;
}

void PrepareOther(Host& s) {
    s.from = std::make_unique<Host>(s.kind);
    PrepareWindows(*s.from);
}

constexpr How kSilent{.notOn = kStates, .reports = Reports::kNothing};

constexpr Operation kWindows[] = {
    {"CXWindowing::PrepareGSPSProcessing", kSilent, SeenWindows,
     DONE(s.windowing.PrepareGSPSProcessing(s.records.data()) == 0), TakeRecord},
    {"CXWindowing::PrepareGSPSProcessing2", kSilent, SeenWindows,
     DONE(s.windowing.PrepareGSPSProcessing2(s.records.data(), -9, 4000) == 0), TakeRecord},
    {"CXWindowing::SetValue", kOnImages, SeenWindows, SetWindow, TakeRecord},
    {"CXWindowing, copy", kThrowsOnImages, SeenWindows, DONE(s.windowing = s.from->windowing, true),
     PrepareOther},
    {"CXImageCreator::GetImageWithInfo", On("native CT"), SeenSurface, RunJob<0>, PrepareJob},
    {"CXImageCreator::GetImageWithInfo, turned", On("native CT"), SeenSurface, RunJob<90>,
     PrepareJob},
    {"CXImageCreator::ApplyModalityLUT", On("native CT"), SeenPixels, ApplyModalityOnce,
     PrepareWindows},
};

INSTANTIATE_TEST_SUITE_P(ParserMemory, FailingAllocation, testing::ValuesIn(kParsers));
INSTANTIATE_TEST_SUITE_P(CodecMemory, FailingAllocation, testing::ValuesIn(kCoders));
INSTANTIATE_TEST_SUITE_P(DisplayMemory, FailingAllocation, testing::ValuesIn(kDisplays));
INSTANTIATE_TEST_SUITE_P(WindowMemory, FailingAllocation, testing::ValuesIn(kWindows));

}  // namespace
}  // namespace quorvex
