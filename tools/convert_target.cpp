#include "tools/convert_target.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/report.h"

#include <array>
#include <iterator>
#include <optional>

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

/// Targets that keep JPEG streams to the byte.
struct StreamChoice {
    const char* name;
    TRANSFER_SYNTAX syntax;  ///< for original streams the commonest of those that they can have
    QUORVEX_XFERSYNTAX form;
};
constexpr std::array kStreamChoices = {
    StreamChoice{"jpegxl-jpeg", kJpegXlOfJpeg, kXferJpegXlOfJpeg},
    StreamChoice{"jpeg-original", kJpegBaseline, kXferJpegOriginal},
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
[[noreturn]] void RefuseTarget(const std::vector<std::string>& names, const std::string& wanted) {
    std::string all = names.front();
    for (std::size_t i = 1; i < names.size(); ++i)
        all += (i + 1 == names.size() ? " or " : ", ") + names[i];
    throw WrongUsage("the target is " + all + ", not " + wanted);
}

/// The coding is the standard's, and a library for it was left out.
[[noreturn]] void RefuseBuild(const std::string& wanted, const TransferSyntax& missing) {
    throw WrongUsage("this build cannot write " + wanted +
                     ": it was made without the library for " + std::string(missing.name));
}

/// Whether this build has the library that takes JPEG streams and gives them back.
bool KeepsStreams() {
    return TransferSyntaxOf(kJpegXlOfJpeg)->isWritten;
}

std::optional<ConvertTarget> FindTarget(const std::string& name) {
    const TransferSyntax* syntax = TransferSyntaxToConvertTo(name);
    for (const Choice& choice : kChoices) {
        if (syntax == nullptr || choice.syntax != syntax->number) continue;
        if (!syntax->isWritten) RefuseBuild(name, *syntax);
        return ConvertTarget{.name = name,
                             .syntax = syntax,
                             .form = syntax->form,
                             .quality = choice.quality,
                             .worst = choice.worst,
                             .best = choice.best,
                             .codedColours = choice.codedColours};
    }
    return std::nullopt;
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

std::vector<std::string> NamesOfCodingTargets() {
    std::vector<std::string> names;
    names.reserve(std::size(kChoices));
    for (const Choice& choice : kChoices) {
        const TransferSyntax& syntax = *TransferSyntaxOf(choice.syntax);
        if (syntax.isWritten) names.emplace_back(syntax.convertName);
    }
    return names;
}

std::vector<std::string> NamesOfTargets() {
    auto names = NamesOfCodingTargets();
    names.reserve(names.size() + std::size(kStreamChoices));
    if (!KeepsStreams()) return names;
    for (const StreamChoice& choice : kStreamChoices) names.emplace_back(choice.name);
    return names;
}

ConvertTarget CodingTargetOf(const std::string& name) {
    if (auto target = FindTarget(name)) return *std::move(target);
    RefuseTarget(NamesOfCodingTargets(), name);
}

ConvertTarget ConvertTargetOf(const std::string& name) {
    if (auto target = FindTarget(name)) return *std::move(target);
    for (const StreamChoice& choice : kStreamChoices) {
        if (name != choice.name) continue;
        if (!KeepsStreams()) RefuseBuild(name, *TransferSyntaxOf(kJpegXlOfJpeg));
        return {.name = name,
                .syntax = TransferSyntaxOf(choice.syntax),
                .form = choice.form,
                .keepsStreams = true};
    }
    RefuseTarget(NamesOfTargets(), name);
}

}  // namespace quorvex::tools
