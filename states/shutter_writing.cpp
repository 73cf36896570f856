#include "states/shutter_writing.h"

#include "quorvex/Tags.h"
#include "states/attribute_writing.h"

namespace quorvex {

void WriteRectangle(const CXGSPSInfo& info, CDcmObject& target) {
    target.SetValue(tag::kShutterLeftVerticalEdge, info.shutterLeft);
    target.SetValue(tag::kShutterRightVerticalEdge, info.shutterRight);
    target.SetValue(tag::kShutterUpperHorizontalEdge, info.shutterUpper);
    target.SetValue(tag::kShutterLowerHorizontalEdge, info.shutterLower);
}

void WriteCircle(const CXGSPSInfo& info, CDcmObject& target) {
    WritePair(target, tag::kCenterOfCircularShutter, info.shutterCenterRow,
              info.shutterCenterColumn);
    target.SetValue(tag::kRadiusOfCircularShutter, info.shutterRadius);
}

void WritePolygon(const CXGSPSInfo& info, CDcmObject& target) {
    ValueWriter vertices(target, tag::kVerticesOfThePolygonalShutter);
    for (const CPoint& vertex : info.shutterVertices) {
        vertices.Add(vertex.y);
        vertices.Add(vertex.x);
    }
}

}  // namespace quorvex
