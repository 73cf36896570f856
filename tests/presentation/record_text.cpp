#include "tests/presentation/presentation_objects.h"

#include <algorithm>
#include <sstream>

namespace quorvex::test {
namespace {

template <class Value>
struct Field {
    const char* name;
    Value CXGSPSInfo::*field;
};

constexpr Field<std::int32_t> kNumbers[] = {
    {"depth", &CXGSPSInfo::pixelBitDepth},        {"offset", &CXGSPSInfo::pixelValueOffset},
    {"signed", &CXGSPSInfo::pixelRepresentation}, {"center", &CXGSPSInfo::windowCenter},
    {"width", &CXGSPSInfo::windowWidth},          {"shape", &CXGSPSInfo::presentationShape},
    {"left", &CXGSPSInfo::shutterLeft},           {"upper", &CXGSPSInfo::shutterUpper},
    {"right", &CXGSPSInfo::shutterRight},         {"lower", &CXGSPSInfo::shutterLower},
    {"row", &CXGSPSInfo::shutterCenterRow},       {"column", &CXGSPSInfo::shutterCenterColumn},
    {"radius", &CXGSPSInfo::shutterRadius},       {"rotation", &CXGSPSInfo::imageRotation},
    {"flip", &CXGSPSInfo::imageHorizontalFlip},   {"area left", &CXGSPSInfo::displayedAreaLeft},
    {"top", &CXGSPSInfo::displayedAreaTop},       {"right", &CXGSPSInfo::displayedAreaRight},
    {"bottom", &CXGSPSInfo::displayedAreaBottom}, {"mode", &CXGSPSInfo::presentationSizeMode}};
constexpr Field<double> kReals[] = {{"slope", &CXGSPSInfo::rescaleSlope},
                                    {"intercept", &CXGSPSInfo::rescaleIntercept},
                                    {"spacing x", &CXGSPSInfo::pixelSpacingX},
                                    {"spacing y", &CXGSPSInfo::pixelSpacingY},
                                    {"aspect x", &CXGSPSInfo::pixelAspectHorizontal},
                                    {"aspect y", &CXGSPSInfo::pixelAspectVertical},
                                    {"magnification", &CXGSPSInfo::presentationMagnification}};

class Writer {
public:
    template <class Value>
    void Put(const char* name, Value value) {
        if (value != Value{}) Begin() << name << ' ' << value;
    }
    void Lut(const char* name, const std::uint16_t* data, int count, int first, int bits) {
        if (data == nullptr) return;
        Begin() << name << ' ' << count << ',' << first << ',' << bits << ':';
        for (int i = 0; i < (count == 0 ? 8 : std::min(count, 8)); ++i) out_ << ' ' << data[i];
    }
    void Text(const GSPSTextObject& text) {
        Begin() << "text " << text.textValue.ToUtf8();
        Place("box", text.boundingBoxTopLeft);
        Place("to", text.boundingBoxBottomRight);
        out_ << " has " << text.hasBoundingBox << text.hasAnchor << " units "
             << text.boundingBoxUnits << text.anchorUnits << " at " << text.horizontalJustification;
        Place("anchor", text.anchorPoint);
        if (text.anchorVisible != 0) out_ << " visible";
    }
    void Graphic(const GSPSGraphicObject& graphic) {
        Begin() << "graphic " << graphic.graphicType << " of " << graphic.pointCount << " units "
                << graphic.annotationUnits << (graphic.filled != 0 ? " filled" : "");
        for (int i = 0; i < graphic.points.GetSize(); ++i) {
            const auto& point = *static_cast<const GSPSPoint*>(graphic.points[i]);
            out_ << ' ' << point.x << ',' << point.y;
        }
    }
    [[nodiscard]] std::string Written() const { return out_.str(); }

private:
    std::ostream& Begin() { return out_.str().empty() ? out_ : out_ << "; "; }
    void Place(const char* name, const double* place) {
        if (place != nullptr) out_ << ' ' << name << ' ' << place[0] << ',' << place[1];
    }

    std::ostringstream out_;
};

}  // namespace

std::string TextOf(const CXGSPSInfo& info) {
    Writer writer;
    for (const auto& [name, field] : kNumbers) writer.Put(name, info.*field);
    writer.Put("value", info.shutterPresentationValue);
    for (const auto& [name, field] : kReals) writer.Put(name, info.*field);
    writer.Lut("modality", info.modalityLUTData, info.modalityLUTCount, info.modalityLUTFirst, 0);
    writer.Lut("VOI", info.voiLUTData, info.voiLUTCount, info.voiLUTFirst, info.voiLUTBits);
    writer.Lut("presentation", info.presentationLUTData, info.presentationLUTCount,
               info.presentationLUTFirst, info.presentationLUTBits);
    for (int i = 0; i < info.textObjects.GetSize(); ++i)
        writer.Text(*static_cast<const GSPSTextObject*>(info.textObjects[i]));
    for (int i = 0; i < info.graphicObjects.GetSize(); ++i)
        writer.Graphic(*static_cast<const GSPSGraphicObject*>(info.graphicObjects[i]));
    return writer.Written();
}

}  // namespace quorvex::test
