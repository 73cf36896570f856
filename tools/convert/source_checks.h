/// What keeps an object from being converted.
#pragma once

#include "quorvex/ResultCodes.h"
#include "tools/convert/manifest.h"
#include "tools/convert_target.h"

#include <string>

namespace quorvex::tools {

/// Why one file could not be converted.
struct Refusal {
    Outcome outcome;
    int code;
    std::string message;
};

/// The code's name, number and sentence, or a sentence of one's own.
Refusal BadInput(QUORVEX_MESSAGE code);
Refusal BadInput(QUORVEX_MESSAGE code, const std::string& sentence);

/// Throws the code's BadInput unless it is QVM_SUCCESS.
void Require(QUORVEX_MESSAGE result);

/// An attribute's first value as UTF-8; empty where there is none.
std::string TextOf(const CDcmObject& object, std::uint32_t tag);
int FramesOf(const CDcmObject& object);

/// Throws a Refusal for an object without pixels, with fewer than it says, or with such as the
/// target's coder cannot hold.
void RefuseUnfitSource(CDcmObject& source, const ConvertTarget& target);

}  // namespace quorvex::tools
