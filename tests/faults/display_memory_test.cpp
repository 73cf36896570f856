// Failing memory under the display pipeline, its windows, its render jobs and its presentations.
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/presentation/presentation_objects.h"

#include <array>

namespace quorvex {
namespace {

using namespace test;

constexpr CSize kView = {80, 60};

const Kind& KindOf(const char* name) {
    for (const Kind& kind : AllKinds()) {
        if (kind.name == name) return kind;
    }
    return AllKinds().front();
}

/// An image on show, and a surface that it is drawn on.
struct Showing {
    explicit Showing(const Kind& shown) : object(shown.object), surface(80 * 60 * 4) {}
    static std::shared_ptr<Showing> Of(const Kind& kind, bool isOpen = true) {
        auto s = std::make_shared<Showing>(kind);
        if (isOpen) static_cast<void>(s->dipp.Initialize(&s->app, &s->object, kView, 0));
        return s;
    }
    /// All that a host sees: numbers, what is rendered already, and what would be.
    [[nodiscard]] std::string Look() const {
        int window[2] = {};
        dipp.GetWindowingFactor(window[0], window[1]);
        std::string text = std::to_string(window[0]) + ' ' + std::to_string(window[1]) + ' ' +
                           std::to_string(dipp.GetZoomFactor()) + ' ' +
                           std::to_string(dipp.GetPanOffset().x);
        text += Result(dipp) + block.Look() + std::string(surface.begin(), surface.end());
        CXDIPP copy(dipp);
        static_cast<void>(copy.Render());
        return text + Result(copy);
    }
    static std::string Result(const CXDIPP& shown) {
        CSize size;
        int bytes = 0;
        if (shown.GetResultImageInfo(size, bytes) != QVM_SUCCESS) return "no result";
        std::string image(static_cast<std::size_t>(size.cx * size.cy * bytes), '\0');
        unsigned char* to = reinterpret_cast<unsigned char*>(image.data());
        static_cast<void>(shown.GetResultImage(to, static_cast<int>(image.size())));
        return std::to_string(size.cx) + 'x' + std::to_string(size.cy) + image;
    }

    CDcmApp app;
    CDcmObject object;
    CXDIPP dipp;
    GivenBlock block;
    std::vector<unsigned char> surface;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20 * 3, 90);
    CLData volume;
};

/// An operation on an object that shows something else so far.
template <class Work>
Subject OnOther(const Kind& kind, Work work) {
    if (kind.isState) return {};
    auto s = Showing::Of(KindOf("colour"));
    auto incoming = Showing::Of(kind, false);
    auto path = std::make_shared<GivenText>(kind.path);
    incoming->volume.pixels = incoming->pixels.data();
    incoming->volume.width = 36;
    incoming->volume.height = 20;
    incoming->volume.bitsAllocated = 8;
    incoming->volume.photometricInterpretation = "MONOCHROME2";
    return {[=] { return work(*s, *incoming, *path) == QVM_SUCCESS; }, [=] { return s->Look(); }};
}

Subject OpeningFile(const Kind& kind) {
    return OnOther(kind, [](Showing& s, Showing&, GivenText& path) {
        return s.dipp.Initialize(&s.app, path.Give(), kView, 0);
    });
}
Subject OpeningObject(const Kind& kind) {
    return OnOther(kind, [](Showing& s, Showing& in, GivenText&) {
        return s.dipp.Initialize(&s.app, &in.object, kView, 0);
    });
}
Subject OpeningPixels(const Kind& kind) {
    return OnOther(kind, [](Showing& s, Showing& in, GivenText&) {
        return s.dipp.Initialize(&s.app, &in.object, in.pixels.data(), kView, 4095, 0, 0);
    });
}
Subject OpeningPlainPixels(const Kind& kind) {
    if (kind.name != "native CT") return {};
    return OnOther(kind, [](Showing& s, Showing& in, GivenText&) {
        return s.dipp.Initialize(in.pixels.data(), kView, CSize{36, 20}, 1, 255, 0, 0);
    });
}
template <int imageKind>
Subject OpeningVolume(const Kind& kind) {
    return OnOther(kind, [](Showing& s, Showing& in, GivenText&) {
        return s.dipp.Initialize(&in.object, &in.volume, kView, 255, 0, imageKind);
    });
}
Subject OpeningPlainVolume(const Kind& kind) {
    if (kind.name != "native CT") return {};
    return OnOther(kind, [](Showing& s, Showing& in, GivenText&) {
        return s.dipp.Initialize(&in.volume, kView, 255, 0);
    });
}

/// An operation on the image itself.
template <class Work>
Subject OnImage(const Kind& kind, Work work) {
    if (kind.isState) return {};
    auto s = Showing::Of(kind);
    static_cast<void>(s->dipp.ShowOverlays(1));
    static_cast<void>(s->dipp.ShowShutter(1));
    static_cast<void>(s->dipp.ShowAnnotations(1));
    static_cast<void>(s->dipp.Render());
    return {[=] { return work(*s) == QVM_SUCCESS; }, [=] { return s->Look(); }};
}

Subject OtherFrame(const Kind& kind) {
    if (kind.name != "multi-frame" && kind.name != "big endian") return {};
    return OnImage(kind, [](Showing& s) { return s.dipp.Initialize(&s.app, kView, 1); });
}
Subject ApplyingStateFile(const Kind& kind) {
    auto path = std::make_shared<GivenText>(KindOf("presentation state").path);
    return OnImage(kind, [=](Showing& s) { return s.dipp.ApllyGSPSObject(&s.app, path->Give()); });
}
Subject ApplyingState(const Kind& kind) {
    auto state = std::make_shared<CDcmObject>(KindOf("presentation state").object);
    return OnImage(kind, [=](Showing& s) { return s.dipp.ApllyGSPSObject(&s.app, state.get()); });
}
Subject Windowing(const Kind& kind) {
    return OnImage(kind, [](Showing& s) { return s.dipp.UpdateVOILUT_ABS(77, 333); });
}
Subject WindowingByOffset(const Kind& kind) {
    if (kind.name != "native CT") return {};
    auto isMoved = std::make_shared<bool>(false);
    return OnImage(kind, [=](Showing& s) {
        if (std::exchange(*isMoved, true)) return QVM_SUCCESS;
        return s.dipp.UpdateVOILUT_Offset(3, 4);
    });
}
Subject Laying(const Kind& kind) {
    return OnImage(kind, [](Showing& s) {
        s.dipp.UpdateRotate_ABS(90);
        s.dipp.UpdateZoom_ABS(1.5);
        s.dipp.UpdatePan_ABS({3, 4});
        return s.dipp.UpdateViewSize({100, 100});
    });
}
Subject Rendering(const Kind& kind) {
    auto subject = OnImage(kind, [](Showing& s) {
        s.dipp.UpdateZoom_ABS(1.25);
        return s.dipp.Render();
    });
    return subject;
}
Subject RenderingState(const Kind& kind) {
    if (kind.isState) return {};
    auto state = std::make_shared<CDcmObject>(KindOf("presentation state").object);
    auto s = Showing::Of(kind);
    static_cast<void>(s->dipp.ApllyGSPSObject(&s->app, state.get()));
    static_cast<void>(s->dipp.ShowShutter(1));
    return {[=] { return s->dipp.Render() == QVM_SUCCESS; }, [=] { return s->Look(); }};
}
Subject Drawing(const Kind& kind) {
    if (kind.isState) return {};
    auto state = std::make_shared<CDcmObject>(KindOf("presentation state").object);
    auto s = Showing::Of(kind);
    static_cast<void>(s->dipp.ApllyGSPSObject(&s->app, state.get()));
    static_cast<void>(s->dipp.ShowAnnotations(1));
    static_cast<void>(s->dipp.Render());
    auto target = std::make_shared<DrawingSurface>();
    *target = {s->surface.data(), 80, 60, 80 * 4, 4};
    return {[=] {
                CDC context(target.get());
                return s->dipp.Draw(&context) == QVM_SUCCESS;
            },
            [=] { return s->Look(); }};
}
Subject CopyingImage(const Kind& kind) {
    if (kind.isState) return {};
    auto s = Showing::Of(kind);
    auto other = Showing::Of(KindOf("colour"));
    return {[=] { return other->dipp = s->dipp, true; }, [=] { return other->Look(); }};
}

template <int all>
Subject BurningOverlays(const Kind& kind) {
    if (kind.name != "overlays, shutter") return {};
    auto s = Showing::Of(kind, false);
    s->block.size = 36 * 20;
    s->block.data = new unsigned char[s->block.size]();
    return {[=] {
                unsigned long length = 0;
                unsigned short width = 0;
                const auto answer =
                    all != 0 ? s->dipp.MakeOverlayImage2(&s->object, nullptr, s->block.data, length,
                                                         width, 0, 0, 0, 0, 0, 0)
                             : s->dipp.MakeOverlayImage(&s->object, nullptr, s->block.data, length,
                                                        width, 0);
                return answer == QVM_SUCCESS;
            },
            [=] { return s->block.Look(); }};
}

template <int which>
Subject Colouring(const Kind& kind) {
    if (kind.name != "palette") return {};
    auto s = Showing::Of(kind, false);
    return {[=] {
                s->block.Drop();
                unsigned char* in = s->pixels.data();
                unsigned short padded = 0;
                switch (which) {
                    case 0:
                        return s->dipp.MakeSPCOverlay(&s->object, in, s->block.data,
                                                      s->block.size) == QVM_SUCCESS;
                    case 1:
                        return s->dipp.MakeSPCOverlayForMPR(&s->object, in, 36, 20, s->block.data,
                                                            s->block.size) == QVM_SUCCESS;
                    default:
                        return s->dipp.MakePaletteColorImage(&s->object, in, s->block.data,
                                                             s->block.size, padded) == QVM_SUCCESS;
                }
            },
            [=] { return s->block.Look(); }};
}

Subject EmbeddedPlane(const Kind& kind) {
    if (kind.name != "overlays, shutter") return {};
    auto s = Showing::Of(kind, false);
    return {[=] {
                s->block.Drop();
                return MakeEmbeddedOverlayPlane(&s->object, s->pixels.data(), s->pixels.size(),
                                                s->block.data, s->block.size) == QVM_SUCCESS;
            },
            [=] { return s->block.Look(); }};
}

// --- Windows and render jobs ---------------------------------------------------------------------

/// Windows over the record of a kind.
struct Windows {
    explicit Windows(const Kind& kind) {
        CDcmObject object = kind.object;
        ReadImage(object, record);
        record.pixelBitDepth = 12;
    }
    [[nodiscard]] std::string Look() {
        int size = 0;
        int low = 0;
        windowing.GetValue(CXWindowing::kDisplayTableCount, &size, &low);
        std::string table(static_cast<std::size_t>(size), '\0');
        windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
        int width = 0;
        int level = 0;
        windowing.GetWindowingFactor(width, level);
        return table + std::to_string(low) + ' ' + std::to_string(width) + ' ' +
               std::to_string(level);
    }
    CXWindowing windowing;
    Record record;
};

template <int which>
Subject Preparing(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Windows>(kind);
    return {[=] {
                const int answer = which == 0
                                       ? s->windowing.PrepareGSPSProcessing(&s->record)
                                       : s->windowing.PrepareGSPSProcessing2(&s->record, -9, 4000);
                return answer == 0;
            },
            [=] { return s->Look(); }};
}
Subject ChangingWindow(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Windows>(kind);
    return {[=] {
                std::array<int, 2> window = {100, 20};
                return s->windowing.SetValue(CXWindowing::kWindow, window.data(), nullptr) == 0;
            },
            [=] { return s->Look(); }};
}
Subject CopyingWindows(const Kind& kind) {
    if (kind.isState) return {};
    auto s = std::make_shared<Windows>(kind);
    auto other = std::make_shared<Windows>(kind);
    s->windowing.PrepareGSPSProcessing(&s->record);
    return {[=] { return other->windowing = s->windowing, true; }, [=] { return other->Look(); }};
}

struct Job {
    explicit Job(const Kind& kind) : windows(kind) {
        windows.windowing.PrepareGSPSProcessing2(&windows.record, 0, 4095);
    }
    _IMAGE_INFO Info(int rotation) {
        _IMAGE_INFO info;
        info.bytesPerPixel = 2;
        info.imageWidth = 36;
        info.imageHeight = 20;
        info.pixels = pixels.data();
        info.output = output.data();
        info.outputWidth = 48;
        info.outputHeight = 40;
        info.roi = {0, 0, 36, 20};
        info.rotation = rotation;
        info.windowing = &windows.windowing;
        info.bitsStored = 12;
        return info;
    }
    Windows windows;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20 * 2, 5);
    std::vector<unsigned char> output = std::vector<unsigned char>(48 * 40);
    CXImageCreator creator;
};

template <int rotation>
Subject RunningJob(const Kind& kind) {
    if (kind.name != "native CT") return {};
    auto s = std::make_shared<Job>(kind);
    return {[=] {
                _IMAGE_INFO info = s->Info(rotation);
                return s->creator.GetImageWithInfo(info) == 0;
            },
            [=] { return std::string(s->output.begin(), s->output.end()); }};
}
Subject ApplyingModality(const Kind& kind) {
    if (kind.name != "native CT") return {};
    auto s = std::make_shared<Job>(kind);
    s->windows.windowing.PrepareGSPSProcessing(&s->windows.record);
    auto isDone = std::make_shared<bool>(false);
    return {[=] {
                if (*isDone) return true;
                *isDone = s->creator.ApplyModalityLUT(&s->windows.windowing, s->pixels.data(),
                                                      {36, 20}, 2) == 0;
                return *isDone;
            },
            [=] { return std::string(s->pixels.begin(), s->pixels.end()); }};
}

// --- Presentations -------------------------------------------------------------------------------

std::string Look(const CXGSPSInfo& record) {
    const auto table = [](const std::uint16_t* data, int count) {
        std::string text = "|";
        for (const int entry : Entries(data, count)) text += std::to_string(entry) + ' ';
        return text;
    };
    std::string text = table(record.modalityLUTData, record.modalityLUTCount) +
                       table(record.voiLUTData, record.voiLUTCount) +
                       table(record.presentationLUTData, record.presentationLUTCount);
    for (const double number :
         {double{record.windowCenter * 1.0}, double{record.windowWidth * 1.0}, record.rescaleSlope,
          record.rescaleIntercept, record.pixelSpacingX, double{record.imageRotation * 1.0},
          double{record.textObjects.GetSize() * 1.0},
          double{record.graphicObjects.GetSize() * 1.0}})
        text += std::to_string(number) + ' ';
    if (record.shutterMask != nullptr) text.append(record.shutterMask, record.shutterMask + 720);
    return text;
}

/// Reads are into a fresh record, each try.
struct Reading {
    explicit Reading(const Kind& kind) : object(kind.object) {
        for (auto& record : records) {
            record = std::make_unique<Record>();
            record->imageColumns = 36;
            record->imageRows = 20;
        }
    }
    Record& Next() { return *records[static_cast<std::size_t>(latest = latest + 1)]; }

    CDcmObject object;
    std::array<std::unique_ptr<Record>, 4> records;
    int latest = -1;
    [[nodiscard]] std::string Look() const {
        return latest < 0 ? "" : quorvex::Look(*records[static_cast<std::size_t>(latest)]);
    }
};

Subject ReadingAll(const Kind& kind) {
    auto s = std::make_shared<Reading>(kind);
    auto uid = std::make_shared<GivenText>(kind.isState ? kImage : "");
    return {
        [=] { return CXGSPSObject().GSPSApplier(&s->object, &s->Next(), uid->Give(), -1) == 1; },
        [=] { return s->Look(); }};
}
template <unsigned selector>
Subject ReadingModule(const Kind& kind) {
    auto s = std::make_shared<Reading>(kind);
    auto reader = std::make_shared<CXGSPSObject>();
    if (kind.isState) reader->imageUID = kImage;
    return {[=] { return reader->GetGSPSModule(selector, &s->object, &s->Next()) == 1; },
            [=] { return s->Look(); }};
}

Subject MakingState(const Kind& kind) {
    auto s = std::make_shared<Reading>(kind);
    CXGSPSObject().GSPSApplier(&s->object, &s->Next(), kind.isState ? kImage : "", -1);
    auto made = std::make_shared<std::unique_ptr<CDcmObject>>();
    return {[=] {
                CXGSPSInfo* infos[] = {s->records.front().get()};
                CDcmObject* result = nullptr;
                const int answer = CXGSPSObject().MakeGSPSObject(&s->object, infos, 1, result);
                made->reset(result);
                return answer == 1;
            },
            [=]() -> std::string {
                if (!*made) return "none";
                // New UIDs and times each time.
                for (const std::uint32_t tag :
                     {0x00080018U, 0x0020000EU, 0x00080012U, 0x00080013U, 0x00080021U, 0x00080031U,
                      0x00700082U, 0x00700083U, 0x00020003U})
                    (*made)->RemoveValue(tag);
                return test::Look(**made);
            }};
}

constexpr Operation kOperations[] = {
    {"CXDIPP::Initialize, file", OpeningFile},
    {"CXDIPP::Initialize, object", OpeningObject},
    {"CXDIPP::Initialize, object and pixels", OpeningPixels},
    {"CXDIPP::Initialize, pixels", OpeningPlainPixels},
    {"CXDIPP::Initialize, volume and palette", OpeningVolume<2>},
    {"CXDIPP::Initialize, volume and supplement", OpeningVolume<3>},
    {"CXDIPP::Initialize, volume and overlays", OpeningVolume<5>},
    {"CXDIPP::Initialize, volume", OpeningPlainVolume},
    {"CXDIPP::Initialize, other frame", OtherFrame},
    {"CXDIPP::ApllyGSPSObject, file", ApplyingStateFile},
    {"CXDIPP::ApllyGSPSObject, object", ApplyingState},
    {"CXDIPP::UpdateVOILUT_ABS", Windowing},
    {"CXDIPP::UpdateVOILUT_Offset", WindowingByOffset},
    {"CXDIPP::Update..., place and size", Laying},
    {"CXDIPP::Render", Rendering, Leaves::kUsable},
    {"CXDIPP::Render, state and shutter", RenderingState},
    {"CXDIPP::Draw, annotations", Drawing, Leaves::kUsable},
    {"CXDIPP, copy", CopyingImage, Leaves::kAsBefore, Tells::kException},
    {"CXDIPP::MakeOverlayImage", BurningOverlays<0>, Leaves::kUsable},
    {"CXDIPP::MakeOverlayImage2", BurningOverlays<1>, Leaves::kUsable},
    {"CXDIPP::MakeSPCOverlay", Colouring<0>},
    {"CXDIPP::MakeSPCOverlayForMPR", Colouring<1>},
    {"CXDIPP::MakePaletteColorImage", Colouring<2>},
    {"MakeEmbeddedOverlayPlane", EmbeddedPlane},
    {"CXWindowing::PrepareGSPSProcessing", Preparing<0>, Leaves::kAsBefore, Tells::kNothing},
    {"CXWindowing::PrepareGSPSProcessing2", Preparing<1>, Leaves::kAsBefore, Tells::kNothing},
    {"CXWindowing::SetValue", ChangingWindow},
    {"CXWindowing, copy", CopyingWindows, Leaves::kAsBefore, Tells::kException},
    {"CXImageCreator::GetImageWithInfo", RunningJob<0>},
    {"CXImageCreator::GetImageWithInfo, turned", RunningJob<90>},
    {"CXImageCreator::ApplyModalityLUT", ApplyingModality},
    {"CXGSPSObject::GSPSApplier", ReadingAll, Leaves::kUsable},
    {"CXGSPSObject::GetGSPSModule, modality", ReadingModule<0>, Leaves::kUsable},
    {"CXGSPSObject::GetGSPSModule, shutter", ReadingModule<1>, Leaves::kUsable},
    {"CXGSPSObject::GetGSPSModule, VOI", ReadingModule<2>, Leaves::kUsable},
    {"CXGSPSObject::GetGSPSModule, presentation", ReadingModule<3>, Leaves::kUsable},
    {"CXGSPSObject::GetGSPSModule, area", ReadingModule<6>, Leaves::kUsable},
    {"CXGSPSObject::MakeGSPSObject", MakingState},
};

class DisplayMemory : public testing::TestWithParam<Operation> {};
TEST_P(DisplayMemory, MayFail) {
    FailEveryAllocation(GetParam());
}
INSTANTIATE_TEST_SUITE_P(All, DisplayMemory, testing::ValuesIn(kOperations));

}  // namespace
}  // namespace quorvex
