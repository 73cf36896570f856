#include "convert_job.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>

#include "object_output.h"
#include "quorvex/CxDcmMaker.h"
#include "quorvex/CxDcmParser.h"
#include "report.h"
#include "verify.h"
#include "work_folder.h"

namespace quorvex::tools {
namespace {

constexpr std::uint32_t kPhotometric = 0x00280004;

constexpr std::array kTargets = {
    ConvertTarget{"implicit", kXferUncompressedImplicit, kImplicitLittleEndian, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"explicit", kXferUncompressedExplicit, kExplicitLittleEndian, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"jpeg", kXferJpegBaseline, kJpegBaseline, false, 97, 1, 100, "YBR_FULL_422"},
    ConvertTarget{"jpeg12", kXferJpegExtended, kJpegExtended, false, 1, 1000, 1, nullptr},
    ConvertTarget{"jpeg-lossless", kXferJpegLossless, kJpegLosslessFirstOrder, true, 0, 0, 0,
                  nullptr},
    ConvertTarget{"j2k", kXferJpeg2000, kJpeg2000, false, 5, 1000, 1, "YBR_ICT"},
    ConvertTarget{"j2k-lossless", kXferJpeg2000Lossless, kJpeg2000Lossless, true, 0, 0, 0,
                  "YBR_RCT"},
};

/// Why one file could not be converted.
struct Refusal {
    Outcome outcome;
    int code;
    std::string message;
};

Refusal BadInput(QUORVEX_MESSAGE code) {
    return {
        Outcome::kBad, code,
        std::string(ResultName(code)) + " (" + std::to_string(code) + "): " + ResultSentence(code)};
}

Refusal BadInput(QUORVEX_MESSAGE code, const std::string& sentence) {
    return {Outcome::kBad, code, sentence};
}

void Require(QUORVEX_MESSAGE result) {
    if (result != QVM_SUCCESS) throw BadInput(result);
}

bool HasMarker(const std::string& path) {
    std::array<char, 132> head{};
    std::ifstream file(path, std::ios::binary);
    return file.read(head.data(), head.size()) && std::memcmp(&head[128], "DICM", 4) == 0;
}

// The object that a file holds, pixels included; the copy of the file goes with the parser.
CDcmObject ReadWhole(const std::string& path) {
    CDcmApp app;
    CxDcmParser parser;
    Require(parser.Initialize(&app, path, 1));
    return *parser.GetHeader();
}

// The library takes names as text, and a file's name may be any bytes: such a file is read through a
// link.
CDcmObject ReadByAnyName(const std::string& path, WorkFolder& workFolder) {
    if (CString(path).ToUtf8() == path) return ReadWhole(path);
    const WorkFile link(workFolder.NewPath());
    std::error_code failure;
    const auto target = std::filesystem::absolute(path, failure);
    if (symlink(target.c_str(), link.path.c_str()) != 0) throw SystemFailure(path);
    return ReadWhole(link.path);
}

CDcmObject ReadSource(const InputFile& input, WorkFolder& workFolder) {
    try {
        return ReadByAnyName(input.path, workFolder);
    } catch (const Refusal& refusal) {
        if (input.isNamed || refusal.code != QVM_ERROR_FAILED_TO_PARSE_DICOM ||
            HasMarker(input.path))
            throw;
        throw Refusal{Outcome::kNotDicom, refusal.code, refusal.message};
    }
}

std::string TextOf(const CDcmObject& object, std::uint32_t tag) {
    CString text;
    return object.GetValue(tag, text) == kDcmSuccess ? text.ToUtf8() : std::string();
}

int FramesOf(const CDcmObject& object) {
    int frames = 1;
    object.GetValue(0x00280008, frames);
    return frames;
}

void Describe(const CDcmObject& source, ConvertRecord& record) {
    record.studyUid = TextOf(source, 0x0020000D);
    record.seriesUid = TextOf(source, 0x0020000E);
    record.instanceUid = TextOf(source, 0x00080018);
    record.syntaxIn = TextOf(source, 0x00020010);
    record.frames = FramesOf(source);
}

bool HasPixels(const CDcmObject& object) {
    int count = 0;
    unsigned short rows = 0;
    unsigned short columns = 0;
    return object.GetValueCount(0x7FE00010, count) == kDcmSuccess &&
           object.GetValue(0x00280010, rows) == kDcmSuccess && rows > 0 &&
           object.GetValue(0x00280011, columns) == kDcmSuccess && columns > 0;
}

// What a lossy coder cannot take, or would change beyond its own noise.
void RefuseWhatTheCoderCannotHold(CDcmObject& source, const ConvertTarget& target) {
    constexpr long kHighest12 = 4095;
    if (target.isLossless || target.code == kXferJpeg2000) return;
    unsigned short bits = 0;
    source.GetValue(0x00280100, bits);
    if (target.code == kXferJpegBaseline && bits > 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "JPEG Baseline holds 8 bits, and the image has more");
    if (target.code == kXferJpegExtended && bits <= 8)
        throw BadInput(QVM_ERROR_INVALID_BITS_ALLOCATED,
                       "12-bit JPEG is for more than 8 bits, and the image has no more");
    unsigned short isSigned = 0;
    source.GetValue(0x00280103, isSigned);
    if (isSigned != 0)
        throw BadInput(QVM_ERROR_INVALID_PIXEL_REPRESENTATION,
                       "lossy JPEG cannot hold signed values");
    const auto limits = LimitsOf(source);
    Require(limits.result);
    if (target.code == kXferJpegExtended && limits.highest > kHighest12)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED,
                       "values above 4095 cannot be coded with 12 bits");
}

void Convert(CDcmObject& object, const ConvertWish& wish) {
    CDcmApp app;
    CxDcmMaker maker;
    _USER_SETTING_INFO settings;
    settings.compressionType = static_cast<std::int32_t>(wish.target->code);
    maker.SetQuality(static_cast<std::uint16_t>(wish.quality));
    Require(maker.MakeDcmObject(&app, &object, &settings));
    const auto outcome = maker.GetOutcome();
    if (outcome != QVM_FRAME_COPIED) Require(outcome);
    const bool isNative = wish.target->code <= kXferUncompressedExplicit;
    if (isNative && object.SetTransferSyntax(wish.target->syntax) != kDcmSuccess)
        throw BadInput(QVM_ERROR_INVALID_TRANSFER_SYNTAX);
    if (outcome != QVM_FRAME_COPIED) NameColoursOf(object, *wish.target);
}

void Verify(CDcmObject& source, const std::string& written, const ConvertTarget& target,
            ConvertRecord& record) {
    CDcmObject output = ReadWhole(written);
    const auto comparison = CompareFrames(source, output);
    Require(comparison.result);
    record.greatestError = comparison.greatestError;
    record.psnr = comparison.psnr;
    const bool isGood = comparison.isSameShape && (comparison.isEqual || !target.isLossless);
    record.verification = Verification::kDifferent;
    if (!isGood)
        throw BadInput(QVM_ERROR_FAILED_TO_COMPRESS,
                       "the output does not decode to the pixels of its source");
    if (comparison.overflows)
        throw BadInput(QVM_ERROR_INVALID_BITS_STORED,
                       "the coder's losses would leave the bits stored; take a lossless target");
    record.verification = target.isLossless ? Verification::kEqual : Verification::kLossy;
}

void ConvertInto(const std::string& written, ConvertRecord& record, const InputFile& input,
                 const ConvertWish& wish, WorkFolder& workFolder) {
    CDcmObject source = ReadSource(input, workFolder);
    record.source = DigestOfFile(input.path);
    Describe(source, record);
    if (!HasPixels(source)) throw BadInput(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    RefuseWhatTheCoderCannotHold(source, *wish.target);
    {
        CDcmObject output = source;
        Convert(output, wish);
        WriteObject(output, written, record.output);
        record.syntaxOut = TextOf(output, 0x00020010);
    }
    record.verification = Verification::kOff;
    if (wish.isVerified) Verify(source, written, *wish.target, record);
    record.result = DigestOfFile(written);
}

bool IsHopeless(int systemError) {
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EROFS;
}

}  // namespace

void NameColoursOf(CDcmObject& object, const ConvertTarget& target) {
    CString photometric;
    object.GetValue(kPhotometric, photometric);
    if (target.codedColours != nullptr && photometric == CString("RGB"))
        object.SetValue(kPhotometric, target.codedColours);
}

const ConvertTarget& ConvertTargetOf(const std::string& name) {
    const auto* found = std::ranges::find_if(
        kTargets, [&](const ConvertTarget& target) { return name == target.name; });
    if (found != kTargets.end()) return *found;
    throw WrongUsage(
        "the target is implicit, explicit, jpeg, jpeg12, jpeg-lossless, j2k or j2k-lossless, not " +
        name);
}

bool ConvertFile(ConvertRecord& record, const InputFile& input, const ConvertWish& wish,
                 WorkFolder& workFolder) {
    const auto start = std::chrono::steady_clock::now();
    const auto fail = [&](const Refusal& refusal) {
        record.outcome = refusal.outcome;
        record.code = refusal.code;
        record.message = refusal.message;
        record.result = {};
    };
    bool isHopeless = false;
    try {
        const WorkFile written(workFolder.NewPath());
        ConvertInto(written.path, record, input, wish, workFolder);
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
