/// Why one file could not be converted, as what a conversion throws.
#pragma once

#include "quorvex/ResultCodes.h"
#include "tools/convert/manifest/manifest.h"

#include <string>

namespace quorvex::tools {

struct Refusal {
    Outcome outcome;
    int code;
    std::string message;
};

/// A bad input, with the code's name, number and sentence, or with a sentence of its own.
Refusal BadInput(QUORVEX_MESSAGE code);
Refusal BadInput(QUORVEX_MESSAGE code, const std::string& sentence);

/// Throws the code's BadInput unless it is QVM_SUCCESS.
void Require(QUORVEX_MESSAGE result);

}  // namespace quorvex::tools
