#include "tools/convert/convert.h"

#include "tools/convert/convert_job.h"
#include "tools/convert/convert_summary.h"
#include "tools/convert/stop_signals.h"
#include "tools/convert/streaming/frame_team.h"
#include "tools/output/object_output.h"
#include "tools/output/output_place.h"
#include "tools/output/work_folder.h"
#include "tools/progress.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

namespace quorvex::tools {
namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 1500ms;  // for the files at work, once the user has asked for an end
constexpr auto kGlance = 50ms;

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
            .hasManifest = !arguments.manifest.empty(),
            .keepsUnsupported = arguments.keepsUnsupported,
            .leavesLossy = arguments.leavesLossy,
            .isDryRun = arguments.isDryRun};
}

std::optional<std::size_t> TotalToShow(const ConvertArguments& arguments) {
    if (!Progress::IsPossible()) return std::nullopt;
    return FileList::Count(SourceOf(arguments));
}

// A dry run leaves the outputs' place alone.
std::string WorkPlaceFor(const OutputPlace& place, bool isDryRun) {
    if (isDryRun) return std::filesystem::temp_directory_path().string();
    return place.IsFolder() ? place.Path() : WorkPlaceOf(place.Path());
}

std::string DryLine(const ConvertRecord& record) {
    const auto nameOf = [](const std::string& uid) {
        const TransferSyntax* syntax = TransferSyntaxOfUid(uid);
        if (uid.empty()) return std::string("a bare data set");
        return syntax == nullptr ? uid : std::string(syntax->name);
    };
    const auto size = [](const FileDigest& file) { return std::to_string(file.bytes); };
    std::string what =
        record.outcome == Outcome::kCarried ? "would be carried" : "would be converted";
    what += " from " + nameOf(record.syntaxIn) + " to " + nameOf(record.syntaxOut);
    if (record.outcome == Outcome::kKept) what = "would be kept as it is (" + record.message + ')';
    return Printable(record.input) + ": " + what + ", " + size(record.source) + " to " +
           size(record.result) + " bytes\n";
}

bool IsDoneWell(const ConvertRecord& record) {
    return record.outcome == Outcome::kDone || record.outcome == Outcome::kCarried ||
           record.outcome == Outcome::kKept;
}

/// All inputs through several threads. Each takes the next input, converts it, and records the
/// outcome.
class ConvertRun {
public:
    ConvertRun(const ConvertArguments& arguments, unsigned jobs)
        : options_(OptionsOf(arguments)),
          place_(arguments.output, HasSeveralInputs(arguments), arguments.files),
          workFolder_(WorkPlaceFor(place_, options_.isDryRun)),
          files_(SourceOf(arguments)),
          progress_(TotalToShow(arguments)),
          working_(jobs),
          team_(jobs) {
        if (!arguments.manifest.empty()) manifest_ = std::make_unique<Manifest>(arguments.manifest);
    }

    ExitStatus Run() {
        const unsigned jobs = working_;
        {
            std::vector<std::jthread> threads;
            for (unsigned i = 0; i < jobs; ++i) threads.emplace_back([this] { WorkUntilTheEnd(); });
            AwaitTheEnd();
        }
        if (failure_) std::rethrow_exception(failure_);
        if (place_.Path() != "-" || options_.isDryRun) WriteToStandardOutput(SummaryLine());
        if (!IsStopping()) return std::max(summary_.Status(), files_.Status());
        Complain("stopped", "the rest was not tried; the same command goes on");
        return kEnvironment;
    }

private:
    struct Task {
        InputFile input;
        ConvertRecord record;
    };

    [[nodiscard]] bool IsStopping() const { return isGivenUp_ || StopSignals() > 0; }

    std::string SummaryLine() {
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start_;
        return summary_.Line(taken.count(), options_.isDryRun);
    }

    // Nothing interrupts the work inside one frame: what takes longer than a moment to finish when
    // the user asks for an end, or when he asks again, ends with the process.
    void AwaitTheEnd() {
        auto asked = std::chrono::steady_clock::time_point::max();
        while (working_ > 0) {
            std::this_thread::sleep_for(kGlance);
            const auto now = std::chrono::steady_clock::now();
            if (StopSignals() > 0 && asked > now) asked = now;
            if (StopSignals() > 1 || (StopSignals() > 0 && now - asked > kGrace)) EndAtOnce();
        }
    }

    // No file takes its place, and no line begins, while the lock is ours. Where a thread waits
    // with it, for a list that does not come, nothing happens either.
    [[noreturn]] void EndAtOnce() {
        const bool isLocked = mutex_.try_lock_for(4 * kGlance);
        workFolder_.RemoveNow();
        Complain("stopped",
                 "the files at work and the rest were not done; the same command goes on");
        if (isLocked) std::fputs(place_.Path() == "-" ? "" : SummaryLine().c_str(), stdout);
        std::fflush(nullptr);
        std::_Exit(kEnvironment);
    }

    void WorkUntilTheEnd() {
        try {
            while (auto task = TakeTask()) {
                const bool isHopeless =
                    ConvertFile(task->record, task->input, options_, workFolder_, watch_, team_);
                Record(task->record);
                if (isHopeless) isGivenUp_ = true;
            }
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            isGivenUp_ = true;
        }
        team_.Help();
        --working_;
    }

    // Skips inputs that are done or have no place for their output.
    std::optional<Task> TakeTask() {
        const std::lock_guard lock(mutex_);
        while (!IsStopping()) {
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
            task.record.target = options_.target.name;
            task.record.quality = options_.quality;
            task.record.leavesLossy = options_.leavesLossy;
            if (!IsDone(task.record)) return task;
            summary_.AddDoneBefore();
            progress_.Step();
        }
        return std::nullopt;
    }

    [[nodiscard]] bool IsDone(const ConvertRecord& wanted) const {
        return manifest_ &&
               manifest_->IsDone(wanted, {.isVerified = options_.isVerified,
                                          .keepsUnsupported = options_.keepsUnsupported});
    }

    void Record(const ConvertRecord& record) {
        const std::lock_guard lock(mutex_);
        if (IsDoneWell(record)) {
            if (options_.isDryRun) WriteToStandardOutput(DryLine(record));
        } else if (record.outcome != Outcome::kNotDicom) {
            Complain(record.input, record.message);
        }
        summary_.Add(record);
        if (manifest_) manifest_->Add(record);
        progress_.Step();
    }

    ConvertOptions options_;
    OutputPlace place_;
    WorkFolder workFolder_;
    std::timed_mutex mutex_;  // of all below
    FileList files_;
    std::unique_ptr<Manifest> manifest_;
    ConvertSummary summary_;
    Progress progress_;
    std::exception_ptr failure_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::atomic<unsigned> working_;  // threads
    FrameTeam team_;
    std::atomic<bool> isGivenUp_ = false;
    const FrameWatch watch_ = [this](const char* step, int done, int all) {
        const std::lock_guard lock(mutex_);
        progress_.Within(step, done, all);
    };
};

}  // namespace

ExitStatus Convert(const ConvertArguments& arguments) {
    if (arguments.files.empty() && arguments.list.empty())
        throw WrongUsage("convert needs files, folders or --from");
    if (arguments.isDryRun && !arguments.manifest.empty())
        throw WrongUsage("a dry run keeps no manifest");
    CountStopSignals();
    const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
    return ConvertRun(arguments, arguments.jobs == 0 ? cores : arguments.jobs).Run();
}

}  // namespace quorvex::tools
