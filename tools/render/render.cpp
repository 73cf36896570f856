#include "tools/render/render.h"

#include "tools/frame/frame_warnings.h"
#include "tools/output/output_file.h"
#include "tools/render/shown_picture.h"
#include "tools/render/state_file.h"

namespace quorvex::tools {
namespace {

/// A side of a view that never limits the fit.
constexpr int kNoLimit = 1 << 30;

void ApplyOptions(CXDIPP& pipeline, const RenderArguments& arguments) {
    if (arguments.voi) pipeline.SelectVOI(*arguments.voi - 1);
    if (arguments.window && arguments.function)
        pipeline.UpdateVOILUT_ABS(arguments.window->centre, arguments.window->width,
                                  *arguments.function);
    else if (arguments.window)
        pipeline.UpdateVOILUT_ABS(arguments.window->centre, arguments.window->width);
    pipeline.SetInterpolation(arguments.interpolation);
    if (arguments.zoom) pipeline.UpdateZoom_ABS(*arguments.zoom);
    if (arguments.invert) pipeline.Inverse();
    // A state's shutter and overlays are part of what it shows.
    const bool hasState = !arguments.state.empty();
    if (arguments.shutter || hasState) pipeline.ShowShutter(1);
    if (arguments.annotations) pipeline.ShowAnnotations(1);
    if (arguments.overlays || hasState) pipeline.ShowOverlays(1);
    pipeline.UpdatePan_Offset(arguments.pan);
}

void WritePicture(const Picture& picture, const std::string& path) {
    OutputFile output(path);
    WritePng(picture, output);
    output.Commit();
}

ExitStatus WriteView(CXDIPP& pipeline, const RenderArguments& arguments, CSize view) {
    auto result = pipeline.Render();
    CSize size;
    int channels = 1;
    if (result == QVM_SUCCESS) result = pipeline.GetResultImageInfo(size, channels);
    if (result == QVM_SUCCESS && arguments.result && (size.cx < 1 || size.cy < 1))
        result = QVM_ERROR_INVALID_OUTPUT_SIZE;
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    WritePicture(arguments.result ? CopyResult(pipeline, size, channels)
                                  : DrawView(pipeline, view, channels == 1),
                 arguments.output);
    return kAllDone;
}

ExitStatus ApplyState(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments) {
    if (arguments.state.empty()) return kAllDone;
    StateFile state;
    const auto status = state.Open(app, arguments.state, arguments.file);
    if (status == kAllDone) pipeline.ApllyGSPSObject(&app, state.Object());
    return status;
}

// The result as a whole is what a view without limits shows.
void ShowAll(CXDIPP& pipeline) {
    const double zoom = pipeline.GetZoomFactor();
    pipeline.UpdateViewSize({kNoLimit, kNoLimit});
    pipeline.UpdateZoom_ABS(zoom);
    pipeline.UpdatePan_ABS({0, 0});
}

}  // namespace

ExitStatus Render(const RenderArguments& arguments) {
    CDcmApp app;
    CXDIPP pipeline;
    pipeline.SetRules(Rules::kStandard);
    const auto result =
        pipeline.Initialize(&app, arguments.file, {kNoLimit, kNoLimit}, arguments.frame);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    FrameWarnings warnings;
    warnings.Note(arguments.frame, pipeline.GetFrameQuality());
    warnings.Complain(arguments.file);
    const auto status = ApplyState(pipeline, app, arguments);
    if (status != kAllDone) return status;
    pipeline.UpdateRotate_Offset(arguments.rotation);
    if (arguments.flip) pipeline.UpdateHFlip_Toggle();
    const CSize view = arguments.view.value_or(pipeline.GetDisplayedSize());
    pipeline.UpdateViewSize(view);
    ApplyOptions(pipeline, arguments);
    if (arguments.result) ShowAll(pipeline);
    return WriteView(pipeline, arguments, view);
}

}  // namespace quorvex::tools
