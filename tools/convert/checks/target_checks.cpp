#include "tools/convert/checks/target_checks.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"
#include "tools/convert/checks/source_checks.h"
#include "tools/stored_image.h"
#include "tools/trouble.h"

#include <algorithm>
#include <array>

namespace quorvex::tools {
namespace {

/// Pixels that are numbers of segments: a number next to another one is another organ.
constexpr std::array<std::string_view, 2> kSegmentationClasses = {
    "1.2.840.10008.5.1.4.1.1.66.4",
    "1.2.840.10008.5.1.4.1.1.66.7",
};

/// The attributes that the maker's outcomes name.
struct NamedAttribute {
    QUORVEX_MESSAGE outcome;
    std::uint32_t tag;
    const char* name;
};
constexpr std::array kNamedAttributes = {
    NamedAttribute{QVM_ERROR_INVALID_SAMPLES_PER_PIXEL, tag::kSamplesPerPixel, "Samples per Pixel"},
    NamedAttribute{QVM_ERROR_INVALID_BITS_ALLOCATED, tag::kBitsAllocated, "Bits Allocated"},
    NamedAttribute{QVM_ERROR_INVALID_PIXEL_REPRESENTATION, tag::kPixelRepresentation,
                   "Pixel Representation"},
    NamedAttribute{QVM_ERROR_INVALID_PHOTOMETRIC, tag::kPhotometricInterpretation,
                   "Photometric Interpretation"},
};

std::string NameOf(const ConvertTarget& target) {
    return std::string(target.syntax->name);
}

Refusal Unsupported(QUORVEX_MESSAGE code, const std::string& sentence) {
    return {Outcome::kUnsupported, code, sentence};
}

// Every native form holds any samples: where those are refused, their decoder is missing.
Refusal Unsupported(const NamedAttribute& named, const CDcmObject& source,
                    const ConvertTarget& target) {
    const TransferSyntax* syntax = SyntaxOf(source);
    const std::string what =
        target.syntax->isEncapsulated || syntax == nullptr
            ? NameOf(target) + " cannot hold this image: "
            : "there is no decoder here for this " + std::string(syntax->name) + " image: ";
    return Unsupported(named.outcome, what + named.name + " is " + TextOf(source, named.tag));
}

Refusal WithoutDecoder(const CDcmObject& source) {
    const auto sentence = MissingDecoder(source);
    if (!sentence) return BadInput(QVM_ERROR_INVALID_TRANSFER_SYNTAX);
    return Unsupported(QVM_ERROR_INVALID_TRANSFER_SYNTAX, *sentence);
}

/// Of a target that keeps streams, frames that are none.
Refusal WithoutStreams(const CDcmObject& source, const ConvertTarget& target) {
    const char* const taken = target.form == kXferJpegOriginal
                                  ? "JPEG streams that JPEG XL has kept"
                                  : "JPEG streams of 8 bits, not lossless or arithmetic ones";
    const TransferSyntax* syntax = SyntaxOf(source);
    const std::string had = syntax == nullptr ? "not known" : std::string(syntax->name);
    return Unsupported(QVM_ERROR_INVALID_TARGET_SYNTAX,
                       target.name + " takes " + taken + ", and the image's syntax is " + had);
}

/// Values above what 12 bits hold, or bits above Bits Stored that losses would smear.
Refusal BeyondStoredBits(const CDcmObject& source, const ConvertTarget& target) {
    constexpr int kMostBits = 12;
    const int allocated = Read<int>(source, tag::kBitsAllocated).value_or(0);
    const int stored = Read<int>(source, tag::kBitsStored).value_or(allocated);
    if (stored < 1 || stored > allocated) return BadInput(QVM_ERROR_INVALID_BITS_STORED);
    const bool isTwelve = target.form == kXferJpegExtended;
    const int bits = isTwelve ? std::min(stored, kMostBits) : stored;
    const char* const where =
        target.form == kXferJpegLs ? "beyond, or too close to the ends of, its " : "beyond its ";
    return Unsupported(QVM_ERROR_INVALID_BITS_STORED,
                       NameOf(target) + " cannot hold this image: there are values " + where +
                           std::to_string(bits) + " bits");
}

}  // namespace

void RefuseWhatTheTargetCannotHold(const CDcmObject& source, const ConvertTarget& target) {
    const TransferSyntax* syntax = SyntaxOf(source);
    if (syntax == nullptr || syntax->number == target.syntax->number) {
        if (syntax == nullptr && !TextOf(source, tag::kTransferSyntaxUID).empty())
            throw WithoutDecoder(source);
        return;
    }
    if (syntax->coding == FrameCoding::kNone) throw WithoutDecoder(source);
    const auto isClass = [&](std::string_view uid) {
        return TextOf(source, tag::kSOPClassUID) == uid;
    };
    if (target.IsLossy() && std::ranges::any_of(kSegmentationClasses, isClass))
        throw Unsupported(QVM_ERROR_INVALID_TARGET_SYNTAX,
                          NameOf(target) +
                              " would change numbers of segments, which a segmentation has for "
                              "pixels; take a lossless target");
    const int bits = Read<int>(source, tag::kBitsAllocated).value_or(0);
    if (target.form == kXferJpegExtended && bits == 8)
        throw Unsupported(
            QVM_ERROR_INVALID_BITS_ALLOCATED,
            NameOf(target) + " is for more than 8 bits, and Bits Allocated is 8; take jpeg");
}

Refusal RefusalOf(QUORVEX_MESSAGE outcome, const CDcmObject& source, const ConvertTarget& target) {
    if (outcome == QVM_ERROR_INVALID_TRANSFER_SYNTAX) return WithoutDecoder(source);
    if (outcome == QVM_ERROR_INVALID_BITS_STORED) return BeyondStoredBits(source, target);
    if (outcome == QVM_ERROR_INVALID_TARGET_SYNTAX && target.keepsStreams)
        return WithoutStreams(source, target);
    if (outcome == QVM_ERROR_INVALID_JPEG_STREAM)
        return Unsupported(outcome, "its frames are coded by a process without a decoder here");
    const auto* named = std::ranges::find(kNamedAttributes, outcome, &NamedAttribute::outcome);
    return named == kNamedAttributes.end() ? BadInput(outcome)
                                           : Unsupported(*named, source, target);
}

}  // namespace quorvex::tools
