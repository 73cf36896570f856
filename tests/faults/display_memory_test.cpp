// Failing memory under the display pipeline and its windows.
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

template <Rules rules>
bool RenderIntoSurface(Host& s) {
    s.dipp.SetRules(rules);
    if (!IsDone(s.dipp.Initialize(&s.app, &s.object, kView, 0))) return false;
    return IsDone(s.dipp.RenderInto({s.surface.data(), kView, 80 * 4, PixelFormat::kBgra32}));
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
    {"CXDIPP::RenderInto", kOnImagesUsable, SeenSurface, RenderIntoSurface<Rules::kEstablished>},
    {"CXDIPP::RenderInto, by standard rules", kOnImagesUsable, SeenSurface,
     RenderIntoSurface<Rules::kStandard>},
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

INSTANTIATE_TEST_SUITE_P(DisplayMemory, FailingAllocation, testing::ValuesIn(kDisplays));
INSTANTIATE_TEST_SUITE_P(WindowMemory, FailingAllocation, testing::ValuesIn(kWindows));

}  // namespace
}  // namespace quorvex
