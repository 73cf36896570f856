#include "tools/state/state_record.h"

#include "quorvex/Attributes.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace quorvex::tools {
namespace {

constexpr int kPolyline = 2;

int WordOf(const CDcmObject& object, std::uint32_t tag, unsigned short absent) {
    return Read<unsigned short>(object, tag).value_or(absent);
}

// Every value that the image can hold.
Window WidestWindow(const CDcmObject& image, const CXGSPSInfo& info) {
    const int bits = std::clamp(WordOf(image, tag::kBitsStored, 16), 1, 16);
    const double lowest = info.pixelRepresentation != 0 ? -std::ldexp(1.0, bits - 1) : 0.0;
    const double slope = info.rescaleSlope == 0.0 ? 1.0 : info.rescaleSlope;
    const double centre = (lowest + std::ldexp(1.0, bits - 1)) * slope + info.rescaleIntercept;
    const double width = std::max(std::abs(std::ldexp(1.0, bits) * slope), 1.0);
    constexpr double kLimit = 1 << 30;
    return {std::clamp(std::round(centre), -kLimit, kLimit),
            std::clamp(std::round(width), 1.0, kLimit)};
}

template <class Table>
void Release(Table*& table) {
    delete[] table;
    table = nullptr;
}

}  // namespace

StateRecord::StateRecord(CDcmObject& image, const StateArguments& arguments) {
    info_.imageColumns = WordOf(image, tag::kColumns, 0);
    info_.imageRows = WordOf(image, tag::kRows, 0);
    CXGSPSObject().GSPSApplier(&image, &info_, CString(), -1);
    info_.objectKind = 1;
    info_.seriesNumber = "1";
    info_.instanceNumber = "1";
    info_.contentLabel = arguments.label.c_str();
    info_.seriesDescription = "Presentation states";
    Refer(image);
    ChooseWindow(image, arguments);
    if (arguments.invert) info_.presentationShape = info_.presentationShape == 0 ? 1 : 0;
    info_.imageRotation = arguments.rotation;
    info_.imageHorizontalFlip = arguments.flip ? 1 : 0;
    ChooseArea(arguments);
    ChooseShutter(arguments.shutter);
    Annotate(arguments);
}

StateRecord::~StateRecord() {
    Release(info_.modalityLUTData);
    Release(info_.voiLUTData);
    Release(info_.presentationLUTData);
    Release(info_.shutterMask);
    Release(info_.maskFrameRanges);
    Release(info_.maskFrameNumbers);
}

void StateRecord::Refer(const CDcmObject& image) {
    info_.referencedSOPClassUID = Read<CString>(image, tag::kSOPClassUID).value_or(CString());
    info_.referencedSOPInstanceUID = Read<CString>(image, tag::kSOPInstanceUID).value_or(CString());
    info_.referencedSeriesUID = Read<CString>(image, tag::kSeriesInstanceUID).value_or(CString());
    info_.referencedFrameNumber = -1;
}

void StateRecord::ChooseWindow(const CDcmObject& image, const StateArguments& arguments) {
    if (!arguments.window && (info_.voiLUTData != nullptr || info_.windowWidth != 0)) return;
    Release(info_.voiLUTData);
    const Window window = arguments.window ? *arguments.window : WidestWindow(image, info_);
    constexpr double kLimit = 1 << 30;
    info_.windowCenter = static_cast<int>(std::round(std::clamp(window.centre, -kLimit, kLimit)));
    info_.windowWidth = static_cast<int>(std::round(std::clamp(window.width, 1.0, kLimit)));
}

void StateRecord::ChooseArea(const StateArguments& arguments) {
    const CRect area = arguments.area.value_or(CRect{1, 1, info_.imageColumns, info_.imageRows});
    info_.displayedAreaLeft = area.left;
    info_.displayedAreaTop = area.top;
    info_.displayedAreaRight = area.right;
    info_.displayedAreaBottom = area.bottom;
    info_.presentationSizeMode = 0;
    if (info_.pixelAspectHorizontal <= 0.0 || info_.pixelAspectVertical <= 0.0) {
        info_.pixelAspectHorizontal = 1.0;
        info_.pixelAspectVertical = 1.0;
    }
}

void StateRecord::ChooseShutter(const ShutterShape& shutter) {
    const auto& numbers = shutter.numbers;
    switch (shutter.kind) {
        case ShutterShape::Kind::kNone:
            info_.shutterType = -1;
            return;
        case ShutterShape::Kind::kRectangle:
            info_.shutterType = 0;
            info_.shutterLeft = numbers[0];
            info_.shutterUpper = numbers[1];
            info_.shutterRight = numbers[2];
            info_.shutterLower = numbers[3];
            return;
        case ShutterShape::Kind::kCircle:
            info_.shutterType = 1;
            info_.shutterCenterRow = numbers[0];
            info_.shutterCenterColumn = numbers[1];
            info_.shutterRadius = numbers[2];
            return;
        case ShutterShape::Kind::kPolygon:
            info_.shutterType = 2;
            info_.shutterVertices = shutter.vertices;
            // A polygon ends where it began.
            if (shutter.vertices.front() != shutter.vertices.back())
                info_.shutterVertices.push_back(shutter.vertices.front());
    }
}

void StateRecord::Annotate(const StateArguments& arguments) {
    for (const auto& wanted : arguments.texts) {
        auto text = std::make_unique<GSPSTextObject>();
        text->hasAnchor = 1;
        text->anchorVisible = 1;
        text->anchorPoint = new double[2]{wanted.anchor.x, wanted.anchor.y};
        text->textValue = wanted.text.c_str();
        info_.textObjects.Add(text.release());
    }
    for (const auto& positions : arguments.polylines) {
        auto line = std::make_unique<GSPSGraphicObject>();
        line->graphicType = kPolyline;
        line->pointCount = static_cast<int>(positions.size());
        for (const auto& [x, y] : positions)
            line->points.Add(std::make_unique<GSPSPoint>(GSPSPoint{x, y}).release());
        info_.graphicObjects.Add(line.release());
    }
}

}  // namespace quorvex::tools
