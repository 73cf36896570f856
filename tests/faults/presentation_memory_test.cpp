// Failing memory under windows, render jobs and presentations.
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "tests/faults/fault_harness.h"
#include "tests/faults/given_block.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/digest.h"

#include <array>

namespace quorvex {
namespace {

using namespace test;

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

struct CopiedWindows : Windows {
    explicit CopiedWindows(const Kind& kind) : Windows(kind), from(kind) {
        from.windowing.PrepareGSPSProcessing(&from.record);
    }
    Windows from;
};

template <int rotation>
struct Job {
    explicit Job(const Kind& kind) : windows(kind) {
        windows.windowing.PrepareGSPSProcessing2(&windows.record, 0, 4095);
    }
    bool Run() {
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
        return creator.GetImageWithInfo(info) == 0;
    }
    [[nodiscard]] std::string Look() const { return {output.begin(), output.end()}; }

    Windows windows;
    std::vector<unsigned char> pixels = std::vector<unsigned char>(36 * 20 * 2, 5);
    std::vector<unsigned char> output = std::vector<unsigned char>(48 * 40);
    CXImageCreator creator;
};

struct ModalityJob : Job<0> {
    explicit ModalityJob(const Kind& kind) : Job<0>(kind) {
        windows.windowing.PrepareGSPSProcessing(&windows.record);
    }
    bool RunOnce() {
        if (isDone) return true;
        isDone = creator.ApplyModalityLUT(&windows.windowing, pixels.data(), {36, 20}, 2) == 0;
        return isDone;
    }
    [[nodiscard]] std::string Look() const { return {pixels.begin(), pixels.end()}; }
    bool isDone = false;
};

std::string TextOfTable(const std::uint16_t* data, int count) {
    std::string text = "|";
    for (const int entry : Entries(data, count)) text += std::to_string(entry) + ' ';
    return text;
}

/// Reads are into a fresh record, each try.
struct Reading {
    explicit Reading(const Kind& kind) : object(kind.object), uid(Uid(kind)) {
        reader.imageUID = Uid(kind);
        for (auto& record : records) {
            record = std::make_unique<Record>();
            record->imageColumns = 36;
            record->imageRows = 20;
        }
    }
    static const char* Uid(const Kind& kind) { return kind.name == kStates ? kImage : ""; }
    Record& Next() { return *records[static_cast<std::size_t>(++latest)]; }
    bool ReadModule(unsigned selector) {
        return reader.GetGSPSModule(selector, &object, &Next()) == 1;
    }
    [[nodiscard]] std::string Look() const {
        if (latest < 0) return "";
        const Record& record = *records[static_cast<std::size_t>(latest)];
        std::string text = TextOfTable(record.modalityLUTData, record.modalityLUTCount) +
                           TextOfTable(record.voiLUTData, record.voiLUTCount) +
                           TextOfTable(record.presentationLUTData, record.presentationLUTCount);
        for (const double number :
             {1.0 * record.windowCenter, 1.0 * record.windowWidth, record.rescaleSlope,
              record.rescaleIntercept, record.pixelSpacingX, 1.0 * record.imageRotation,
              1.0 * record.textObjects.GetSize(), 1.0 * record.graphicObjects.GetSize()})
            text += std::to_string(number) + ' ';
        if (record.shutterMask != nullptr)
            text.append(record.shutterMask, record.shutterMask + 720);
        return text;
    }

    CDcmObject object;
    GivenText uid;
    CXGSPSObject reader;
    std::array<std::unique_ptr<Record>, 4> records;
    int latest = -1;
};

struct MakingState : Reading {
    explicit MakingState(const Kind& kind) : Reading(kind) {
        CXGSPSObject().GSPSApplier(&object, &Next(), Uid(kind), -1);
    }
    bool Make() {
        CXGSPSInfo* infos[] = {records.front().get()};
        CDcmObject* result = nullptr;
        const int answer = CXGSPSObject().MakeGSPSObject(&object, infos, 1, result);
        made.reset(result);
        return answer == 1;
    }
    [[nodiscard]] std::string Look() const {
        if (!made) return "none";
        for (const auto tag : kNewEachTime) made->RemoveValue(tag);
        return test::Look(*made);
    }
    std::unique_ptr<CDcmObject> made;
};

std::vector<Operation> Windowing() {
    constexpr How kSilent{.notOn = kStates, .reports = Reports::kNothing};
    return {
        On<Windows>("CXWindowing::PrepareGSPSProcessing", kSilent,
                    [](Windows& s) { return s.windowing.PrepareGSPSProcessing(&s.record) == 0; }),
        On<Windows>("CXWindowing::PrepareGSPSProcessing2", kSilent,
                    [](Windows& s) {
                        return s.windowing.PrepareGSPSProcessing2(&s.record, -9, 4000) == 0;
                    }),
        On<Windows>("CXWindowing::SetValue", kOnImages,
                    [](Windows& s) {
                        int window[] = {100, 20};
                        return s.windowing.SetValue(CXWindowing::kWindow, window, nullptr) == 0;
                    }),
        On<CopiedWindows>("CXWindowing, copy", {.notOn = kStates, .reports = Reports::kException},
                          [](CopiedWindows& s) {
                              s.windowing = s.from.windowing;
                              return true;
                          }),
        On<Job<0>>("CXImageCreator::GetImageWithInfo", {.on = "native CT"},
                   [](Job<0>& s) { return s.Run(); }),
        On<Job<90>>("CXImageCreator::GetImageWithInfo, turned", {.on = "native CT"},
                    [](Job<90>& s) { return s.Run(); }),
        On<ModalityJob>("CXImageCreator::ApplyModalityLUT", {.on = "native CT"},
                        [](ModalityJob& s) { return s.RunOnce(); }),
    };
}

std::vector<Operation> Presentations() {
    const auto module = [](const char* name, unsigned selector) {
        return On<Reading>(name, kUsable, [=](Reading& s) { return s.ReadModule(selector); });
    };
    return {
        On<Reading>("CXGSPSObject::GSPSApplier", kUsable,
                    [](Reading& s) {
                        return CXGSPSObject().GSPSApplier(&s.object, &s.Next(), s.uid.Give(), -1) ==
                               1;
                    }),
        module("CXGSPSObject::GetGSPSModule, modality", 0),
        module("CXGSPSObject::GetGSPSModule, shutter", 1),
        module("CXGSPSObject::GetGSPSModule, VOI", 2),
        module("CXGSPSObject::GetGSPSModule, presentation", 3),
        module("CXGSPSObject::GetGSPSModule, area", 6),
        On<MakingState>("CXGSPSObject::MakeGSPSObject", {},
                        [](MakingState& s) { return s.Make(); }),
    };
}

INSTANTIATE_TEST_SUITE_P(PresentationMemoryWindowing, FailingAllocation,
                         testing::ValuesIn(Windowing()));
INSTANTIATE_TEST_SUITE_P(PresentationMemoryPresentations, FailingAllocation,
                         testing::ValuesIn(Presentations()));

}  // namespace
}  // namespace quorvex
