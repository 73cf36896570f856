#include "tools/convert/convert_job.h"

#include "quorvex/Limits.h"
#include "tools/convert/conversion.h"
#include "tools/convert/refusal.h"
#include "tools/output/object_output.h"
#include "tools/output/work_folder.h"
#include "tools/report.h"

#include <cerrno>
#include <chrono>
#include <new>

namespace quorvex::tools {
namespace {

bool IsHopeless(int systemError) {
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EROFS;
}

/// The operation that met the missing memory answered with a code of its own.
Refusal Explained(const Refusal& refusal) {
    if (LatestLimit() != Limit::kMemory) return refusal;
    return {Outcome::kFailed, refusal.code, LimitSentence(Limit::kMemory)};
}

}  // namespace

bool ConvertFile(ConvertRecord& record, const InputFile& input, const ConvertOptions& options,
                 WorkFolder& workFolder, const FrameWatch& watch, FrameTeam& team) {
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
        Conversion(record, input, options, written.path, watch, team).Run();
        if (!options.isDryRun) PutInPlace(written.path, record.output);
    } catch (const Refusal& refusal) {
        fail(Explained(refusal));
    } catch (const UnwritableObject& failure) {
        fail(
            Explained({Outcome::kUnsupported, QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, failure.what()}));
    } catch (const EnvironmentFailure& failure) {
        isHopeless = IsHopeless(failure.systemError);
        const std::string sentence = failure.what();
        const std::string name = record.input + ": ";  // the line has it already
        const std::size_t named = sentence.starts_with(name) ? name.size() : 0;
        fail({Outcome::kFailed, QVM_ERROR_FAILED_TO_READ_FILE, sentence.substr(named)});
    } catch (const std::bad_alloc&) {
        fail({Outcome::kFailed, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, LimitSentence(Limit::kMemory)});
    }
    const auto taken = std::chrono::steady_clock::now() - start;
    record.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
    return isHopeless;
}

}  // namespace quorvex::tools
