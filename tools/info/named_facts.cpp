#include "tools/info/named_facts.h"

#include "tools/info/element_value.h"
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
    {"shape", 0x00181600, true},  {"left", 0x00181602},
    {"right", 0x00181604},        {"upper", 0x00181606},
    {"lower", 0x00181608},        {"center", 0x00181610},
    {"radius", 0x00181612},       {"vertices", 0x00181620},
    {"overlayGroup", 0x00181623}, {"presentationValue", 0x00181622},
};
constexpr Attribute kText[] = {
    {"text", 0x00700006, true},
    {"boxUnits", 0x00700003, true},
    {"boxTopLeft", 0x00700010},
    {"boxBottomRight", 0x00700011},
    {"justification", 0x00700012, true},
    {"anchorUnits", 0x00700004, true},
    {"anchor", 0x00700014},
    {"anchorVisible", 0x00700015, true},
};
constexpr Attribute kGraphic[] = {
    {"graphic", 0x00700023, true}, {"units", 0x00700005, true}, {"points", 0x00700021},
    {"filled", 0x00700024, true},  {"data", 0x00700022},
};
constexpr Attribute kMask[] = {
    {"operation", 0x00286101, true}, {"frames", 0x00286102}, {"maskFrames", 0x00286110},
    {"averaging", 0x00286112},       {"shift", 0x00286114},  {"tidOffset", 0x00286120},
};
constexpr std::uint32_t kAnnotations = 0x00700001;
constexpr std::uint32_t kTexts = 0x00700008;
constexpr std::uint32_t kGraphics = 0x00700009;
constexpr std::uint32_t kMasks = 0x00286100;

std::string AsTold(const CString& value) {
    return value.ToUtf8();
}
std::string AsTold(double value) {
    return JsonNumber(value);
}

template <class Value>
std::vector<std::string> ValuesOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    std::vector<std::string> values;
    Value value{};
    auto result = object.GetValue(tag, value);
    while (result == kDcmSuccess && values.size() < kMostValues) {
        values.push_back(AsTold(value));
        result = object.GetNextValue(tag, value);
    }
    return values;
}

NamedFacts ReadFacts(const CDcmObjectCommon& object, std::span<const Attribute> attributes) {
    NamedFacts facts;
    for (const auto& attribute : attributes) {
        auto values = attribute.isText ? ValuesOf<CString>(object, attribute.tag)
                                       : ValuesOf<double>(object, attribute.tag);
        if (!values.empty()) facts.push_back({attribute.name, attribute.isText, std::move(values)});
    }
    return facts;
}

template <class Take>
void ForEachItem(const CDcmObjectCommon& object, std::uint32_t sequence, Take take) {
    CDcmItem item;
    auto result = object.GetValue(sequence, item);
    for (; result == kDcmSuccess; result = object.GetNextValue(sequence, item)) take(item);
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
    std::vector<std::string> values;
    for (const auto& value : fact.values) {
        values.push_back(fact.isText ? JsonString(value) : value);
    }
    if (values.size() == 1) return values.front();
    return '[' + Joined(values, ",") + ']';
}

}  // namespace

PresentationFacts ReadPresentationFacts(const CDcmObject& header) {
    PresentationFacts facts;
    auto shutter = ReadFacts(header, kShutter);
    if (!shutter.empty() && shutter.front().name == kShutter[0].name) {
        facts.shutters.push_back(std::move(shutter));
    }
    ForEachItem(header, kAnnotations, [&](const CDcmItem& group) {
        AddItems(group, kTexts, kText, facts.annotations);
        AddItems(group, kGraphics, kGraphic, facts.annotations);
    });
    AddItems(header, kMasks, kMask, facts.masks);
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
    std::vector<std::string> objects;
    for (const auto& facts : several) objects.push_back(FactsAsJson(facts));
    return '[' + Joined(objects, ",") + ']';
}

}  // namespace quorvex::tools
