// Failing memory under the display pipeline.
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/support/answers.h"

namespace quorvex {
namespace {

using namespace test;

constexpr CSize kView = {80, 60};
constexpr CSize kImage = {36, 20};

std::string TextOfResult(const CXDIPP& shown) {
    const RenderedResult result = ResultOf(shown);
    if (result.code != QVM_SUCCESS) return "no result";
    return std::to_string(result.size.cx) + 'x' + std::to_string(result.size.cy) +
           std::string(result.bytes.begin(), result.bytes.end());
}

/// A pipeline that shows nothing yet, and a surface.
struct Display {
    explicit Display(const Kind& kind) : object(kind.object) {}
    /// All that a host sees: numbers, what is rendered already, and what would be.
    [[nodiscard]] std::string Look() const {
        int window[2] = {};
        dipp.GetWindowingFactor(window[0], window[1]);
        std::string text = std::to_string(window[0]) + ' ' + std::to_string(window[1]) + ' ' +
                           std::to_string(dipp.GetZoomFactor()) + ' ' +
                           std::to_string(dipp.GetPanOffset().x);
        text += TextOfResult(dipp) + block.Look() + std::string(surface.begin(), surface.end());
        CXDIPP copy(dipp);
        static_cast<void>(copy.Render());
        return text + TextOfResult(copy);
    }
    void Show() { static_cast<void>(dipp.Initialize(&app, &object, kView, 0)); }
    [[nodiscard]] std::string LookAtBlock() const { return block.Look(); }

    CDcmApp app;
    CDcmObject object;
    CXDIPP dipp;
    GivenBlock block;
    std::vector<unsigned char> surface = std::vector<unsigned char>(80 * 60 * 4);
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20 * 3, 90);
};

/// A pipeline that shows something else so far, and what it is to show.
struct Opening : Display {
    explicit Opening(const Kind& kind)
        : Display(KindOf("colour")), incoming(kind.object), path(kind.path) {
        Show();
        volume.pixels = pixels.data();
        volume.width = 36;
        volume.height = 20;
        volume.bitsAllocated = 8;
        volume.photometricInterpretation = "MONOCHROME2";
    }
    CDcmObject incoming;
    GivenText path;
    CLData volume;
};

/// The image with all that can be laid over it, rendered; and a state for it.
struct Showing : Display {
    explicit Showing(const Kind& kind)
        : Display(kind), state(KindOf(kStates).object), path(KindOf(kStates).path) {
        Show();
        static_cast<void>(dipp.ShowOverlays(1));
        static_cast<void>(dipp.ShowShutter(1));
        static_cast<void>(dipp.ShowAnnotations(1));
        static_cast<void>(dipp.Render());
    }
    CDcmObject state;
    GivenText path;
    bool isMoved = false;
};

/// The image under a state, not rendered yet.
struct UnderState : Display {
    explicit UnderState(const Kind& kind) : Display(kind) {
        Show();
        CDcmObject state = KindOf(kStates).object;
        static_cast<void>(dipp.ApllyGSPSObject(&app, &state));
    }
};

struct WithShutter : UnderState {
    explicit WithShutter(const Kind& kind) : UnderState(kind) {
        static_cast<void>(dipp.ShowShutter(1));
    }
};

struct WithAnnotations : UnderState {
    explicit WithAnnotations(const Kind& kind) : UnderState(kind) {
        static_cast<void>(dipp.ShowAnnotations(1));
        static_cast<void>(dipp.Render());
    }
    DrawingSurface target{surface.data(), 80, 60, 80 * 4, 4};
};

struct Copying : Opening {
    explicit Copying(const Kind& kind) : Opening(kind), from(kind) { from.Show(); }
    Display from;
};

/// A plane of the image's size, for overlays to be burned into.
struct Burning : Display {
    explicit Burning(const Kind& kind) : Display(kind) {
        block.size = 36 * 20;
        block.data = new unsigned char[block.size]();
    }
    unsigned long length = 0;
    unsigned short width = 0;
};

/// A call that answers QVM_SUCCESS.
template <class State, class Call, class... Look>
Operation Do(const char* name, const How& how, Call call, Look... look) {
    return On<State>(
        name, how, [=](State& s) { return call(s) == QVM_SUCCESS; }, look...);
}

std::vector<Operation> Openings() {
    constexpr How kOnce{.on = "native CT"};
    const auto volume = [](const char* name, int imageKind) {
        return Do<Opening>(name, kOnImages, [=](Opening& s) {
            return s.dipp.Initialize(&s.incoming, &s.volume, kView, 255, 0, imageKind);
        });
    };
    return {
        Do<Opening>("CXDIPP::Initialize, file", kOnImages,
                    [](Opening& s) { return s.dipp.Initialize(&s.app, s.path.Give(), kView, 0); }),
        Do<Opening>("CXDIPP::Initialize, object", kOnImages,
                    [](Opening& s) { return s.dipp.Initialize(&s.app, &s.incoming, kView, 0); }),
        Do<Opening>("CXDIPP::Initialize, object and pixels", kOnImages,
                    [](Opening& s) {
                        return s.dipp.Initialize(&s.app, &s.incoming, s.pixels.data(), kView, 4095,
                                                 0, 0);
                    }),
        Do<Opening>("CXDIPP::Initialize, pixels", kOnce,
                    [](Opening& s) {
                        return s.dipp.Initialize(s.pixels.data(), kView, kImage, 1, 255, 0, 0);
                    }),
        volume("CXDIPP::Initialize, volume and palette", 2),
        volume("CXDIPP::Initialize, volume and supplement", 3),
        volume("CXDIPP::Initialize, volume and overlays", 5),
        Do<Opening>("CXDIPP::Initialize, volume", kOnce,
                    [](Opening& s) { return s.dipp.Initialize(&s.volume, kView, 255, 0); }),
        Do<Showing>("CXDIPP::Initialize, other frame", {.on = "multi-frame|big endian"},
                    [](Showing& s) { return s.dipp.Initialize(&s.app, kView, 1); }),
        Do<Copying>("CXDIPP, copy", {.notOn = kStates, .reports = Reports::kException},
                    [](Copying& s) {
                        s.dipp = s.from.dipp;
                        return QVM_SUCCESS;
                    }),
    };
}

std::vector<Operation> Views() {
    return {
        Do<Showing>("CXDIPP::ApllyGSPSObject, file", kOnImages,
                    [](Showing& s) { return s.dipp.ApllyGSPSObject(&s.app, s.path.Give()); }),
        Do<Showing>("CXDIPP::ApllyGSPSObject, object", kOnImages,
                    [](Showing& s) { return s.dipp.ApllyGSPSObject(&s.app, &s.state); }),
        Do<Showing>("CXDIPP::UpdateVOILUT_ABS", kOnImages,
                    [](Showing& s) { return s.dipp.UpdateVOILUT_ABS(77, 333); }),
        Do<Showing>("CXDIPP::UpdateVOILUT_Offset", {.on = "native CT"},
                    [](Showing& s) {
                        if (std::exchange(s.isMoved, true)) return QVM_SUCCESS;
                        return s.dipp.UpdateVOILUT_Offset(3, 4);
                    }),
        Do<Showing>("CXDIPP::Update..., place and size", kOnImages,
                    [](Showing& s) {
                        s.dipp.UpdateRotate_ABS(90);
                        s.dipp.UpdateZoom_ABS(1.5);
                        s.dipp.UpdatePan_ABS({3, 4});
                        return s.dipp.UpdateViewSize({100, 100});
                    }),
        Do<Showing>("CXDIPP::Render", kOnImagesUsable,
                    [](Showing& s) {
                        s.dipp.UpdateZoom_ABS(1.25);
                        return s.dipp.Render();
                    }),
        Do<WithShutter>("CXDIPP::Render, state and shutter", kOnImages,
                        [](WithShutter& s) { return s.dipp.Render(); }),
        Do<WithAnnotations>("CXDIPP::Draw, annotations", kOnImagesUsable,
                            [](WithAnnotations& s) {
                                CDC context(&s.target);
                                return s.dipp.Draw(&context);
                            }),
    };
}

std::vector<Operation> Planes() {
    constexpr How kOverlays{.on = "overlays and shutter", .leaves = Leaves::kUsable};
    constexpr How kPalette{.on = "palette"};
    const auto look = [](const Display& s) { return s.LookAtBlock(); };
    return {
        Do<Burning>(
            "CXDIPP::MakeOverlayImage", kOverlays,
            [](Burning& s) {
                return s.dipp.MakeOverlayImage(&s.object, nullptr, s.block.data, s.length, s.width,
                                               0);
            },
            look),
        Do<Burning>(
            "CXDIPP::MakeOverlayImage2", kOverlays,
            [](Burning& s) {
                return s.dipp.MakeOverlayImage2(&s.object, nullptr, s.block.data, s.length, s.width,
                                                0, 0, 0, 0, 0, 0);
            },
            look),
        Do<Display>(
            "CXDIPP::MakeSPCOverlay", kPalette,
            [](Display& s) {
                s.block.Drop();
                return s.dipp.MakeSPCOverlay(&s.object, s.pixels.data(), s.block.data,
                                             s.block.size);
            },
            look),
        Do<Display>(
            "CXDIPP::MakeSPCOverlayForMPR", kPalette,
            [](Display& s) {
                s.block.Drop();
                return s.dipp.MakeSPCOverlayForMPR(&s.object, s.pixels.data(), 36, 20, s.block.data,
                                                   s.block.size);
            },
            look),
        Do<Display>(
            "CXDIPP::MakePaletteColorImage", kPalette,
            [](Display& s) {
                unsigned short padded = 0;
                s.block.Drop();
                return s.dipp.MakePaletteColorImage(&s.object, s.pixels.data(), s.block.data,
                                                    s.block.size, padded);
            },
            look),
        Do<Display>(
            "MakeEmbeddedOverlayPlane", {.on = "overlays and shutter"},
            [](Display& s) {
                s.block.Drop();
                return MakeEmbeddedOverlayPlane(&s.object, s.pixels.data(), s.pixels.size(),
                                                s.block.data, s.block.size);
            },
            look),
    };
}

INSTANTIATE_TEST_SUITE_P(DisplayMemoryOpenings, FailingAllocation, testing::ValuesIn(Openings()));
INSTANTIATE_TEST_SUITE_P(DisplayMemoryViews, FailingAllocation, testing::ValuesIn(Views()));
INSTANTIATE_TEST_SUITE_P(DisplayMemoryPlanes, FailingAllocation, testing::ValuesIn(Planes()));

}  // namespace
}  // namespace quorvex
