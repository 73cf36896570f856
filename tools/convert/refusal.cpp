#include "tools/convert/refusal.h"

#include "tools/report.h"

namespace quorvex::tools {

Refusal BadInput(QUORVEX_MESSAGE code) {
    return {Outcome::kBad, code, NamedSentenceOf(code)};
}

Refusal BadInput(QUORVEX_MESSAGE code, const std::string& sentence) {
    return {Outcome::kBad, code, sentence};
}

void Require(QUORVEX_MESSAGE result) {
    if (result != QVM_SUCCESS) throw BadInput(result);
}

}  // namespace quorvex::tools
