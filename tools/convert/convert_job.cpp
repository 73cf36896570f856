#include "tools/convert/convert_job.h"

#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/Limits.h"
#include "quorvex/Tags.h"
#include "tools/convert/refusal.h"
#include "tools/convert/source_checks.h"
#include "tools/convert/verify.h"
#include "tools/output/object_output.h"
#include "tools/output/work_folder.h"
#include "tools/report.h"
#include "tools/stored_image.h"

#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <new>

namespace quorvex::tools {
namespace {

bool HasMarker(const std::string& path) {
    std::array<char, 132> head{};
    std::ifstream file(path, std::ios::binary);
    return file.read(head.data(), head.size()) && std::memcmp(&head[128], "DICM", 4) == 0;
}

// The object that a file holds, pixels included. What is not a plain Part 10 file is left to the
// parser, whose own copy of the file is gone when this returns.
CDcmObject ReadWhole(const std::string& path) {
    CDcmApp app;
    CDcmObject object;
    object.Open(path);
    if (object.ReadFile(&app, nullptr, nullptr) == kDcmSuccess) return object;
    CxDcmParser parser;
    Require(parser.Initialize(&app, path, 1));
    return *parser.GetHeader();
}

CDcmObject ReadSource(const InputFile& input) {
    try {
        return ReadWhole(input.path);
    } catch (const Refusal& refusal) {
        if (input.isNamed || refusal.code != QVM_ERROR_FAILED_TO_PARSE_DICOM ||
            HasMarker(input.path))
            throw;
        throw Refusal{Outcome::kNotDicom, refusal.code, refusal.message};
    }
}

void Describe(const CDcmObject& source, ConvertRecord& record) {
    record.studyUid = TextOf(source, tag::kStudyInstanceUID);
    record.seriesUid = TextOf(source, tag::kSeriesInstanceUID);
    record.instanceUid = TextOf(source, tag::kSOPInstanceUID);
    record.syntaxIn = TextOf(source, tag::kTransferSyntaxUID);
    record.frames = FramesOf(source);
}

void Convert(CDcmObject& object, const ConvertOptions& options) {
    CDcmApp app;
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(options.target.syntax->form);
    maker.SetQuality(static_cast<std::uint16_t>(options.quality));
    Require(maker.MakeDcmObject(&app, &object, &settings));
    const auto outcome = maker.GetOutcome();
    if (outcome != QVM_FRAME_COPIED) Require(outcome);
}

void Verify(CDcmObject& source, const std::string& written, const ConvertTarget& target,
            ConvertRecord& record) {
    CDcmObject output = ReadWhole(written);
    const auto comparison = CompareFrames(source, output);
    Require(comparison.result);
    record.greatestError = comparison.greatestError;
    record.psnr = comparison.psnr;
    const bool isGood = comparison.isSameShape && (comparison.isEqual || target.syntax->isLossy);
    record.verification = Verification::kDifferent;
    if (!isGood)
        throw BadInput(QVM_ERROR_FAILED_TO_COMPRESS,
                       "the output does not decode to the pixels of its source");
    if (comparison.overflows)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED,
                       "the coder's losses would leave the bits stored; take a lossless target");
    record.verification = target.syntax->isLossy ? Verification::kLossy : Verification::kEqual;
}

void ConvertInto(const std::string& written, ConvertRecord& record, const InputFile& input,
                 const ConvertOptions& options) {
    CDcmObject source = ReadSource(input);
    const auto describe = options.hasManifest ? DigestOfFile : LengthOfFile;
    record.source = describe(input.path);
    Describe(source, record);
    RefuseUnfitSource(source, options.target);
    {
        CDcmObject output = source;
        Convert(output, options);
        WriteObject(output, written, record.output);
        record.syntaxOut = TextOf(output, tag::kTransferSyntaxUID);
    }
    record.verification = Verification::kOff;
    if (options.isVerified) Verify(source, written, options.target, record);
    record.result = describe(written);
}

bool IsHopeless(int systemError) {
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EROFS;
}

}  // namespace

bool ConvertFile(ConvertRecord& record, const InputFile& input, const ConvertOptions& options,
                 WorkFolder& workFolder) {
    const auto start = std::chrono::steady_clock::now();
    const auto fail = [&](const Refusal& refusal) {
        record.outcome = refusal.outcome;
        record.code = refusal.code;
        record.message = refusal.message;
        record.result = {};
    };
    bool isHopeless = false;
    ForgetLimit();
    try {
        const WorkFile written(workFolder.NewPath());
        ConvertInto(written.path, record, input, options);
        PutInPlace(written.path, record.output);
        record.outcome = Outcome::kDone;
    } catch (const Refusal& refusal) {
        fail(refusal);
    } catch (const UnwritableObject& failure) {
        fail(BadInput(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, failure.what()));
    } catch (const EnvironmentFailure& failure) {
        isHopeless = IsHopeless(failure.systemError);
        fail({Outcome::kFailed, QVM_ERROR_FAILED_TO_READ_FILE, failure.what()});
    } catch (const std::bad_alloc&) {
        fail({Outcome::kFailed, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, "not enough memory"});
    }
    const auto taken = std::chrono::steady_clock::now() - start;
    record.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
    return isHopeless;
}

}  // namespace quorvex::tools
