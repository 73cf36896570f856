#include "pipeline/recipe/display_rules.h"

#include "pipeline/recipe/established_rules.h"
#include "pipeline/recipe/standard_rules.h"

namespace quorvex {

namespace {

const DisplayRules& RulesFor(bool areStandard) noexcept {
    static const EstablishedRules established;
    static const StandardRules standard;
    if (areStandard) return standard;
    return established;
}

}  // namespace

const DisplayRules& RulesForNext(const DisplayedImage& image) noexcept {
    return RulesFor(image.rules == Rules::kStandard);
}

const DisplayRules& RulesOf(const DisplayedImage& image) noexcept {
    return RulesFor(image.standard.has_value());
}

}  // namespace quorvex
