#include "quorvex/CxDcmConversion.h"
#include "quorvex/Limits.h"
#include "quorvex/Tags.h"
#include "tools/convert/checks/source_checks.h"
#include "tools/convert/checks/target_checks.h"
#include "tools/convert/conversion.h"
#include "tools/convert/refusal.h"
#include "tools/convert/streaming/parser_pool.h"
#include "tools/report.h"
#include "tools/stored_image.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace quorvex::tools {
namespace {

struct CodedFrame {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    bool lacksMemory = false;
    std::vector<unsigned char> bytes;
};

/// Native colour other than R, G, B takes more than lengths to tell what it is.
bool IsPlainlyNative(const CDcmObject& object) {
    constexpr std::array kPlain = {"MONOCHROME1", "MONOCHROME2", "PALETTE COLOR", "RGB"};
    const TransferSyntax* syntax = SyntaxOf(object);
    const auto photometric = TextOf(object, tag::kPhotometricInterpretation);
    const auto* const plain = std::ranges::find(kPlain, photometric);
    if (syntax == nullptr || syntax->isEncapsulated) return true;
    const bool isColour = photometric == "RGB";
    return plain != kPlain.end() && isColour == (TextOf(object, tag::kSamplesPerPixel) == "3");
}

}  // namespace

bool Conversion::Stream() {
    const TransferSyntax& wanted = *options_.target.syntax;
    if (options_.target.keepsStreams || wanted.isDeflated) return false;
    auto outline = OutlineOf(input_.path);
    if (!outline) return false;
    const CDcmObject& source = outline->object;
    const TransferSyntax* syntax = SyntaxOf(source);
    const bool areNative = syntax != nullptr && !syntax->isEncapsulated && !wanted.isEncapsulated;
    if (syntax == nullptr || syntax == &wanted || areNative || HoldsFractions(source) ||
        !IsPlainlyNative(source))
        return false;
    record_.source = Describe(input_.path);
    DescribeSource(source);
    RefuseWhatIsCut(source);
    record_.outcome = Outcome::kDone;
    if (options_.leavesLossy && IsCodedWithLosses(source)) {
        Keep(Kept::kLossy, "it was coded with losses before");
        return true;
    }
    RefuseWhatTheTargetCannotHold(source, options_.target);
    return RecodeStreamed(*outline);
}

bool Conversion::RecodeStreamed(Outline& outline) {
    const auto requireDone = [&](QUORVEX_MESSAGE result) {
        if (result == QVM_SUCCESS) return;
        if (result == QVM_ERROR_FAILED_TO_SET_PIXEL_DATA && errno != 0)
            throw SystemFailure(record_.output);
        throw RefusalOf(result, outline.object, options_.target);
    };
    CxDcmParser before = outline.parser;
    CxDcmConversion conversion;
    errno = 0;
    const auto begun = conversion.Begin(outline.parser, outline.object,
                                        {.form = options_.target.form,
                                         .quality = static_cast<std::uint16_t>(options_.quality),
                                         .storedBytes = outline.storedBytes},
                                        written_);
    if (begun == QVM_FRAME_COPIED || begun == QVM_ERROR_INVALID_TARGET_SYNTAX) return false;
    requireDone(begun);
    const int count = record_.frames;
    ParserPool parsers(outline.parser, team_.Window() == 1);
    std::vector<CodedFrame> frames(static_cast<std::size_t>(team_.Window()));
    const auto placeOf = [&](int i) -> CodedFrame& {
        return frames[static_cast<std::size_t>(i % team_.Window())];
    };
    const auto code = [&](int i) {
        CodedFrame& frame = placeOf(i);
        ForgetLimit();
        frame.result = parsers.With(
            [&](CxDcmParser& parser) { return conversion.Code(parser, i, frame.bytes); });
        frame.lacksMemory = frame.result != QVM_SUCCESS && LatestLimit() == Limit::kMemory;
    };
    team_.Run(count, code, [&](int i) {
        CodedFrame& frame = placeOf(i);
        if (frame.lacksMemory) throw std::bad_alloc();
        errno = 0;
        if (frame.result != QVM_SUCCESS)
            throw RefusalOf(frame.result, outline.object, options_.target);
        requireDone(conversion.Add(frame.bytes));
        watch_("coding", i + 1, count);
    });
    CDcmObject output;
    errno = 0;
    requireDone(conversion.End(&output));
    record_.syntaxOut = TextOf(output, tag::kTransferSyntaxUID);
    record_.resultUid = TextOf(output, tag::kSOPInstanceUID);
    VerifyStreamed(outline, before);
    return true;
}

void Conversion::VerifyStreamed(const Outline& outline, CxDcmParser& before) {
    record_.verification = Verification::kOff;
    if (!options_.isVerified) return;
    record_.verification = Verification::kDifferent;
    auto output = OutlineOf(written_);
    if (!output)
        throw BadInput(QVM_ERROR_FAILED_TO_COMPRESS,
                       "the output does not read back as it was written");
    VerifyAttributes(outline.object, output->object, true);
    const FrameRun run = [&](int count, const auto& make, const auto& take) {
        team_.Run(count, make, take);
    };
    CheckPixels(CompareFrames(before, output->parser, watch_, run, team_.Window()), true);
    record_.verification = options_.target.IsLossy() ? Verification::kLossy : Verification::kEqual;
}

}  // namespace quorvex::tools
