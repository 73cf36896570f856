/// The transfer syntaxes that images can be brought into.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <string>

namespace quorvex::tools {

/// A form that files can be brought into.
struct ConvertTarget {
    const TransferSyntax* syntax = nullptr;
    int quality = 0;          ///< where none is asked for; 0 where quality means nothing
    int worst = 0, best = 0;  ///< the range that --quality has
    const char* codedColours =
        nullptr;  ///< Photometric Interpretation of coded RGB; null where it stays RGB
};

/// The target of that name. A WrongUsage for any other text.
ConvertTarget ConvertTargetOf(const std::string& name);

/// Says of an object that was coded as RGB how its colours lie in the coded frames, as readers expect
/// it: JPEG 2000 turns them into luminance and differences.
void NameColoursOf(CDcmObject& object, const ConvertTarget& target);

}  // namespace quorvex::tools
