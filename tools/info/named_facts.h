/// What an object says about its shutters, annotations and masks, attribute by attribute.
#pragma once

#include "quorvex/DicomObject.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::tools {

/// One attribute: its name, and its values as the object has them, at most the first 64.
struct NamedFact {
    std::string_view name;
    bool isText = false;
    std::vector<std::string> values;
};
/// Those that are there of one shutter, annotation or mask.
using NamedFacts = std::vector<NamedFact>;

struct PresentationFacts {
    std::vector<NamedFacts> shutters;
    std::vector<NamedFacts> annotations;  ///< texts, then graphics, group by group
    std::vector<NamedFacts> masks;
};

PresentationFacts ReadPresentationFacts(const CDcmObject& header);

/// "CIRCULAR, center 256 250, radius 180": the first fact without its name.
std::string FactsAsText(const NamedFacts& facts);
/// {"shape":"CIRCULAR","center":[256,250],"radius":180}
std::string FactsAsJson(const NamedFacts& facts);
/// The same of several.
std::string FactsAsJson(const std::vector<NamedFacts>& several);

}  // namespace quorvex::tools
