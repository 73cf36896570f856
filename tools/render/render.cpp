#include "tools/render/render.h"

#include "tools/frame/frame_warnings.h"
#include "tools/output/output_file.h"
#include "tools/output/output_place.h"
#include "tools/output/picture_file.h"
#include "tools/render/region.h"
#include "tools/render/shown_picture.h"
#include "tools/render/state_file.h"

namespace quorvex::tools {
namespace {

/// A side of a view that never limits the fit.
constexpr int kNoLimit = 1 << 30;
constexpr int kJpegQuality = 90;

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

ExitStatus ApplyState(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments) {
    if (arguments.state.empty()) return kAllDone;
    StateFile state;
    const auto status = state.Open(app, arguments.state, arguments.files.front());
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

PictureFormat FormatOf(const std::string& output) {
    const auto format = PictureFormatOf(output);
    if (!format || *format == PictureFormat::kJpegLossless)
        throw WrongUsage("a picture's name ends in .png, .jpg or .jpeg, not as in " + output);
    return *format;
}

/// The frames that are asked for, one after the other.
class RenderRun {
public:
    explicit RenderRun(const RenderArguments& arguments)
        : arguments_(arguments), format_(FormatOf(arguments.output)) {}

    ExitStatus Run() {
        auto status = kAllDone;
        if (arguments_.region) {
            status = RenderRegion();
        } else {
            status = arguments_.allFrames ? RenderAll() : RenderFile();
        }
        warnings_.Complain(File());
        return status;
    }

private:
    [[nodiscard]] const std::string& File() const { return arguments_.files.front(); }

    ExitStatus RenderRegion() {
        CDcmObject object;
        const RegionChoice choice{.area = *arguments_.region,
                                  .level = arguments_.level,
                                  .opticalPath = arguments_.opticalPath,
                                  .focalPlane = arguments_.focalPlane};
        const auto status = OpenRegion(app_, arguments_.files, choice, object);
        if (status != kAllDone) return status;
        CXDIPP pipeline;
        pipeline.SetRules(Rules::kStandard);
        const auto opened = pipeline.Initialize(&app_, &object, {kNoLimit, kNoLimit}, 0);
        return Render(pipeline, opened, 0, arguments_.output);
    }

    ExitStatus RenderFile() {
        CXDIPP pipeline;
        pipeline.SetRules(Rules::kStandard);
        const auto result =
            pipeline.Initialize(&app_, File(), {kNoLimit, kNoLimit}, arguments_.frame);
        return Render(pipeline, result, arguments_.frame, arguments_.output);
    }

    // The file is read once; each frame has a pipeline of its own, so that none takes anything over
    // from the one before.
    ExitStatus RenderAll() {
        CxDcmParser parser;
        parser.SetRules(Rules::kStandard);
        const auto result = parser.Initialize(&app_, File(), 1);
        const int count = result == QVM_SUCCESS ? parser.GetFrameCount() : 0;
        if (result != QVM_SUCCESS || count < 1)
            return ReportBadInput(File(),
                                  result != QVM_SUCCESS ? result : QVM_ERROR_INVALID_FRAME_INDEX);
        for (int frame = 0; frame < count; ++frame) {
            CXDIPP pipeline;
            pipeline.SetRules(Rules::kStandard);
            const auto opened =
                pipeline.Initialize(&app_, parser.GetHeader(), {kNoLimit, kNoLimit}, frame);
            const auto status =
                Render(pipeline, opened, frame, NumberedPath(arguments_.output, frame + 1, count));
            if (status != kAllDone) return status;
        }
        return kAllDone;
    }

    ExitStatus Render(CXDIPP& pipeline, QUORVEX_MESSAGE opened, int frame,
                      const std::string& path) {
        if (opened != QVM_SUCCESS) return ReportBadInput(File(), opened);
        warnings_.Note(frame, pipeline.GetFrameQuality());
        const auto status = ApplyState(pipeline, app_, arguments_);
        if (status != kAllDone) return status;
        pipeline.UpdateRotate_Offset(arguments_.rotation);
        if (arguments_.flip) pipeline.UpdateHFlip_Toggle();
        const CSize view = arguments_.view.value_or(pipeline.GetDisplayedSize());
        pipeline.UpdateViewSize(view);
        ApplyOptions(pipeline, arguments_);
        if (arguments_.result) ShowAll(pipeline);
        Picture picture;
        auto result = Show(pipeline, view, picture);
        auto sources = arguments_.files;
        sources.push_back(arguments_.state);
        RefuseToReplace(path, sources);
        if (result == QVM_SUCCESS) result = WritePicture(picture, format_, kJpegQuality, path);
        return result == QVM_SUCCESS ? kAllDone : ReportBadInput(File(), result);
    }

    QUORVEX_MESSAGE Show(CXDIPP& pipeline, CSize view, Picture& picture) const {
        auto result = pipeline.Render();
        CSize size;
        int channels = 1;
        if (result == QVM_SUCCESS) result = pipeline.GetResultImageInfo(size, channels);
        if (result == QVM_SUCCESS && arguments_.result && (size.cx < 1 || size.cy < 1))
            result = QVM_ERROR_INVALID_OUTPUT_SIZE;
        if (result != QVM_SUCCESS) return result;
        picture = arguments_.result ? CopyResult(pipeline, size, channels)
                                    : DrawView(pipeline, view, channels == 1);
        return QVM_SUCCESS;
    }

    const RenderArguments& arguments_;
    PictureFormat format_;
    CDcmApp app_;
    FrameWarnings warnings_;
};

}  // namespace

ExitStatus Render(const RenderArguments& arguments) {
    if (arguments.allFrames && arguments.output == kStandardOutput)
        throw WrongUsage("--all-frames makes files with numbers, not standard output");
    if (!arguments.region && arguments.files.size() > 1)
        throw WrongUsage("render takes one file; several are levels of a picture for --region");
    return RenderRun(arguments).Run();
}

}  // namespace quorvex::tools
