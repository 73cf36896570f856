#include "tools/info/named_facts.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/info/first_values.h"
#include "tools/json.h"
#include "tools/report.h"

#include <span>

namespace quorvex::tools {
namespace {

constexpr std::size_t kMostValues = 64;

struct Attribute {
    std::string_view name;
    std::uint32_t tag;
    bool isText = false;
};
constexpr Attribute kShutter[] = {
    {"shape", tag::kShutterShape, true},
    {"left", tag::kShutterLeftVerticalEdge},
    {"right", tag::kShutterRightVerticalEdge},
    {"upper", tag::kShutterUpperHorizontalEdge},
    {"lower", tag::kShutterLowerHorizontalEdge},
    {"center", tag::kCenterOfCircularShutter},
    {"radius", tag::kRadiusOfCircularShutter},
    {"vertices", tag::kVerticesOfThePolygonalShutter},
    {"overlayGroup", tag::kShutterOverlayGroup},
    {"presentationValue", tag::kShutterPresentationValue},
};
constexpr Attribute kText[] = {
    {"text", tag::kUnformattedTextValue, true},
    {"boxUnits", tag::kBoundingBoxAnnotationUnits, true},
    {"boxTopLeft", tag::kBoundingBoxTopLeftHandCorner},
    {"boxBottomRight", tag::kBoundingBoxBottomRightHandCorner},
    {"justification", tag::kBoundingBoxTextHorizontalJustification, true},
    {"anchorUnits", tag::kAnchorPointAnnotationUnits, true},
    {"anchor", tag::kAnchorPoint},
    {"anchorVisible", tag::kAnchorPointVisibility, true},
};
constexpr Attribute kGraphic[] = {
    {"graphic", tag::kGraphicType, true},
    {"units", tag::kGraphicAnnotationUnits, true},
    {"points", tag::kNumberOfGraphicPoints},
    {"filled", tag::kGraphicFilled, true},
    {"data", tag::kGraphicData},
};
constexpr Attribute kMask[] = {
    {"operation", tag::kMaskOperation, true}, {"frames", tag::kApplicableFrameRange},
    {"maskFrames", tag::kMaskFrameNumbers},   {"averaging", tag::kContrastFrameAveraging},
    {"shift", tag::kMaskSubPixelShift},       {"tidOffset", tag::kTIDOffset},
};

std::vector<std::string> ValuesOf(const CDcmObjectCommon& object, const Attribute& attribute) {
    std::vector<std::string> values;
    if (attribute.isText) {
        for (const auto& text : FirstValues<CString>(object, attribute.tag, kMostValues))
            values.push_back(text.ToUtf8());
    } else {
        for (const double number : FirstValues<double>(object, attribute.tag, kMostValues))
            values.push_back(JsonNumber(number));
    }
    return values;
}

NamedFacts ReadFacts(const CDcmObjectCommon& object, std::span<const Attribute> attributes) {
    NamedFacts facts;
    for (const auto& attribute : attributes) {
        auto values = ValuesOf(object, attribute);
        if (!values.empty()) facts.push_back({attribute.name, attribute.isText, std::move(values)});
    }
    return facts;
}

void AddItems(const CDcmObjectCommon& object, std::uint32_t sequence,
              std::span<const Attribute> attributes, std::vector<NamedFacts>& several) {
    ForEachItem(object, sequence, [&](const CDcmItem& item) {
        auto facts = ReadFacts(item, attributes);
        if (!facts.empty()) several.push_back(std::move(facts));
    });
}

std::string Joined(const std::vector<std::string>& parts, std::string_view between) {
    std::string text;
    for (const auto& part : parts) text += (text.empty() ? "" : std::string(between)) + part;
    return text;
}

std::string ValueAsJson(const NamedFact& fact) {
    const auto asJson = [&](const std::string& value) {
        return fact.isText ? JsonString(value) : value;
    };
    return fact.values.size() == 1 ? asJson(fact.values.front()) : JsonArray(fact.values, asJson);
}

}  // namespace

PresentationFacts ReadPresentationFacts(const CDcmObject& header) {
    PresentationFacts facts;
    auto shutter = ReadFacts(header, kShutter);
    if (!shutter.empty() && shutter.front().name == kShutter[0].name) {
        facts.shutters.push_back(std::move(shutter));
    }
    ForEachItem(header, tag::kGraphicAnnotationSequence, [&](const CDcmItem& group) {
        AddItems(group, tag::kTextObjectSequence, kText, facts.annotations);
        AddItems(group, tag::kGraphicObjectSequence, kGraphic, facts.annotations);
    });
    AddItems(header, tag::kMaskSubtractionSequence, kMask, facts.masks);
    return facts;
}

std::string FactsAsText(const NamedFacts& facts) {
    std::vector<std::string> parts;
    for (const auto& fact : facts) {
        const auto values = Printable(Joined(fact.values, " "));
        parts.push_back(parts.empty() ? values : std::string(fact.name) + ' ' + values);
    }
    return Joined(parts, ", ");
}

std::string FactsAsJson(const NamedFacts& facts) {
    std::vector<std::string> fields;
    for (const auto& fact : facts) {
        fields.push_back('"' + std::string(fact.name) + "\":" + ValueAsJson(fact));
    }
    return '{' + Joined(fields, ",") + '}';
}

std::string FactsAsJson(const std::vector<NamedFacts>& several) {
    return JsonArray(several, [](const NamedFacts& facts) { return FactsAsJson(facts); });
}

}  // namespace quorvex::tools
