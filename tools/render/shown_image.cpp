#include "tools/render/shown_image.h"

#include "quorvex/Attributes.h"
#include "quorvex/CLData.h"
#include "quorvex/Tags.h"
#include "tools/stored_image.h"

#include <cmath>
#include <cstdint>

namespace quorvex::tools {
namespace {

constexpr int kLongestSide = 65535;
constexpr Window kColourWindow = {128, 255};  // shows every byte as it is

int SideOf(double zoomThatFitsOnePixel) {
    const double side = std::round(1.0 / zoomThatFitsOnePixel);
    return side >= 1 && side <= kLongestSide ? static_cast<int>(side) : 1;
}

CLData DescribeFrame(const CDcmObject& header) {
    CLData data;
    header.GetValue(tag::kRows, data.height);
    header.GetValue(tag::kColumns, data.width);
    header.GetValue(tag::kBitsAllocated, data.bitsAllocated);
    header.GetValue(tag::kBitsStored, data.bitsStored);
    header.GetValue(tag::kPhotometricInterpretation, data.photometricInterpretation);
    if (const auto spacing = ReadPair<double>(header, tag::kPixelSpacing)) {
        data.pixelSpacingY = spacing->first;
        data.pixelSpacingX = spacing->second;
    }
    if (const auto aspect = ReadPair<double>(header, tag::kPixelAspectRatio)) {
        data.aspectRatioVertical = aspect->first;
        data.aspectRatioHorizontal = aspect->second;
    }
    return data;
}

// A frame of palette indices in its colours.
QUORVEX_MESSAGE OpenInColour(CXDIPP& pipeline, CxDcmParser& parser, int index) {
    constexpr int kInPaletteColours = 2;
    const auto frame = FetchFrame(parser, index);
    if (frame.result != QVM_SUCCESS) return frame.result;
    CLData data = DescribeFrame(*parser.GetHeader());
    data.pixels = frame.bytes.get();
    const int highest = data.bitsAllocated > 8 ? UINT16_MAX : UINT8_MAX;
    const auto result = pipeline.Initialize(parser.GetHeader(), &data, {kNoLimit, kNoLimit},
                                            highest, 0, kInPaletteColours);
    pipeline.UpdateVOILUT_ABS(kColourWindow.centre, kColourWindow.width);
    return result;
}

}  // namespace

QUORVEX_MESSAGE OpenImage(CXDIPP& pipeline, CDcmApp& app, const RenderArguments& arguments) {
    if (arguments.state.empty()) {
        CxDcmParser parser;
        const auto result = parser.Initialize(&app, arguments.file, 0);
        if (result != QVM_SUCCESS) return result;
        const auto photometric =
            Read<CString>(*parser.GetHeader(), tag::kPhotometricInterpretation);
        if (photometric && IsPaletteColour(*photometric))
            return OpenInColour(pipeline, parser, arguments.frame);
    }
    return pipeline.Initialize(&app, arguments.file, {kNoLimit, kNoLimit}, arguments.frame);
}

// What a view of one pixel has to shrink the image by.
CSize DisplayedSize(CXDIPP& pipeline) {
    pipeline.UpdateViewSize({1, kNoLimit});
    const int width = SideOf(pipeline.GetZoomFactor());
    pipeline.UpdateViewSize({kNoLimit, 1});
    return {width, SideOf(pipeline.GetZoomFactor())};
}

}  // namespace quorvex::tools
