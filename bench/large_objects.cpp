// What it takes to show one frame of many: memory, bytes read, and time. Usage: large_objects
//
// Each row is a process of its own. A host's source computes the bytes that are asked for and
// counts them, so that no disk is needed; the rows "by path" read a file with holes.
#include "bench/object_forms.h"
#include "quorvex/CxDcmParser.h"
#include "tests/support/host_source.h"
#include "tests/support/temporary_file.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvex::bench {
namespace {

using Clock = std::chrono::steady_clock;

/// One parser on one source, and what its steps took.
class Show {
public:
    explicit Show(std::shared_ptr<test::EndlessSource> source) : source_(std::move(source)) {}

    bool Open() { return parser_.Initialize(&app_, source_, 0) == QVM_SUCCESS; }
    bool Open(const std::string& path) {
        return parser_.Initialize(&app_, CString(path), 0) == QVM_SUCCESS;
    }
    bool Fetch(int index) {
        unsigned char* pixels = nullptr;
        unsigned long size = 0;
        const bool isFetched = parser_.GetAFrame(index, pixels, size, 0) == QVM_SUCCESS;
        const std::unique_ptr<unsigned char[]> owner(pixels);
        return isFetched && parser_.GetFrameQuality() == FrameQuality::kWhole;
    }

    /// Bytes and milliseconds since the last step.
    void Tell() {
        const auto now = Clock::now();
        const double time = std::chrono::duration<double, std::milli>(now - since_).count();
        const std::uint64_t taken = source_ ? source_->taken : 0;
        std::printf(" %12llu | %8.2f |", static_cast<unsigned long long>(taken - told_), time);
        told_ = taken;
        since_ = Clock::now();
    }

private:
    std::shared_ptr<test::EndlessSource> source_;
    CDcmApp app_;
    CxDcmParser parser_;
    std::uint64_t told_ = 0;
    Clock::time_point since_ = Clock::now();
};

std::string SparseFile(const test::TemporaryFile& file, const LargeObject& object) {
    const std::uint64_t size = std::filesystem::file_size(file.Path());
    std::filesystem::resize_file(file.Path(), size + object.frameCount * object.frameBytes);
    return file.Path();
}

int RunRow(const LargeForm& form, int frames, bool isByPath) {
    const LargeObject object = Make(form, frames);
    const test::TemporaryFile file(isByPath ? object.header : test::Bytes());
    const auto source = isByPath ? nullptr
                                 : std::make_shared<test::EndlessSource>(
                                       object.header, object.frameCount, object.frameBytes,
                                       [&](std::uint64_t) { return object.frameStart; });
    const std::string path = isByPath ? SparseFile(file, object) : std::string();
    std::printf("| %-6s | %-8s | %7d | %9zu |", form.what, isByPath ? "by path" : form.table,
                frames, object.header.size());
    Show show(source);
    const bool isOpen = isByPath ? show.Open(path) : show.Open();
    show.Tell();
    const bool isShown = show.Fetch(frames * 3 / 4);
    show.Tell();
    const bool isNextShown = show.Fetch(frames / 2);
    show.Tell();
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    std::printf(" %5.1f |\n", static_cast<double>(used.ru_maxrss) / 1024);
    return isOpen && isShown && isNextShown ? 0 : 1;
}

/// By a new process, whose peak is its own.
int RunApart(const char* program, const std::string& form, int frames, bool isByPath) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        const std::string count = std::to_string(frames);
        execl(program, program, form.c_str(), count.c_str(), isByPath ? "path" : "source", nullptr);
        _exit(127);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return status;
}

int RunAll(const char* program) {
    std::puts(
        "| Form | Table | Frames | Header, bytes | Open, bytes | ms | First frame, bytes | ms | "
        "Next frame, bytes | ms | Peak, MB |\n"
        "|---|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|");
    int failed = 0;
    for (std::size_t form = 0; form < kLargeForms.size(); ++form) {
        for (const int frames : {1, 100, 10'000, 100'000})
            failed |= RunApart(program, std::to_string(form), frames, false);
    }
    for (const int frames : {1, 100, 10'000, 100'000})
        failed |= RunApart(program, "0", frames, true);
    return failed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace quorvex::bench

int main(int argc, char** argv) {
    using namespace quorvex::bench;
    if (argc != 4) return RunAll("/proc/self/exe");
    const auto form = static_cast<std::size_t>(std::atoi(argv[1]));
    return RunRow(kLargeForms.at(form), std::atoi(argv[2]), std::string(argv[3]) == "path");
}
