#include "tools/render/render.h"

#include "tools/output/output_file.h"
#include "tools/render/shown_image.h"
#include "tools/render/shown_picture.h"
#include "tools/render/state_file.h"

namespace quorvex::tools {
namespace {

constexpr int kFullTurn = 360;

/// How the image lies: whether it is mirrored, and how far it is then turned clockwise.
struct Attitude {
    int rotation = 0;
    bool isFlipped = false;

    [[nodiscard]] bool LiesOnItsSide() const noexcept { return rotation % 180 == 90; }
};

CSize Swapped(CSize size) {
    return {size.cy, size.cx};
}

// A distance along the image's own axes, seen in the view.
CPoint InTheView(CPoint distance, const Attitude& attitude) {
    if (attitude.isFlipped) distance.x = -distance.x;
    for (int turn = 0; turn < attitude.rotation; turn += 90) distance = {-distance.y, distance.x};
    return distance;
}

// The pipeline lays an image out as if it stood upright, so one that lies on its side is laid out
// in an upright view, and what came out is turned with it.
void FitIntoView(CXDIPP& pipeline, CSize view, const Attitude& attitude) {
    pipeline.UpdateViewSize(attitude.LiesOnItsSide() ? Swapped(view) : view);
    const double zoom = pipeline.GetZoomFactor();
    const CPoint pan = pipeline.GetPanOffset();
    pipeline.UpdateViewSize(view);
    pipeline.UpdateZoom_ABS(zoom);
    pipeline.UpdatePan_ABS(InTheView(pan, attitude));
}

void ApplyOptions(CXDIPP& pipeline, const RenderArguments& arguments) {
    if (arguments.window)
        pipeline.UpdateVOILUT_ABS(arguments.window->centre, arguments.window->width);
    if (arguments.zoom) pipeline.UpdateZoom_ABS(*arguments.zoom);
    if (arguments.invert) pipeline.Inverse();
    if (arguments.shutter) pipeline.ShowShutter(1);
    if (arguments.annotations) pipeline.ShowAnnotations(1);
    if (arguments.overlays) pipeline.ShowOverlays(1);
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

// Lays the state over the image; `attitude` receives how the image lies under it.
ExitStatus ApplyState(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments,
                      Attitude& attitude) {
    if (arguments.state.empty()) return kAllDone;
    StateFile state;
    const auto status = state.Open(app, arguments.state, arguments.file);
    if (status != kAllDone) return status;
    pipeline.ApllyGSPSObject(&app, state.Object());
    attitude = {state.Rotation(), state.IsFlipped()};
    return kAllDone;
}

void TurnFurther(CXDIPP& pipeline, const RenderArguments& arguments, Attitude& attitude) {
    attitude.rotation = (attitude.rotation + arguments.rotation) % kFullTurn;
    attitude.isFlipped = attitude.isFlipped != arguments.flip;
    pipeline.UpdateRotate_ABS(attitude.rotation);
    if (arguments.flip) pipeline.UpdateHFlip_Toggle();
}

}  // namespace

ExitStatus Render(const RenderArguments& arguments) {
    CDcmApp app;
    CXDIPP pipeline;
    const auto result = OpenImage(pipeline, app, arguments);
    if (result != QVM_SUCCESS) return ReportBadInput(arguments.file, result);
    const CSize ownSize = DisplayedSize(pipeline);

    Attitude attitude;
    const auto status = ApplyState(pipeline, app, arguments, attitude);
    if (status != kAllDone) return status;
    TurnFurther(pipeline, arguments, attitude);

    const CSize wholeView = attitude.LiesOnItsSide() ? Swapped(ownSize) : ownSize;
    const CSize view = arguments.view.value_or(wholeView);
    FitIntoView(pipeline, view, attitude);
    ApplyOptions(pipeline, arguments);
    return WriteView(pipeline, arguments, view);
}

}  // namespace quorvex::tools
