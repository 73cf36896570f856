// From a file to the first image, and from a window change to the next image, beside DCMTK's
// DicomImage and a table look-up with OpenCV's resize.
#include <benchmark/benchmark.h>
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmimgle/dcmimage.h>

#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "bench/picture_file.h"
#include "quorvex/CXDIPP.h"

namespace {

using quorvex::bench::Picture;
using quorvex::bench::Words;

const std::string& CtFile() {
    static const std::string path = quorvex::bench::WritePicture(512, 512);
    return path;
}

void OpenCtToFirstImage(benchmark::State& state) {
    quorvex::CDcmApp app;
    const quorvex::CString path(CtFile());
    for (auto _ : state) {
        quorvex::CXDIPP dipp;
        if (dipp.Initialize(&app, path, {1024, 1024}, 0) != quorvex::QVM_SUCCESS ||
            dipp.Render() != quorvex::QVM_SUCCESS) {
            state.SkipWithError("not shown");
        }
    }
}
BENCHMARK(OpenCtToFirstImage)->Unit(benchmark::kMillisecond);

void OpenCtToFirstImageByDicomImage(benchmark::State& state) {
    for (auto _ : state) {
        DicomImage image(CtFile().c_str());
        image.setWindow(0);
        DicomImage* const scaled = image.createScaledImage(1024UL, 1024UL, 1);
        if (scaled == nullptr || scaled->getOutputData(8) == nullptr)
            state.SkipWithError("not shown");
        delete scaled;
    }
}
BENCHMARK(OpenCtToFirstImageByDicomImage)->Unit(benchmark::kMillisecond);

constexpr int kWidth = 3520;
constexpr int kHeight = 4280;
constexpr quorvex::CSize kView{1200, 1460};

void ChangeWindowOfRadiograph(benchmark::State& state) {
    Words words = Picture(kWidth, kHeight);
    quorvex::CXDIPP dipp;
    dipp.Initialize(reinterpret_cast<unsigned char*>(words.data()), kView, {kWidth, kHeight}, 2,
                    4095, 0, 0);
    int level = 1500;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(++level % 500 + 1500, 2000);
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}
BENCHMARK(ChangeWindowOfRadiograph)->Unit(benchmark::kMillisecond);

void ChangeWindowOfRadiographByTableAndResize(benchmark::State& state) {
    cv::setNumThreads(1);
    const Words words = Picture(kWidth, kHeight);
    cv::Mat mapped(kHeight, kWidth, CV_8UC1);
    cv::Mat result;
    std::vector<unsigned char> table(65536);
    for (auto _ : state) {
        for (std::size_t i = 0; i < table.size(); ++i) {
            table[i] = static_cast<unsigned char>(std::min<std::size_t>(i / 16, 255));
        }
        unsigned char* to = mapped.data;
        for (std::size_t i = 0; i < words.size(); ++i) to[i] = table[words[i]];
        cv::resize(mapped, result, cv::Size(kView.cx, kView.cy), 0, 0, cv::INTER_LINEAR);
        benchmark::DoNotOptimize(result.data);
    }
}
BENCHMARK(ChangeWindowOfRadiographByTableAndResize)->Unit(benchmark::kMillisecond);

void TurnAndMirrorRadiograph(benchmark::State& state) {
    Words words = Picture(kWidth, kHeight);
    quorvex::CXDIPP dipp;
    dipp.Initialize(reinterpret_cast<unsigned char*>(words.data()), kView, {kWidth, kHeight}, 2,
                    4095, 0, 0);
    for (auto _ : state) {
        dipp.UpdateRotate_Offset(90);
        dipp.UpdateHFlip_Toggle();
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}
BENCHMARK(TurnAndMirrorRadiograph)->Unit(benchmark::kMillisecond);

}  // namespace
