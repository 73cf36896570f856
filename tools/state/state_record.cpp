#include "tools/state/state_record.h"

#include "quorvex/CXGSPSObject.h"
#include "quorvex/Tags.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace quorvex::tools {
namespace {

constexpr int kPolyline = 2;

CString TextOf(const CDcmObject& object, std::uint32_t tag) {
    CString text;
    object.GetValue(tag, text);
    return text;
}

int NumberOf(const CDcmObject& object, std::uint32_t tag, int absent) {
    unsigned short number = 0;
    return object.GetValue(tag, number) == kDcmSuccess ? number : absent;
}

// Every value that the image can hold.
Window WidestWindow(const CDcmObject& image, const CXGSPSInfo& info) {
    const int bits = std::clamp(NumberOf(image, tag::kBitsStored, 16), 1, 16);
    const double lowest = info.pixelRepresentation != 0 ? -std::ldexp(1.0, bits - 1) : 0.0;
    const double slope = info.rescaleSlope == 0.0 ? 1.0 : info.rescaleSlope;
    const double centre = (lowest + std::ldexp(1.0, bits - 1)) * slope + info.rescaleIntercept;
    const double width = std::max(std::abs(std::ldexp(1.0, bits) * slope), 1.0);
    constexpr double kLimit = 1 << 30;
    return {static_cast<int>(std::clamp(std::round(centre), -kLimit, kLimit)),
            static_cast<int>(std::clamp(std::round(width), 1.0, kLimit))};
}

template <class Table>
void Release(Table*& table) {
    delete[] table;
    table = nullptr;
}

}  // namespace

StateRecord::StateRecord(CDcmObject& image, const StateArguments& wishes) {
    info_.imageColumns = NumberOf(image, tag::kColumns, 0);
    info_.imageRows = NumberOf(image, tag::kRows, 0);
    CXGSPSObject().GSPSApplier(&image, &info_, CString(), -1);
    info_.objectKind = 1;
    info_.seriesNumber = "1";
    info_.instanceNumber = "1";
    info_.contentLabel = wishes.label.c_str();
    info_.seriesDescription = "Presentation states";
    Refer(image);
    ChooseWindow(image, wishes);
    if (wishes.invert) info_.presentationShape = info_.presentationShape == 0 ? 1 : 0;
    info_.imageRotation = wishes.rotation;
    info_.imageHorizontalFlip = wishes.flip ? 1 : 0;
    ChooseArea(wishes);
    ChooseShutter(wishes.shutter);
    Annotate(wishes);
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
    info_.referencedSOPClassUID = TextOf(image, tag::kSOPClassUID);
    info_.referencedSOPInstanceUID = TextOf(image, tag::kSOPInstanceUID);
    info_.referencedSeriesUID = TextOf(image, tag::kSeriesInstanceUID);
    info_.referencedFrameNumber = -1;
}

void StateRecord::ChooseWindow(const CDcmObject& image, const StateArguments& wishes) {
    if (!wishes.window && (info_.voiLUTData != nullptr || info_.windowWidth != 0)) return;
    Release(info_.voiLUTData);
    const Window window = wishes.window ? *wishes.window : WidestWindow(image, info_);
    info_.windowCenter = window.centre;
    info_.windowWidth = window.width;
}

void StateRecord::ChooseArea(const StateArguments& wishes) {
    const CRect area = wishes.area.value_or(CRect{1, 1, info_.imageColumns, info_.imageRows});
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

void StateRecord::ChooseShutter(const ShutterWish& wish) {
    const auto& numbers = wish.numbers;
    switch (wish.shape) {
        case ShutterWish::Shape::kNone:
            info_.shutterType = -1;
            return;
        case ShutterWish::Shape::kRectangle:
            info_.shutterType = 0;
            info_.shutterLeft = numbers[0];
            info_.shutterUpper = numbers[1];
            info_.shutterRight = numbers[2];
            info_.shutterLower = numbers[3];
            return;
        case ShutterWish::Shape::kCircle:
            info_.shutterType = 1;
            info_.shutterCenterRow = numbers[0];
            info_.shutterCenterColumn = numbers[1];
            info_.shutterRadius = numbers[2];
            return;
        case ShutterWish::Shape::kPolygon:
            info_.shutterType = 2;
            info_.shutterVertices = wish.vertices;
            // A polygon ends where it began.
            if (wish.vertices.front() != wish.vertices.back())
                info_.shutterVertices.push_back(wish.vertices.front());
    }
}

void StateRecord::Annotate(const StateArguments& wishes) {
    for (const auto& wish : wishes.texts) {
        auto text = std::make_unique<GSPSTextObject>();
        text->hasAnchor = 1;
        text->anchorVisible = 1;
        text->anchorPoint = new double[2]{wish.anchor.x, wish.anchor.y};
        text->textValue = wish.text.c_str();
        info_.textObjects.Add(text.release());
    }
    for (const auto& wish : wishes.polylines) {
        auto line = std::make_unique<GSPSGraphicObject>();
        line->graphicType = kPolyline;
        line->pointCount = static_cast<int>(wish.size());
        for (const auto& [x, y] : wish)
            line->points.Add(std::make_unique<GSPSPoint>(GSPSPoint{x, y}).release());
        info_.graphicObjects.Add(line.release());
    }
}

}  // namespace quorvex::tools
