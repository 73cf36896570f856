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

template <class Table>
void Release(Table*& table) {
    delete[] table;
    table = nullptr;
}

}  // namespace

StateRecord::StateRecord(CDcmObject& image, const StateArguments& arguments) {
    info_.imageColumns = WordOf(image, tag::kColumns, 0);
    info_.imageRows = WordOf(image, tag::kRows, 0);
    CXGSPSObject reader;
    reader.SetRules(Rules::kStandard);
    reader.GSPSApplier(&image, &info_, CString(), -1);
    info_.objectKind = 1;
    info_.seriesNumber = "1";
    info_.instanceNumber = "1";
    info_.contentLabel = arguments.label.c_str();
    info_.seriesDescription = "Presentation states";
    Refer(image);
    ChooseWindow(arguments);
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

void StateRecord::ChooseWindow(const StateArguments& arguments) {
    if (!arguments.window) return;
    Release(info_.voiLUTData);
    constexpr double kLimit = 1 << 30;
    info_.exactWindowCenter = std::clamp(arguments.window->centre, -kLimit, kLimit);
    info_.exactWindowWidth = std::clamp(arguments.window->width, 1.0, kLimit);
    info_.windowCenter = static_cast<int>(info_.exactWindowCenter);
    info_.windowWidth = static_cast<int>(info_.exactWindowWidth);
    info_.windowFunction = CString();
    info_.windowExplanation = CString();
}

void StateRecord::ChooseArea(const StateArguments& arguments) {
    if (!arguments.area) return;
    info_.displayedAreaLeft = arguments.area->left;
    info_.displayedAreaTop = arguments.area->top;
    info_.displayedAreaRight = arguments.area->right;
    info_.displayedAreaBottom = arguments.area->bottom;
}

void StateRecord::ChooseShutter(const ShutterShape& shutter) {
    const auto& numbers = shutter.numbers;
    switch (shutter.kind) {
        case ShutterShape::Kind::kNone:
            return;  // the image's own
        case ShutterShape::Kind::kRectangle:
            info_.shutterType = 0;
            info_.shutterShapes = 0;
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
