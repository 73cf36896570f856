// quorvex render: an image as a viewer would show it.
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Tags.h"
#include "tools/output_file.h"
#include "tools/png_writer.h"
#include "tools/render/state_file.h"
#include "tools/verbs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <tuple>
#include <utility>

namespace quorvex::tools {
namespace {

constexpr int kNoLimit = 1 << 30;  // a side of a view that never limits the fit
constexpr int kLongestSide = 65535;
constexpr int kFullTurn = 360;
constexpr Window kColourWindow = {128, 255};  // shows every byte as it is

/// How the image lies: whether it is mirrored, and how far it is then turned clockwise.
struct Attitude {
    int rotation = 0;
    bool isFlipped = false;

    [[nodiscard]] bool LiesOnItsSide() const noexcept { return rotation % 180 == 90; }
};

CSize Swapped(CSize size) {
    return {size.cy, size.cx};
}

int SideOf(double zoomThatFitsOnePixel) {
    const double side = std::round(1.0 / zoomThatFitsOnePixel);
    return side >= 1 && side <= kLongestSide ? static_cast<int>(side) : 1;
}

// The size at a zoom of 1, pixel shape included: what a view of one pixel has to shrink it by.
CSize DisplayedSize(CXDIPP& pipeline) {
    pipeline.UpdateViewSize({1, kNoLimit});
    const int width = SideOf(pipeline.GetZoomFactor());
    pipeline.UpdateViewSize({kNoLimit, 1});
    return {width, SideOf(pipeline.GetZoomFactor())};
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

void ApplyWishes(CXDIPP& pipeline, const RenderArguments& arguments) {
    if (arguments.window)
        pipeline.UpdateVOILUT_ABS(arguments.window->centre, arguments.window->width);
    if (arguments.zoom) pipeline.UpdateZoom_ABS(*arguments.zoom);
    if (arguments.invert) pipeline.Inverse();
    if (arguments.shutter) pipeline.ShowShutter(1);
    if (arguments.annotations) pipeline.ShowAnnotations(1);
    if (arguments.overlays) pipeline.ShowOverlays(1);
    pipeline.UpdatePan_Offset(arguments.pan);
}

Picture BlackPicture(CSize size, int channels) {
    Picture picture{.width = size.cx, .height = size.cy, .channels = channels, .pixels = {}};
    picture.pixels.resize(picture.RowBytes() * static_cast<std::size_t>(size.cy));
    return picture;
}

void SwapRedAndBlue(Picture& picture) {
    for (std::size_t i = 0; i + 2 < picture.pixels.size(); i += 3)
        std::swap(picture.pixels[i], picture.pixels[i + 2]);
}

Picture OneChannelOf(const Picture& colour) {
    Picture grey = BlackPicture({colour.width, colour.height}, 1);
    for (std::size_t i = 0; i < grey.pixels.size(); ++i) grey.pixels[i] = colour.pixels[3 * i];
    return grey;
}

Picture DrawView(CXDIPP& pipeline, CSize view, bool isGrey) {
    Picture picture = BlackPicture(view, 3);
    DrawingSurface surface{.pixels = picture.pixels.data(),
                           .width = view.cx,
                           .height = view.cy,
                           .rowBytes = static_cast<std::ptrdiff_t>(picture.RowBytes()),
                           .bytesPerPixel = 3};
    CDC deviceContext(&surface);
    pipeline.Draw(&deviceContext);
    if (isGrey) return OneChannelOf(picture);
    SwapRedAndBlue(picture);
    return picture;
}

Picture CopyResult(CXDIPP& pipeline, CSize size, int channels) {
    Picture bottomUp = BlackPicture(size, channels);
    unsigned char* destination = bottomUp.pixels.data();
    pipeline.GetResultImage(destination, static_cast<int>(bottomUp.pixels.size()));
    Picture picture = bottomUp;
    const auto rowBytes = static_cast<std::ptrdiff_t>(picture.RowBytes());
    for (int row = 0; row < size.cy; ++row)
        std::copy_n(bottomUp.pixels.begin() + (size.cy - 1 - row) * rowBytes, rowBytes,
                    picture.pixels.begin() + row * rowBytes);
    if (channels == 3) SwapRedAndBlue(picture);
    return picture;
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

bool IsPaletteColour(const CDcmObject& header) {
    CString photometric;
    return header.GetValue(tag::kPhotometricInterpretation, photometric) == kDcmSuccess &&
           photometric.Find("PALETTE") >= 0;
}

std::pair<double, double> PairOf(const CDcmObject& header, std::uint32_t tag) {
    double first = 0;
    double second = 0;
    const bool isWhole = header.GetValue(tag, first) == kDcmSuccess &&
                         header.GetNextValue(tag, second) == kDcmSuccess;
    return isWhole ? std::pair(first, second) : std::pair(0.0, 0.0);
}

CLData DescribeFrame(const CDcmObject& header) {
    CLData data;
    header.GetValue(tag::kRows, data.height);
    header.GetValue(tag::kColumns, data.width);
    header.GetValue(tag::kBitsAllocated, data.bitsAllocated);
    header.GetValue(tag::kBitsStored, data.bitsStored);
    header.GetValue(tag::kPhotometricInterpretation, data.photometricInterpretation);
    std::tie(data.pixelSpacingY, data.pixelSpacingX) = PairOf(header, tag::kPixelSpacing);
    std::tie(data.aspectRatioVertical, data.aspectRatioHorizontal) =
        PairOf(header, tag::kPixelAspectRatio);
    return data;
}

// A frame of palette indices in its colours.
QUORVEX_MESSAGE OpenInColour(CXDIPP& pipeline, CxDcmParser& parser, int frame) {
    unsigned char* indices = nullptr;
    unsigned long size = 0;
    auto result = parser.GetAFrame(frame, indices, size, 0);
    const std::unique_ptr<unsigned char[]> owner(indices);
    if (result != QVM_SUCCESS) return result;
    CLData data = DescribeFrame(*parser.GetHeader());
    data.pixels = indices;
    constexpr int kInPaletteColours = 2;
    const int highest = data.bitsAllocated > 8 ? UINT16_MAX : UINT8_MAX;
    result = pipeline.Initialize(parser.GetHeader(), &data, {kNoLimit, kNoLimit}, highest, 0,
                                 kInPaletteColours);
    pipeline.UpdateVOILUT_ABS(kColourWindow.centre, kColourWindow.width);
    return result;
}

// A presentation state speaks of grey values, so an image under one shows its indices.
QUORVEX_MESSAGE OpenImage(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments) {
    if (arguments.state.empty()) {
        CxDcmParser parser;
        const auto result = parser.Initialize(&app, arguments.file, 0);
        if (result != QVM_SUCCESS) return result;
        if (IsPaletteColour(*parser.GetHeader()))
            return OpenInColour(pipeline, parser, arguments.frame);
    }
    return pipeline.Initialize(&app, arguments.file, {kNoLimit, kNoLimit}, arguments.frame);
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
    ApplyWishes(pipeline, arguments);
    return WriteView(pipeline, arguments, view);
}

}  // namespace quorvex::tools
