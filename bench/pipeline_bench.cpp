// From a file to the first image, and from a window change to the next image, beside DCMTK's
// DicomImage, a table look-up with OpenCV's resize, and the look-up alone.
#include "bench/picture_file.h"
#include "quorvex/CXDIPP.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmimage/diregist.h>
#include <dcmtk/dcmimgle/dcmimage.h>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

namespace {

using quorvex::CSize;
using quorvex::CXDIPP;
using quorvex::Rules;
using quorvex::bench::Picture;
using quorvex::bench::Words;

/// An image and the view that it is shown in.
struct Job {
    CSize image;
    CSize view;
    bool isColour = false;
};
constexpr Job kCt{{512, 512}, {1024, 1024}};
constexpr Job kRadiograph{{3520, 4280}, {1200, 1460}};
constexpr Job kPhoto{{1024, 768}, {1536, 1152}, true};

std::string WriteFile(const Job& job) {
    const auto width = static_cast<std::uint16_t>(job.image.cx);
    const auto height = static_cast<std::uint16_t>(job.image.cy);
    return job.isColour ? quorvex::bench::WriteColourPicture(width, height)
                        : quorvex::bench::WritePicture(width, height);
}

unsigned long Length(int side) {
    return static_cast<unsigned long>(side);
}

// --- Open to first image -------------------------------------------------------------------------

void OpenOurs(benchmark::State& state, const Job& job, Rules rules) {
    quorvex::CDcmApp app;
    const quorvex::CString path(WriteFile(job));
    for (auto _ : state) {
        CXDIPP dipp;
        dipp.SetRules(rules);
        if (dipp.Initialize(&app, path, job.view, 0) != quorvex::QVM_SUCCESS ||
            dipp.Render() != quorvex::QVM_SUCCESS) {
            state.SkipWithError("not shown");
        }
    }
}

const void* ShowScaled(const DicomImage& image, CSize view) {
    const std::unique_ptr<DicomImage> scaled(
        image.createScaledImage(Length(view.cx), Length(view.cy), 1));
    return scaled ? scaled->getOutputData(8) : nullptr;
}

void OpenByDicomImage(benchmark::State& state, const Job& job) {
    const std::string path = WriteFile(job);
    for (auto _ : state) {
        DicomImage image(path.c_str());
        image.setWindow(0);
        if (ShowScaled(image, job.view) == nullptr) state.SkipWithError("not shown");
    }
}

// --- Window change to next image -----------------------------------------------------------------

int NextLevel(int level) {
    return level % 500 + 301;
}

void ChangeWindowOurs(benchmark::State& state, const Job& job, Rules rules) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    dipp.SetRules(rules);
    dipp.Initialize(&app, quorvex::CString(WriteFile(job)), job.view, 0);
    int level = 0;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(level = NextLevel(level), 2000);
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

/// A window that wanders over all values of the picture.
void DragWindowOurs(benchmark::State& state, const Job& job, Rules rules, int width) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    dipp.SetRules(rules);
    dipp.Initialize(&app, quorvex::CString(WriteFile(job)), job.view, 0);
    int step = 0;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(step++ * 97 % 2500 - 700, width);
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

void ChangeWindowByDicomImage(benchmark::State& state, const Job& job) {
    DicomImage image(WriteFile(job).c_str());
    int level = 0;
    for (auto _ : state) {
        image.setWindow(level = NextLevel(level), 2000);
        if (ShowScaled(image, job.view) == nullptr) state.SkipWithError("not shown");
    }
}

void ChangeWindowByDicomImageKeptScaled(benchmark::State& state, const Job& job) {
    const DicomImage image(WriteFile(job).c_str());
    const std::unique_ptr<DicomImage> scaled(
        image.createScaledImage(Length(job.view.cx), Length(job.view.cy), 1));
    int level = 0;
    for (auto _ : state) {
        scaled->setWindow(level = NextLevel(level), 2000);
        if (scaled->getOutputData(8) == nullptr) state.SkipWithError("not shown");
    }
}

/// The peers that know nothing but pixels: every one of them goes through the table.
void ChangeWindowByTable(benchmark::State& state, const Job& job, bool resizes) {
    cv::setNumThreads(1);
    const Words words = Picture(job.image.cx, job.image.cy);
    cv::Mat mapped(job.image.cy, job.image.cx, CV_8UC1);
    cv::Mat result;
    std::vector<unsigned char> table(65536);
    int level = 0;
    for (auto _ : state) {
        level = NextLevel(level);
        for (int i = 0; i < 65536; ++i) {
            table[static_cast<std::size_t>(i)] =
                static_cast<unsigned char>(std::clamp((i - level) / 8, 0, 255));
        }
        unsigned char* to = mapped.data;
        for (std::size_t i = 0; i < words.size(); ++i) to[i] = table[words[i]];
        if (resizes) {
            cv::resize(mapped, result, cv::Size(job.view.cx, job.view.cy), 0, 0, cv::INTER_LINEAR);
        }
        benchmark::ClobberMemory();
    }
}

void TurnAndMirror(benchmark::State& state, const Job& job) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    dipp.Initialize(&app, quorvex::CString(WriteFile(job)), job.view, 0);
    for (auto _ : state) {
        dipp.UpdateRotate_Offset(90);
        dipp.UpdateHFlip_Toggle();
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

#define QUORVEX_BENCH_JOB(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)

QUORVEX_BENCH_JOB(OpenOurs, Ct, kCt, Rules::kEstablished);
QUORVEX_BENCH_JOB(OpenOurs, CtByStandard, kCt, Rules::kStandard);
QUORVEX_BENCH_JOB(OpenByDicomImage, Ct, kCt);
QUORVEX_BENCH_JOB(OpenOurs, Radiograph, kRadiograph, Rules::kEstablished);
QUORVEX_BENCH_JOB(OpenOurs, RadiographByStandard, kRadiograph, Rules::kStandard);
QUORVEX_BENCH_JOB(OpenByDicomImage, Radiograph, kRadiograph);
QUORVEX_BENCH_JOB(OpenOurs, Colour, kPhoto, Rules::kEstablished);
QUORVEX_BENCH_JOB(OpenOurs, ColourByStandard, kPhoto, Rules::kStandard);
QUORVEX_BENCH_JOB(OpenByDicomImage, Colour, kPhoto);

QUORVEX_BENCH_JOB(ChangeWindowOurs, Ct, kCt, Rules::kEstablished);
QUORVEX_BENCH_JOB(ChangeWindowOurs, CtByStandard, kCt, Rules::kStandard);
QUORVEX_BENCH_JOB(ChangeWindowByDicomImage, Ct, kCt);
QUORVEX_BENCH_JOB(ChangeWindowByDicomImageKeptScaled, Ct, kCt);
QUORVEX_BENCH_JOB(ChangeWindowByTable, CtMapAlone, kCt, false);
QUORVEX_BENCH_JOB(ChangeWindowByTable, CtAndResize, kCt, true);
QUORVEX_BENCH_JOB(ChangeWindowOurs, Radiograph, kRadiograph, Rules::kEstablished);
QUORVEX_BENCH_JOB(ChangeWindowOurs, RadiographByStandard, kRadiograph, Rules::kStandard);
QUORVEX_BENCH_JOB(DragWindowOurs, Narrow, kRadiograph, Rules::kEstablished, 150);
QUORVEX_BENCH_JOB(DragWindowOurs, NarrowByStandard, kRadiograph, Rules::kStandard, 150);
QUORVEX_BENCH_JOB(DragWindowOurs, Medium, kRadiograph, Rules::kEstablished, 600);
QUORVEX_BENCH_JOB(DragWindowOurs, MediumByStandard, kRadiograph, Rules::kStandard, 600);
QUORVEX_BENCH_JOB(DragWindowOurs, Wide, kRadiograph, Rules::kEstablished, 2400);
QUORVEX_BENCH_JOB(DragWindowOurs, WideByStandard, kRadiograph, Rules::kStandard, 2400);
QUORVEX_BENCH_JOB(ChangeWindowByDicomImage, Radiograph, kRadiograph);
QUORVEX_BENCH_JOB(ChangeWindowByDicomImageKeptScaled, Radiograph, kRadiograph);
QUORVEX_BENCH_JOB(ChangeWindowByTable, RadiographMapAlone, kRadiograph, false);
QUORVEX_BENCH_JOB(ChangeWindowByTable, RadiographAndResize, kRadiograph, true);
QUORVEX_BENCH_JOB(TurnAndMirror, Radiograph, kRadiograph);

}  // namespace
