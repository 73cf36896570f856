// Failing memory under the maker.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmMaker.h"
#include "tests/faults/fault_harness.h"
#include "tests/support/digest.h"

namespace quorvex {
namespace {

using namespace test;

std::string LookAtMade(CDcmObject object) {
    for (const auto tag : kNewEachTime) object.RemoveValue(tag);
    return test::Look(object) + object.GetFileName().ToUtf8();
}

/// A maker, its source, and what a host asks of it.
struct Making {
    explicit Making(const Kind& kind) : object(kind.object), target(AllKinds().front().object) {
        info.objectKind = 1;
        info.seriesNumber = "a series number";
        info.patientName = "a name that needs memory";
        settings.patientName = "a name that needs memory";
        settings.fileName = "a file name that needs memory";
    }
    bool Convert(std::int32_t form) {
        settings.compressionType = form;
        const auto code = maker.MakeDcmObject(&app, &object, &settings);
        const auto outcome = maker.GetOutcome();
        return code == QVM_SUCCESS && (outcome == QVM_SUCCESS || outcome == QVM_FRAME_COPIED);
    }
    [[nodiscard]] std::string Look() const { return LookAtMade(object); }

    CDcmApp app;
    CDcmObject object;
    CDcmObject target;
    CXGSPSInfo info;
    _USER_SETTING_INFO settings;
    CxDcmMaker maker;
};

/// A new object of two frames; where it fails it begins again, as a host would.
struct Cycle : Making {
    explicit Cycle(const Kind& kind) : Making(kind) {
        const auto frame = StoredFrames(kind.object).front();
        for (int i = 0; i < 6; ++i) {
            frames.push_back(std::make_unique<unsigned char[]>(frame.size()));
            std::ranges::copy(frame, frames.back().get());
        }
        settings.compressionType = kXferJpeg2000Lossless;
    }
    bool AddFrame() {
        if (maker.AddFrame(frames.back().get()) != QVM_SUCCESS) return false;
        static_cast<void>(frames.back().release());
        frames.pop_back();
        return true;
    }
    bool Run() {
        if (maker.DcmMakerInit(&object, &settings, nullptr) != QVM_SUCCESS) return false;
        if (!AddFrame() || !AddFrame()) return false;
        CDcmObject* result = nullptr;
        const auto answer = maker.MakeDcmObject(result);
        made.reset(result);
        return answer == QVM_SUCCESS;
    }
    std::vector<std::unique_ptr<unsigned char[]>> frames;
    std::unique_ptr<CDcmObject> made;
};

constexpr How kOfBytes{.on = "colour|palette|RLE colour|JPEG baseline|JPEG 2000",
                       .leaves = Leaves::kUsable};
constexpr How kOfWords{
    .notOn = "colour|palette|RLE colour|JPEG baseline|JPEG 2000|presentation state",
    .leaves = Leaves::kUsable};

std::vector<Operation> Operations() {
    return {
        On<Making>(
            "CxDcmMaker::MakeDcmSkeleton", {},
            [](Making& s) { return s.maker.MakeDcmSkeleton(&s.object, &s.target) == 1; },
            [](const Making& s) { return LookAtMade(s.target); }),
        On<Making>(
            "CxDcmMaker::UpdateUserSettingInfo", {},
            [](Making& s) { return s.maker.UpdateUserSettingInfo(&s.info, &s.object) == 1; },
            [](const Making& s) { return test::Look(s.object); }),
        On<Making>("CxDcmMaker::MakeDcmObject, to uncompressed", kOfWords,
                   [](Making& s) { return s.Convert(kXferUncompressed); }),
        On<Making>("CxDcmMaker::MakeDcmObject, to baseline", kOfBytes,
                   [](Making& s) { return s.Convert(kXferJpegBaseline); }),
        On<Making>("CxDcmMaker::MakeDcmObject, to lossless", kOfWords,
                   [](Making& s) { return s.Convert(kXferJpegLossless); }),
        On<Making>("CxDcmMaker::MakeDcmObject, to JPEG 2000", kOfWords,
                   [](Making& s) { return s.Convert(kXferJpeg2000Lossless); }),
        On<Cycle>(
            "CxDcmMaker, cycle", {.on = "native CT|colour"}, [](Cycle& s) { return s.Run(); },
            [](const Cycle& s) { return s.made ? LookAtMade(*s.made) : std::string(); }),
    };
}

INSTANTIATE_TEST_SUITE_P(MakerMemory, FailingAllocation, testing::ValuesIn(Operations()));

}  // namespace
}  // namespace quorvex
