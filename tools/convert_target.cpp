#include "tools/convert_target.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/report.h"

#include <array>

namespace quorvex::tools {
namespace {

/// What the command adds to a transfer syntax that it can convert to.
struct Choice {
    TRANSFER_SYNTAX syntax;
    int quality = 0;
    int worst = 0;
    int best = 0;
    const char* codedColours = nullptr;
};

constexpr std::array kChoices = {
    Choice{kImplicitLittleEndian},
    Choice{kExplicitLittleEndian},
    Choice{kDeflatedExplicitLittleEndian},
    Choice{kRle},
    Choice{kDeflatedImageFrames},
    Choice{kEncapsulatedUncompressed},
    Choice{kJpegBaseline, 97, 1, 100},
    Choice{kJpegExtended, 1, 1000, 1},
    Choice{kJpegLosslessFirstOrder},
    Choice{kJpeg2000, 5, 1000, 1, "YBR_ICT"},
    Choice{kJpeg2000Lossless, 0, 0, 0, "YBR_RCT"},
    Choice{kJpegLsNearLossless, 2, 255, 1},
    Choice{kJpegLsLossless},
    Choice{kHtj2k, 5, 1000, 1, "YBR_ICT"},
    Choice{kHtj2kLossless, 0, 0, 0, "YBR_RCT"},
    Choice{kHtj2kRpclLossless, 0, 0, 0, "YBR_RCT"},
    Choice{kJpegXl, 5, 150, 1, "XYB"},
    Choice{kJpegXlLossless},
};

/// "implicit, explicit or jpeg"
std::string NamesOfTargets() {
    std::string names;
    for (const Choice& choice : kChoices) {
        const bool isLast = &choice == &kChoices.back();
        if (!names.empty()) names += isLast ? " or " : ", ";
        names += TransferSyntaxOf(choice.syntax)->convertName;
    }
    return names;
}

}  // namespace

const TransferSyntax* SyntaxOf(const CDcmObject& object) {
    TRANSFER_SYNTAX number = kSyntaxNone;
    object.GetTransferSyntax(number);
    return TransferSyntaxOf(number);
}

void NameColoursOf(CDcmObject& object, const ConvertTarget& target) {
    if (target.codedColours == nullptr) return;
    if (Read<CString>(object, tag::kPhotometricInterpretation) == CString("RGB"))
        object.SetValue(tag::kPhotometricInterpretation, target.codedColours);
}

ConvertTarget ConvertTargetOf(const std::string& name) {
    const TransferSyntax* syntax = TransferSyntaxToConvertTo(name);
    for (const Choice& choice : kChoices) {
        if (syntax == nullptr || choice.syntax != syntax->number) continue;
        return {syntax, choice.quality, choice.worst, choice.best, choice.codedColours};
    }
    throw WrongUsage("the target is " + NamesOfTargets() + ", not " + name);
}

}  // namespace quorvex::tools
