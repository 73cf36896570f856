#include "tools/convert/convert.h"

#include "tools/convert/convert_job.h"
#include "tools/convert/convert_summary.h"
#include "tools/output/object_output.h"
#include "tools/output/output_place.h"
#include "tools/output/work_folder.h"
#include "tools/progress.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

namespace quorvex::tools {
namespace {

volatile sig_atomic_t isStopAsked = 0;

// The files at work are finished; asked a second time, the command ends at once.
void AskToStop(int signalNumber) {
    isStopAsked = 1;
    signal(signalNumber, SIG_DFL);
}

bool HasSeveralInputs(const ConvertArguments& arguments) {
    return arguments.files.size() > 1 || !arguments.list.empty() || HasFolder(arguments.files);
}

FileListSource SourceOf(const ConvertArguments& arguments) {
    return {.arguments = arguments.files,
            .list = arguments.list,
            .isNulSeparated = arguments.isNulSeparated,
            .shard = arguments.shard,
            .leftOutFolder = arguments.output};
}

ConvertOptions OptionsOf(const ConvertArguments& arguments) {
    const ConvertTarget target = ConvertTargetOf(arguments.target);
    const int quality = arguments.quality.value_or(target.quality);
    const auto [least, most] = std::minmax(target.worst, target.best);
    if (quality < least || quality > most)
        throw WrongUsage(least == most ? "--quality has no meaning for " + arguments.target
                                       : "the quality of " + arguments.target + " is from " +
                                             std::to_string(least) + " to " + std::to_string(most));
    return {.target = target,
            .quality = quality,
            .isVerified = !arguments.isUnverified,
            .hasManifest = !arguments.manifest.empty()};
}

std::optional<std::size_t> TotalToShow(const ConvertArguments& arguments) {
    if (!Progress::IsPossible()) return std::nullopt;
    return FileList::Count(SourceOf(arguments));
}

/// All inputs through several threads. Each takes the next input, converts it, and records the
/// outcome.
class ConvertRun {
public:
    explicit ConvertRun(const ConvertArguments& arguments)
        : options_(OptionsOf(arguments)),
          place_(arguments.output, HasSeveralInputs(arguments), arguments.files),
          workFolder_(place_.IsFolder() ? place_.Path() : WorkPlaceOf(place_.Path())),
          files_(SourceOf(arguments)),
          progress_(TotalToShow(arguments)) {
        if (!arguments.manifest.empty()) manifest_ = std::make_unique<Manifest>(arguments.manifest);
    }

    ExitStatus Run(unsigned jobs) {
        {
            std::vector<std::jthread> threads;
            for (unsigned i = 0; i < jobs; ++i) threads.emplace_back([this] { WorkUntilTheEnd(); });
        }
        if (failure_) std::rethrow_exception(failure_);
        if (place_.Path() != "-") {
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start_;
            WriteToStandardOutput(summary_.Line(taken.count()));
        }
        if (isStopAsked == 0) return std::max(summary_.Status(), files_.Status());
        Complain("stopped", "the rest was not tried; the same command goes on");
        return kEnvironment;
    }

private:
    struct Task {
        InputFile input;
        ConvertRecord record;
    };

    void WorkUntilTheEnd() {
        try {
            while (auto task = TakeTask()) {
                const bool isHopeless =
                    ConvertFile(task->record, task->input, options_, workFolder_);
                Record(task->record);
                if (isHopeless) isStopAsked = 1;
            }
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            isStopAsked = 1;
        }
    }

    // Skips inputs that are done or have no place for their output.
    std::optional<Task> TakeTask() {
        const std::lock_guard lock(mutex_);
        while (isStopAsked == 0) {
            auto input = files_.Next();
            if (!input) return std::nullopt;
            const auto output = place_.For(input->path, input->name);
            if (!output) {
                summary_.AddBad();
                progress_.Step();
                continue;
            }
            Task task{.input = *input, .record = {}};
            task.record.input = input->path;
            task.record.output = *output;
            task.record.target = options_.target.syntax->convertName;
            task.record.quality = options_.quality;
            if (!manifest_ || !manifest_->IsDone(task.record, options_.isVerified)) return task;
            summary_.AddDoneBefore();
            progress_.Step();
        }
        return std::nullopt;
    }

    void Record(const ConvertRecord& record) {
        const std::lock_guard lock(mutex_);
        if (record.outcome == Outcome::kBad || record.outcome == Outcome::kFailed)
            Complain(record.input, record.message);
        summary_.Add(record);
        if (manifest_) manifest_->Add(record);
        progress_.Step();
    }

    ConvertOptions options_;
    OutputPlace place_;
    WorkFolder workFolder_;
    std::mutex mutex_;  // of all below
    FileList files_;
    std::unique_ptr<Manifest> manifest_;
    ConvertSummary summary_;
    Progress progress_;
    std::exception_ptr failure_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

ExitStatus Convert(const ConvertArguments& arguments) {
    if (arguments.files.empty() && arguments.list.empty())
        throw WrongUsage("convert needs files, folders or --from");
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) signal(number, AskToStop);
    const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
    return ConvertRun(arguments).Run(arguments.jobs == 0 ? cores : arguments.jobs);
}

}  // namespace quorvex::tools
