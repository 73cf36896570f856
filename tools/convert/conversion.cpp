#include "tools/convert/conversion.h"

#include "quorvex/CxDcmMaker.h"
#include "quorvex/Tags.h"
#include "tools/convert/checks/allowed_changes.h"
#include "tools/convert/checks/source_checks.h"
#include "tools/convert/checks/target_checks.h"
#include "tools/convert/checks/verify.h"
#include "tools/convert/source_reading.h"
#include "tools/output/object_output.h"
#include "tools/report.h"
#include "tools/stored_image.h"

#include <fstream>
#include <vector>

namespace quorvex::tools {
namespace {

MC_STATUS ReportFrame(int done, int all, void* user) {
    (*static_cast<const FrameWatch*>(user))("coding", done, all);
    return kMcContinue;
}

/// What a coder may take for the syntax of an object without pixels.
const TransferSyntax& EncodingOf(const ConvertTarget& target) {
    return target.syntax->isEncapsulated ? *TransferSyntaxOf(kExplicitLittleEndian)
                                         : *target.syntax;
}

}  // namespace

void Conversion::Run() {
    const FileDigest before = LengthOfFile(input_.path);
    const auto kept = [&](const auto& convert) {
        try {
            return convert();
        } catch (const Refusal& refusal) {
            RequireUnchanged(before);
            if (refusal.outcome != Outcome::kUnsupported || !options_.keepsUnsupported) throw;
            Keep(Kept::kUnsupported, refusal.message);
            return true;
        }
    };
    if (!kept([&] { return Stream(); })) {
        CDcmObject source = ReadSource(input_);
        RequireUnchanged(before);
        DescribeSource(source);
        kept([&] {
            ConvertObject(source);
            return true;
        });
    }
    RequireUnchanged(before);
    record_.result = Describe(written_);
}

void Conversion::RequireUnchanged(const FileDigest& before) {
    if (record_.source.bytes == 0) record_.source = Describe(input_.path);
    if (LengthOfFile(input_.path).modified != before.modified)
        throw EnvironmentFailure(input_.path + " changes while it is read");
}

void Conversion::ConvertObject(CDcmObject& source) {
    RefuseWhatIsCut(source);
    record_.outcome = Outcome::kDone;
    if (!IsImage(source)) return Carry(source);
    if (options_.leavesLossy && IsCodedWithLosses(source))
        return Keep(Kept::kLossy, "it was coded with losses before");
    ConvertImage(source);
}

void Conversion::ConvertImage(CDcmObject& source) {
    const TransferSyntax& wanted = *options_.target.syntax;
    const TransferSyntax* syntax = SyntaxOf(source);
    if (HoldsFractions(source)) {
        if (wanted.isEncapsulated)
            throw Refusal{
                Outcome::kUnsupported, QVM_ERROR_INVALID_BITS_ALLOCATED,
                std::string(wanted.name) + " cannot hold this image: its pixels are fractions"};
        return Reencode(source, wanted);
    }
    RefuseUnfitImage(source);
    RefuseWhatTheTargetCannotHold(source, options_.target);
    const bool areNative = syntax != nullptr && !syntax->isEncapsulated && !wanted.isEncapsulated;
    if (areNative) return Reencode(source, wanted);
    RefuseUncountedFrames(source);
    Recode(source);
}

void Conversion::Carry(CDcmObject& source) {
    record_.outcome = Outcome::kCarried;
    const TransferSyntax& wanted = EncodingOf(options_.target);
    const bool isThere = SyntaxOf(source) == &wanted && HasClearPreamble(input_.path);
    if (isThere || IsDirectory(source)) return Copy();
    try {
        Reencode(source, wanted);
    } catch (const UnwritableObject&) {
        Copy();
    }
}

void Conversion::Recode(CDcmObject& source) {
    CDcmApp app;
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    maker.SetQuality(static_cast<std::uint16_t>(options_.quality));
    maker.SetProgress(ReportFrame, const_cast<FrameWatch*>(&watch_));
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(options_.target.form);
    QUORVEX_MESSAGE outcome = QVM_SUCCESS;
    {
        CDcmObject output = source;
        Require(maker.MakeDcmObject(&app, &output, &settings));
        outcome = maker.GetOutcome();
        if (outcome != QVM_SUCCESS && outcome != QVM_FRAME_COPIED)
            throw RefusalOf(outcome, source, options_.target);
        Write(output);
    }
    Verify(source, outcome == QVM_SUCCESS);
}

void Conversion::Reencode(CDcmObject& source, const TransferSyntax& wanted) {
    {
        CDcmObject output = source;
        if (output.SetTransferSyntax(wanted.number) != kDcmSuccess)
            throw BadInput(QVM_ERROR_INVALID_TRANSFER_SYNTAX);
        Write(output);
    }
    Verify(source, false);
}

void Conversion::Write(const CDcmObject& output) {
    WriteObject(output, written_, record_.output);
    record_.syntaxOut = TextOf(output, tag::kTransferSyntaxUID);
    record_.resultUid = TextOf(output, tag::kSOPInstanceUID);
}

void Conversion::Copy() {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    std::ifstream from(input_.path, std::ios::binary);
    if (!from) throw SystemFailure(input_.path);
    std::ofstream to(written_, std::ios::binary | std::ios::trunc);
    std::vector<char> piece(kPiece);
    while (from.read(piece.data(), kPiece) || from.gcount() > 0)
        if (!to.write(piece.data(), from.gcount())) break;
    if (from.bad()) throw SystemFailure(input_.path);
    to.close();
    if (!to) throw SystemFailure(record_.output);
    record_.syntaxOut = record_.syntaxIn;
    record_.resultUid = record_.instanceUid;
    record_.verification = Verification::kOff;
    if (!options_.isVerified) return;
    if (DigestOfFile(written_).sha256 != DigestOfFile(input_.path).sha256)
        throw EnvironmentFailure(record_.output + " does not read back as it was written");
    record_.verification = Verification::kEqual;
    record_.compared = {"file"};
    record_.changed = {};
}

void Conversion::Keep(Kept kept, const std::string& reason) {
    Copy();
    record_.outcome = Outcome::kKept;
    record_.kept = kept;
    record_.message = reason;
}

void Conversion::Verify(CDcmObject& source, bool hasNewFrames) {
    record_.verification = Verification::kOff;
    if (!options_.isVerified) return;
    record_.verification = Verification::kDifferent;
    CDcmObject output = ReadWhole(written_);
    VerifyAttributes(source, output, hasNewFrames);
    const bool isLossy = hasNewFrames && options_.target.IsLossy();
    if (IsImage(source) && !HoldsFractions(source)) VerifyPixels(source, output, hasNewFrames);
    record_.verification = isLossy ? Verification::kLossy : Verification::kEqual;
}

void Conversion::VerifyAttributes(const CDcmObject& source, const CDcmObject& output,
                                  bool hasNewFrames) {
    const TransferSyntax* syntax = SyntaxOf(source);
    const auto changed = CompareAttributes(source, output);
    for (const auto& attribute : changed) record_.changed.push_back(attribute.name);
    record_.compared.emplace_back("attributes");
    const auto undemanded =
        NamesOfUndemanded(changed, {.target = &options_.target,
                                    .hasNewFrames = hasNewFrames,
                                    .isLossySource = syntax != nullptr && syntax->isLossy});
    if (!undemanded.empty())
        throw BadInput(QVM_ERROR_FAILED_TO_COMPRESS,
                       "the output does not have the attributes of its source: " + undemanded);
}

void Conversion::VerifyPixels(CDcmObject& source, CDcmObject& output, bool hasNewFrames) {
    if (!hasNewFrames && HaveSameNativePixels(source, output) == true) {
        record_.compared.emplace_back("stored pixels");
        return;
    }
    const auto comparison = CompareFrames(source, output, watch_);
    CheckPixels(comparison, hasNewFrames);
}

void Conversion::CheckPixels(const FrameComparison& comparison, bool hasNewFrames) {
    Require(comparison.result);
    record_.compared.emplace_back("decoded pixels");
    record_.greatestError = comparison.greatestError;
    record_.psnr = comparison.psnr;
    const bool mayDiffer = hasNewFrames && options_.target.IsLossy();
    if (!comparison.isSameShape || (!comparison.isEqual && !mayDiffer))
        throw BadInput(QVM_ERROR_FAILED_TO_COMPRESS,
                       "the output does not decode to the pixels of its source");
    if (comparison.overflows)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED,
                       "the coder's losses would leave the bits stored; take a lossless target");
}

void Conversion::DescribeSource(const CDcmObject& source) {
    record_.studyUid = TextOf(source, tag::kStudyInstanceUID);
    record_.seriesUid = TextOf(source, tag::kSeriesInstanceUID);
    record_.instanceUid = TextOf(source, tag::kSOPInstanceUID);
    record_.syntaxIn = TextOf(source, tag::kTransferSyntaxUID);
    record_.frames = IsImage(source) ? FramesOf(source) : 0;
}

FileDigest Conversion::Describe(const std::string& path) const {
    return options_.hasManifest ? DigestOfFile(path) : LengthOfFile(path);
}

}  // namespace quorvex::tools
