/// The transfer syntaxes that images can be brought into.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <string>
#include <vector>

namespace quorvex::tools {

/// The row of an object's transfer syntax; null for one that is not known.
const TransferSyntax* SyntaxOf(const CDcmObject& object);

/// A form that files can be brought into.
struct ConvertTarget {
    std::string name;
    const TransferSyntax* syntax = nullptr;
    QUORVEX_XFERSYNTAX form{};
    bool keepsStreams = false;  ///< JPEG streams to the byte: nothing is lost or coded
    int quality = 0;            ///< where none is asked for; 0 where quality means nothing
    int worst = 0, best = 0;    ///< the range that --quality has
    /// Photometric Interpretation of coded RGB; null where it stays RGB.
    const char* codedColours = nullptr;

    [[nodiscard]] bool IsLossy() const noexcept { return syntax->isLossy && !keepsStreams; }
};

/// What images can be brought into.
std::vector<std::string> NamesOfTargets();
/// The target of that name. A WrongUsage for any other text.
ConvertTarget ConvertTargetOf(const std::string& name);

/// Of those, what any samples can be coded to.
std::vector<std::string> NamesOfCodingTargets();
ConvertTarget CodingTargetOf(const std::string& name);

/// Sets the Photometric Interpretation of an object that was coded as RGB to what the coded frames
/// have, as readers expect it: JPEG 2000 makes luminance and differences of the colours.
void NameColoursOf(CDcmObject& object, const ConvertTarget& target);

}  // namespace quorvex::tools
